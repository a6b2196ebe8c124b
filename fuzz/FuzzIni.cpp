// The INI engine: any bytes may be read. What is then written must read back as the same document. The first
// four bytes choose the options, the rest is the file.
#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "ini/IniParser.h"
#include "ini/IniWriter.h"
#include "support/IniDescription.h"
#include "vybase/owners.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace vyini;

void check(bool condition) {
    if (!condition)
        std::abort();
}

void parse(IniDocument& document, const std::uint8_t* options, std::FILE* file, std::size_t expectedSize) {
    document.parseFlags = options[0] & 0x0F;
    document.mergeDuplicates = options[0] >> 4 & 1;
    document.caseSensitive = options[0] >> 5 & 1;
    document.writeFlags = options[1] & (IniSpacedEquals | IniBlankLineRules);
    document.maxLineLength = options[2] < 0x80 ? options[2] : -1;
    document.splitChar = options[3];
    std::rewind(file);
    IniLineReader reader(file, expectedSize);
    check(parseIni(&document, &reader) == 0);
}

/// True when `holds(section, entry)` is for every entry.
template <class Condition>
bool allEntries(const IniDocument& document, Condition holds) {
    for (IniSection* section = document.sections.first(); section != nullptr; section = section->next)
        for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            if (!holds(*section, *entry))
                return false;
    return true;
}

/// True for what the format can hold: not all that the parser joins, or keeps with its options, can be
/// written so that it is read as the same.
bool canBeWritten(const IniDocument& document) {
    const auto has = [&](int flag) { return (document.parseFlags & flag) != 0; };
    for (const IniSection* section = document.sections.first(); section != nullptr; section = section->next)
        // Written without its header: only at the start, and not empty, it is read as what it was.
        if (std::strcmp(section->name, headerlessSection) == 0 &&
            (section->previous != nullptr || section->entries.count() == 0 || !has(IniColonSeparator)))
            return false;
    return allEntries(document, [&](IniSection& section, const IniEntry& entry) {
        std::uint32_t number = 0;
        if (findContinuation(entry.key, number) != nullptr || isBlank(entry.key[std::strlen(entry.key) - 1]))
            return false;
        if (document.mergeDuplicates != 0 &&
            findIniEntry(&section, document.caseSensitive, entry.key) != &entry)
            return false;
        const std::size_t length = std::strlen(entry.value);
        if (entry.quote != 0 || length == 0)
            return entry.quote != 0 || has(IniAllowEmptyValue);
        // Joined pieces may begin and end with what a single value could not.
        const char first = entry.value[0];
        const char last = entry.value[length - 1];
        const bool stripped =
            length >= 2 && first == last &&
            ((first == '"' && has(IniStripDoubleQuotes)) || (first == '\'' && has(IniStripSingleQuotes)));
        return !isBlank(first) && !isBlank(last) && !stripped;
    });
}

/// True when the pieces of split values are read back as they were written: their keys hold no " Line"
/// themselves, and they are quoted, or without blanks and quotes.
bool canBeSplit(const IniDocument& document) {
    return allEntries(document, [](const IniSection&, const IniEntry& entry) {
        return std::strstr(entry.key, " Line") == nullptr &&
               (entry.quote != 0 || std::strpbrk(entry.value, " \t\v\f\"'") == nullptr);
    });
}

void checkSame(const IniDocument& left, const IniDocument& right) {
    check(vykeltest::describe(left, false) == vykeltest::describe(right, false));
}

void writeAndReadAgain(IniDocument& document, const std::uint8_t* options) {
    if (!canBeSplit(document))
        document.maxLineLength = -1;
    const vybase::FileStream written(std::tmpfile());
    const int result = writeIni(&document, written.get());
    if (result == IniKeyTooLong) {
        document.maxLineLength = -1;
        return writeAndReadAgain(document, options);
    }
    check(result == 0);
    IniDocument again;
    parse(again, options, written.get(), 0);
    checkSame(document, again);
}

bool encodesAndDecodes(const char* text) {
    IniString encoded;
    IniString decoded;
    return decodeIniValue(text, decoded) == 0 && encodeIniValue(text, encoded) == 0 &&
           decodeIniValue(encoded.get(), decoded) == 0 && std::strcmp(decoded.get(), text) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t optionBytes = 4;
    if (size < optionBytes)
        return 0;
    const vybase::FileStream file(std::tmpfile());
    check(file != nullptr);
    check(std::fwrite(data + optionBytes, 1, size - optionBytes, file.get()) == size - optionBytes);
    IniDocument document;
    parse(document, data, file.get(), size % 3 == 0 ? 0 : size - optionBytes);
    IniDocument same;
    parse(same, data, file.get(), 1);
    checkSame(document, same);
    check(allEntries(
        document, [](const IniSection&, const IniEntry& entry) { return encodesAndDecodes(entry.value); }));
    if (canBeWritten(document))
        writeAndReadAgain(document, data);
    return 0;
}
