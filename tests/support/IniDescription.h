#ifndef TESTS_INIDESCRIPTION_H
#define TESTS_INIDESCRIPTION_H

#include "ini/IniDocument.h"
#include <string>

namespace vykeltest {

/// An entry of a document or of a model of one: `key=value@line;`, the value within its quotes.
template <class Entry>
std::string describeEntry(const Entry& entry, bool withLine = true) {
    const std::string quote(entry.quote != 0 ? 1 : 0, static_cast<char>(entry.quote));
    const std::string line = withLine ? "@" + std::to_string(entry.line) : "";
    return std::string(entry.key) + "=" + quote + entry.value + quote + line + ";";
}

/// Everything that a document holds: `[name]line{entries}`.
inline std::string describe(const vyini::IniDocument& document, bool withLines = true) {
    std::string text;
    for (auto* section = document.sections.first(); section != nullptr; section = section->next) {
        text +=
            "[" + std::string(section->name) + "]" + (withLines ? std::to_string(section->line) : "") + "{";
        for (auto* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            text += describeEntry(*entry, withLines);
        text += "}";
    }
    return text;
}

} // namespace vykeltest

#endif
