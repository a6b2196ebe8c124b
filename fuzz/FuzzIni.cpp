// The INI engine: any bytes may be read; what is then written must read back as the same document. The first
// four bytes choose the options, the rest is the file.
#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "ini/IniParser.h"
#include "ini/IniWriter.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using namespace vyini;

void check(bool condition) {
    if (!condition)
        std::abort();
}

struct Free {
    void operator()(IniDocument* document) const { freeIniDocument(document); }
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Document = std::unique_ptr<IniDocument, Free>;
using File = std::unique_ptr<std::FILE, Free>;

Document makeDocument(const std::uint8_t* options) {
    Document document(createIniDocument());
    document->parseFlags = options[0] & 0x0F;
    document->mergeDuplicates = options[0] >> 4 & 1;
    document->caseSensitive = options[0] >> 5 & 1;
    document->writeFlags = options[1] & (IniSpacedEquals | IniBlankLineRules);
    document->maxLineLength = options[2] < 0x80 ? options[2] : -1;
    document->splitChar = options[3];
    return document;
}

void parse(IniDocument* document, std::FILE* file, std::size_t expectedSize) {
    std::rewind(file);
    IniLineReader reader(file, expectedSize);
    check(parseIni(document, &reader) == 0);
}

bool quotedBy(const char* value, char quote) {
    const std::size_t length = std::strlen(value);
    return length >= 2 && value[0] == quote && value[length - 1] == quote;
}

/// True for what the format can hold: not all that the parser joins, or keeps with its options, can be
/// written so that it is read as the same.
bool canBeWritten(const IniDocument& document, const IniEntry& entry) {
    std::uint32_t number = 0;
    const char* keyEnd = entry.key + std::strlen(entry.key);
    if (findContinuation(entry.key, number) != nullptr || isBlank(keyEnd[-1]))
        return false;
    // Joined pieces may begin and end with what a single value could not.
    const std::size_t length = std::strlen(entry.value);
    const bool blanks = length != 0 && (isBlank(entry.value[0]) || isBlank(entry.value[length - 1]));
    const bool stripped = ((document.parseFlags & IniStripDoubleQuotes) != 0 && quotedBy(entry.value, '"')) ||
                          ((document.parseFlags & IniStripSingleQuotes) != 0 && quotedBy(entry.value, '\''));
    if (entry.quote == 0)
        return length != 0 ? !blanks && !stripped : (document.parseFlags & IniAllowEmptyValue) != 0;
    return true;
}

bool canBeWritten(IniDocument& document) {
    for (IniSection* section = document.sections.first(); section != nullptr; section = section->next) {
        // Written without its header: only at the start, and not empty, it is read as what it was.
        const bool headed = std::strcmp(section->name, IniHeaderless) != 0;
        const bool readsHeaderless = section->previous == nullptr && section->entries.count() != 0 &&
                                     (document.parseFlags & IniColonSeparator) != 0;
        if (!headed && !readsHeaderless)
            return false;
        for (IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next) {
            const bool twice = document.mergeDuplicates != 0 &&
                               findIniEntry(section, document.caseSensitive, entry->key) != entry;
            if (twice || !canBeWritten(document, *entry))
                return false;
        }
    }
    return true;
}

/// True when pieces of split values are read back as they were written: their keys hold no " Line"
/// themselves, and they are quoted, or without blanks and quotes.
bool canBeSplit(const IniDocument& document) {
    for (const IniSection* section = document.sections.first(); section != nullptr; section = section->next) {
        for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            if (std::strstr(entry->key, " Line") != nullptr ||
                (entry->quote == 0 && std::strpbrk(entry->value, " \t\v\f\"'") != nullptr))
                return false;
    }
    return true;
}

void checkSame(const IniDocument& left, const IniDocument& right) {
    const IniSection* other = right.sections.first();
    for (const IniSection* section = left.sections.first(); section != nullptr; section = section->next) {
        check(other != nullptr && std::strcmp(section->name, other->name) == 0);
        const IniEntry* second = other->entries.first();
        for (const IniEntry* first = section->entries.first(); first != nullptr; first = first->next) {
            check(second != nullptr && std::strcmp(first->key, second->key) == 0);
            check(std::strcmp(first->value, second->value) == 0 && first->quote == second->quote);
            second = second->next;
        }
        check(second == nullptr);
        other = other->next;
    }
    check(other == nullptr);
}

void writeAndReadAgain(IniDocument& document, const std::uint8_t* options) {
    if (!canBeSplit(document))
        document.maxLineLength = -1;
    File written(std::tmpfile());
    int result = writeIni(&document, written.get());
    if (result == IniKeyTooLong) {
        document.maxLineLength = -1;
        written.reset(std::tmpfile());
        result = writeIni(&document, written.get());
    }
    check(result == 0);
    const Document again = makeDocument(options);
    parse(again.get(), written.get(), 0);
    checkSame(document, *again);
}

void encodeAndDecode(const char* text) {
    IniString encoded;
    IniString decoded;
    check(decodeIniValue(text, decoded) == 0 && encodeIniValue(text, encoded) == 0);
    check(decodeIniValue(encoded.get(), decoded) == 0 && std::strcmp(decoded.get(), text) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t optionBytes = 4;
    if (size < optionBytes)
        return 0;
    const File file(std::tmpfile());
    check(file != nullptr);
    check(std::fwrite(data + optionBytes, 1, size - optionBytes, file.get()) == size - optionBytes);
    const Document document = makeDocument(data);
    parse(document.get(), file.get(), size % 3 == 0 ? 0 : size - optionBytes);
    const Document same = makeDocument(data);
    parse(same.get(), file.get(), 1);
    checkSame(*document, *same);
    for (const IniSection* section = document->sections.first(); section != nullptr; section = section->next)
        for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            encodeAndDecode(entry->value);
    if (canBeWritten(*document))
        writeAndReadAgain(*document, data);
    return 0;
}
