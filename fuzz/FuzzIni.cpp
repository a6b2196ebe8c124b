// The INI engine: any file may be loaded, with any options, and edited as plain texts are. What is then
// saved must read back as the same document. The first four bytes choose the options, the next one how many
// pairs of bytes after it are edits; the rest is the file.
#include "Fuzz.h"
#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "ini/IniText.h"
#include "ini/IniWriter.h"
#include "support/IniDescription.h"
#include "support/TestFiles.h"
#include "vybase/owners.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using namespace vyini;
using namespace vykelfuzz;
using namespace vykeltest;

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
        return trim(value) == value && !stripped;
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

void checkTexts(const char* text) {
    IniString encoded, decoded;
    check(decodeIniValue(text, decoded) == 0 && encodeIniValue(text, encoded) == 0);
    if (std::strlen(text) < 100)
        note(decoded.get() + ('|' + std::string(encoded.get())) + '|' + nameTempByExtension(text).get() +
             '|' + nameTempByPattern(text, 7).get());
    check(decodeIniValue(encoded.get(), decoded) == 0 && std::strcmp(decoded.get(), text) == 0);
}

/// Compares what is before the first equals sign with what follows it.
void compareNames(const std::string& text) {
    const std::string left = text.substr(0, text.find('=')),
                      right = text.substr(std::min(left.size() + 1, text.size()));
    for (const int caseSensitive : {0, 1}) {
        const int order = compareIniNames(left.c_str(), right.c_str(), caseSensitive);
        check(equalIniNames(left.c_str(), right.c_str(), caseSensitive) == (order == 0) &&
              compareIniNames(right.c_str(), left.c_str(), caseSensitive) == -order);
        check(order != 0 ||
              hashIniName(left.c_str(), caseSensitive) == hashIniName(right.c_str(), caseSensitive));
        note(std::to_string(order));
    }
}

std::string nameOf(char letter, unsigned byte) {
    const std::string name =
        static_cast<char>(byte & 0x80 ? letter - 'a' + 'A' : letter) + std::to_string(byte & 0x3F);
    return byte & 0x40 ? " " + name + "\t " : name;
}

/// Edits the document by three bytes, and its texts likewise in the plainest way.
void edit(IniDocument& document, std::vector<std::vector<std::string>>& texts, const std::uint8_t* bytes) {
    const std::string section = nameOf('s', bytes[1]), key = nameOf('k', bytes[2]);
    const int operation = bytes[0] & 7;
    if (operation == 0) {
        document.mergeDuplicates = bytes[1] & 1;
        document.caseSensitive = bytes[2] & 1;
        return;
    }
    const auto isSame = [&](const char* name, const std::string& other) {
        return compareIniNames(name, other.c_str(), document.caseSensitive) == 0;
    };
    const IniSection* const current = document.currentSection;
    const bool prefersCurrent = operation != 1 && current != nullptr && isSame(current->name, section);
    std::size_t at = 0, inside = 1;
    const IniSection* found = document.sections.first();
    for (; found != nullptr && (prefersCurrent ? found != current : !isSame(found->name, section)); ++at)
        found = found->next;
    const IniEntry* entry = found != nullptr ? found->entries.first() : nullptr;
    for (; entry != nullptr && !isSame(entry->key, key); ++inside)
        entry = entry->next;
    const bool exists = operation == 1 ? found != nullptr : entry != nullptr;
    if (operation == 1) {
        check(deleteIniSection(&document, section.c_str()) == exists);
        if (exists)
            texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(at));
        check(document.currentSection == (current != found ? current : nullptr));
        return;
    }
    if (operation == 2) {
        check(deleteIniEntry(&document, section.c_str(), key.c_str()) == exists);
        if (exists)
            texts[at].erase(texts[at].begin() + static_cast<std::ptrdiff_t>(inside));
    } else if (operation == 3) {
        const IniEntry* const nth = getIniEntry(findIniSection(&document, section.c_str()), bytes[2]);
        const std::size_t count = found != nullptr ? texts[at].size() : 0;
        check(nth != nullptr ? texts[at].at(bytes[2]) == describeEntry(*nth)
                             : bytes[2] == 0 || bytes[2] >= count);
    } else {
        const int quote = operation < 6 ? 0 : operation == 6 ? '"' : '\'';
        const bool merges = document.mergeDuplicates != 0 && exists;
        struct {
            std::string key, value;
            int line, quote;
        } const made{merges ? entry->key : trim(key), std::string(bytes[0] >> 3, 'v'),
                     merges ? entry->line : -1, quote};
        check(setIniValue(&document, section.c_str(), key.c_str(), (' ' + made.value).c_str(), quote) == 1);
        if (found == nullptr)
            texts.push_back({"[" + trim(section) + "]-1"});
        if (!merges)
            texts[at].emplace_back();
        texts[at][merges ? inside : texts[at].size() - 1] = describeEntry(made);
    }
    check(document.currentSection == (found != nullptr ? found
                                      : operation > 3
                                          ? document.sections.at(static_cast<std::uint32_t>(texts.size()))
                                          : current));
}

/// Loads the file, and reads it again in small blocks. False when its text is wide.
bool load(IniDocument& document, const std::string& path, const std::string& text) {
    const auto begins = [&](const std::string& mark) { return text.compare(0, mark.size(), mark) == 0; };
    const bool isWide = begins("\xFF\xFE") || begins("\xFE\xFF") || begins(std::string("\0\0\xFE\xFF", 4));
    check(loadIniFile(&document, path.c_str()) == (isWide ? IniWideText : 0));
    if (isWide)
        return false;
    const std::string loaded = describe(document);
    std::uint32_t number = 0;
    const int isNumber = getIniUInt(&document, "a", "k", &number);
    note(loaded + std::to_string(document.firstBadLine) + ' ' + std::to_string(document.lastKeyLine) + ' ' +
         std::to_string(isNumber) + ' ' + std::to_string(number));
    const vybase::FileStream file(std::fopen(path.c_str(), "rb"));
    check(file != nullptr && std::fseek(file.get(), begins("\xEF\xBB\xBF") ? 3 : 0, SEEK_SET) == 0);
    IniLineReader reader(file.get(), 1);
    check(parseIni(&document, &reader) == 0 && describe(document) == loaded);
    return true;
}

/// Saves the document to the file that holds `text`. A key that is too long to be split costs the file only
/// when it is not saved safely.
void save(IniDocument& document, const std::filesystem::path& path, const std::string& text) {
    if (!canBeSplit(document))
        document.maxLineLength = -1;
    int result = saveIniFile(&document, path.string().c_str());
    if (result == IniKeyTooLong) {
        check(readFile(path) == ((document.writeFlags & IniSafeSave) != 0 ? text : ""));
        document.maxLineLength = -1;
        result = saveIniFile(&document, path.string().c_str());
    }
    note(readFile(path));
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
    writeFile(path, text);
    IniDocument document;
    setOptions(document, data);
    if (!load(document, path.string(), text))
        return 0;
    auto texts = textsOf(document);
    for (std::size_t i = 0; i < edits; ++i) {
        edit(document, texts, data + optionBytes + 3 * i);
        check(i % 32 != 0 || textsOf(document) == texts);
    }
    check(textsOf(document) == texts);
    note(edits != 0 ? describe(document) : "");
    setOptions(document, data);
    const bool comparable = canBeWritten(document);
    save(document, path, text);
    const std::string saved = describe(document, false);
    document.mergeDuplicates = 0; // whatever was kept apart stays apart
    const int result = loadIniFile(&document, document.path.get());
    check(!comparable || (result == 0 && describe(document, false) == saved));
    checkTexts(text.c_str());
    compareNames(text);
    return 0;
}
