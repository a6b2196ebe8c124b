#ifndef TESTS_INITESTKIT_H
#define TESTS_INITESTKIT_H

#include "ini/IniDocument.h"
#include "ini/IniLoad.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include <memory>
#include <string>

namespace vykeltest {

using namespace vyini;

struct FreeIniDocument {
    void operator()(IniDocument* document) const noexcept { freeIniDocument(document); }
};
using IniDocumentPtr = std::unique_ptr<IniDocument, FreeIniDocument>;

inline IniDocumentPtr makeDocument() {
    return IniDocumentPtr(createIniDocument());
}

/// A text of the test's own from a literal that may hold NULs.
template <std::size_t size>
std::string bytes(const char (&literal)[size]) {
    return std::string(literal, size - 1);
}

inline std::string describe(const IniEntry& entry) {
    const std::string quote(entry.quote != 0 ? 1 : 0, static_cast<char>(entry.quote));
    return std::string(entry.key) + "=" + quote + entry.value + quote + "@" + std::to_string(entry.line) +
           ";";
}

/// Everything that a document holds: `[name]line{key=value@line;}`, values within their quotes.
inline std::string describe(const IniDocument& document) {
    std::string text;
    for (const IniSection* section = document.sections.first(); section != nullptr; section = section->next) {
        text += "[" + std::string(section->name) + "]" + std::to_string(section->line) + "{";
        for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            text += describe(*entry);
        text += "}";
    }
    return text;
}

/// A folder with the file that a test reads and writes.
class IniFolder {
public:
    int load(IniDocument* document, const std::string& text) {
        fs::remove(file()); // a new file is not flushed to the disk, a truncated one is
        writeFile(file(), text);
        return loadIniFile(document, file().string().c_str());
    }
    fs::path file() const { return path("vykel.ini"); }
    fs::path path(const char* name) const { return machine.folder() / name; }

private:
    Machine machine;
};

} // namespace vykeltest

#endif
