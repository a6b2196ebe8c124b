// The INI engine: any file may be loaded, with any options, and edited as a plain model is. What is then
// saved must read back as the same document. The first four bytes choose the options, the next one how many
// pairs of bytes after it are edits; the rest is the file.
#include "Fuzz.h"
#include "ini/IniReader.h"
#include "ini/IniText.h"
#include "ini/IniWriter.h"
#include "support/IniModel.h"
#include "support/TestFiles.h"
#include "vybase/owners.h"
#include <cstdio>
#include <cstring>

namespace {

using namespace vyini;
using namespace vykelfuzz;

void setOptions(IniDocument& document, const std::uint8_t* options) {
    document.parseFlags = options[0] & 0x0F;
    document.mergeDuplicates = options[0] >> 4 & 1;
    document.caseSensitive = options[0] >> 5 & 1;
    document.writeFlags = options[1] & 0x3F;
    document.maxLineLength = options[2] < 0x80 ? options[2] : -1;
    document.splitChar = options[3];
}

/// True when `holds(entry)` is for every entry.
template <class Condition>
bool allEntries(const IniDocument& document, Condition holds) {
    for (const IniSection* section = document.sections.first(); section != nullptr; section = section->next)
        for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            if (!holds(*entry))
                return false;
    return true;
}

/// True for what the format can hold: not all that the parser joins, or keeps with its options, can be
/// written so that it is read as the same.
bool canBeWritten(const IniDocument& document) {
    const auto has = [&](int flag) { return (document.parseFlags & flag) != 0; };
    // A section that is written without its header: only at the start, not empty, and when its first key does
    // not look like a byte-order mark it is read as what it was.
    for (const IniSection* section = document.sections.first(); section != nullptr; section = section->next)
        if (std::strcmp(section->name, headerlessSection) == 0 &&
            (section->previous != nullptr || section->entries.count() == 0 || !has(IniColonSeparator) ||
             static_cast<unsigned char>(*section->entries.first()->key) >= 0x80))
            return false;
    return allEntries(document, [&](const IniEntry& entry) {
        const std::string value = entry.value;
        std::uint32_t number = 0;
        if (findContinuation(entry.key, number) != nullptr || isBlank(entry.key[std::strlen(entry.key) - 1]))
            return false;
        const auto strips = [&](char quote) {
            return has(quote == '"' ? IniStripDoubleQuotes : quote == '\'' ? IniStripSingleQuotes : 0);
        };
        if (entry.quote != 0 || value.empty())
            return entry.quote != 0 ? strips(static_cast<char>(entry.quote)) : has(IniAllowEmptyValue);
        // Joined pieces may begin and end with what a single value could not.
        const bool stripped = value.size() > 1 && value.front() == value.back() && strips(value.front());
        return vykeltest::trim(value) == value && !stripped;
    });
}

/// True when the pieces of split values are read back as they were written: their keys hold no " Line"
/// themselves, and they are quoted, or without blanks and quotes.
bool canBeSplit(const IniDocument& document) {
    return allEntries(document, [](const IniEntry& entry) {
        return std::strstr(entry.key, " Line") == nullptr &&
               (entry.quote != 0 || std::strpbrk(entry.value, " \t\v\f\"'") == nullptr);
    });
}

void checkEscapes(const char* text) {
    IniString encoded, decoded;
    check(decodeIniValue(text, decoded) == 0 && encodeIniValue(text, encoded) == 0);
    check(decodeIniValue(encoded.get(), decoded) == 0 && std::strcmp(decoded.get(), text) == 0);
}

std::string nameOf(char letter, unsigned byte) {
    const std::string name =
        static_cast<char>(byte & 0x80 ? letter - 'a' + 'A' : letter) + std::to_string(byte & 0x3F);
    return byte & 0x40 ? " " + name + "\t " : name;
}

/// Makes edits of three bytes each, and compares with the model.
void edit(IniDocument& document, const std::uint8_t* edits, std::size_t count) {
    vykeltest::IniModel model{document.mergeDuplicates, document.caseSensitive, nullptr, {}};
    model.copy(document);
    for (std::size_t i = 0; i < count; ++i, edits += 3) {
        const std::string section = nameOf('s', edits[1]), key = nameOf('k', edits[2]);
        const int operation = edits[0] & 7;
        if (operation == 0) {
            document.mergeDuplicates = model.merge = edits[1] & 1;
            document.caseSensitive = model.caseSensitive = edits[2] & 1;
        } else if (operation == 1) {
            check(deleteIniSection(&document, section.c_str()) == model.removeSection(section));
        } else if (operation == 2) {
            check(deleteIniEntry(&document, section.c_str(), key.c_str()) == model.removeEntry(section, key));
        } else if (operation == 3) {
            const IniEntry* const entry = getIniEntry(findIniSection(&document, section.c_str()), edits[2]);
            check(model.describeNth(section, edits[2]) ==
                  (entry != nullptr ? vykeltest::describeEntry(*entry) : ""));
        } else {
            const std::string value = ' ' + std::string(edits[0] >> 3, 'v');
            const int quote = operation < 6 ? 0 : operation == 6 ? '"' : '\'';
            check(setIniValue(&document, section.c_str(), key.c_str(), value.c_str(), quote) ==
                  model.set(section, key, value, quote));
        }
        check((document.currentSection != nullptr) == (model.current != nullptr));
        check(i % 32 != 0 || vykeltest::describe(document) == model.describe());
    }
    check(vykeltest::describe(document) == model.describe());
}

/// Loads the file, and reads it again in small blocks. False when its text is wide.
bool load(IniDocument& document, const std::string& path, const std::string& text) {
    const auto begins = [&](const std::string& mark) { return text.compare(0, mark.size(), mark) == 0; };
    const bool isWide = begins("\xFF\xFE") || begins("\xFE\xFF") || begins(std::string("\0\0\xFE\xFF", 4));
    check(loadIniFile(&document, path.c_str()) == (isWide ? IniWideText : 0));
    if (isWide)
        return false;
    const std::string loaded = vykeltest::describe(document);
    const vybase::FileStream file(std::fopen(path.c_str(), "rb"));
    check(file != nullptr && std::fseek(file.get(), begins("\xEF\xBB\xBF") ? 3 : 0, SEEK_SET) == 0);
    IniLineReader reader(file.get(), 1);
    check(parseIni(&document, &reader) == 0 && vykeltest::describe(document) == loaded);
    return true;
}

/// Saves the document to the file that holds `text`. A key that is too long to be split costs the file only
/// when it is not saved safely.
void save(IniDocument& document, const std::filesystem::path& path, const std::string& text) {
    if (!canBeSplit(document))
        document.maxLineLength = -1;
    int result = saveIniFile(&document, path.string().c_str());
    if (result == IniKeyTooLong) {
        check(vykeltest::readFile(path) == ((document.writeFlags & IniSafeSave) != 0 ? text : ""));
        document.maxLineLength = -1;
        result = saveIniFile(&document, path.string().c_str());
    }
    const std::filesystem::directory_iterator files(path.parent_path());
    check(result == 0 && std::distance(begin(files), end(files)) == 1); // no temporary file stays
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t optionBytes = 5;
    if (size < optionBytes)
        return 0;
    const std::size_t edits = std::min<std::size_t>(data[4] * 8u, (size - optionBytes) / 3);
    const std::string text = textOf(data, size).substr(optionBytes + 3 * edits);
    static const ScratchFolder folder;
    const std::filesystem::path path = folder.path / "a.ini";
    vykeltest::writeFile(path, text);
    IniDocument document;
    setOptions(document, data);
    if (!load(document, path.string(), text))
        return 0;
    edit(document, data + optionBytes, edits);
    setOptions(document, data);
    const bool comparable = canBeWritten(document);
    save(document, path, text);
    const std::string saved = vykeltest::describe(document, false);
    document.mergeDuplicates = 0; // whatever was kept apart stays apart
    const int result = loadIniFile(&document, document.path.get());
    check(!comparable || (result == 0 && vykeltest::describe(document, false) == saved));
    checkEscapes(text.c_str());
    return 0;
}
