#include "ini/IniEdit.h"

#include "ini/IniMemory.h"
#include "ini/IniText.h"
#include <cstring>
#include <utility>

namespace vyini {

namespace {

/// A copy without the blanks at both ends, or null when memory is short.
IniString trimmedCopy(const char* text) noexcept {
    while (isBlank(*text))
        ++text;
    std::size_t length = std::strlen(text);
    while (length != 0 && isBlank(text[length - 1]))
        --length;
    return copyText(text, length);
}

void setValue(IniEntry& entry, IniString value, int quote) noexcept {
    if (entry.ownsValue)
        std::free(const_cast<char*>(entry.value));
    entry.value = value.release();
    entry.ownsValue = true;
    entry.quote = static_cast<std::uint8_t>(quote);
}

/// A section that is in no list yet, or null when memory is short.
IniSection* makeSection(IniDocument& document, const char* name) noexcept {
    IniString kept = trimmedCopy(name);
    IniSection* section = kept != nullptr ? document.sectionPool.make() : nullptr;
    if (section != nullptr) {
        section->name = kept.release();
        section->ownsName = true;
    }
    return section;
}

/// Adds an entry at the section's end. False when memory is short.
bool addEntry(IniDocument& document, IniSection& section, const char* key, IniString value,
              int quote) noexcept {
    IniString kept = trimmedCopy(key);
    IniEntry* entry = kept != nullptr ? document.entryPool.make() : nullptr;
    if (entry == nullptr)
        return false;
    entry->key = kept.release();
    entry->ownsKey = true;
    setValue(*entry, std::move(value), quote);
    section.entries.append(entry);
    return true;
}

int memoryFull(IniDocument& document) noexcept {
    document.currentSection = nullptr;
    return IniMemoryFull;
}

} // namespace

IniSection* findIniSection(IniDocument* document, const char* name) noexcept {
    if (name == nullptr)
        return nullptr;
    IniSection* current = document->currentSection;
    if (current != nullptr && equalIniNames(name, current->name, document->caseSensitive))
        return current;
    IniSection* found = document->sections.find(name, document->caseSensitive);
    if (found != nullptr)
        document->currentSection = found;
    return found;
}

IniEntry* findIniEntry(IniSection* section, int caseSensitive, const char* key) noexcept {
    return section != nullptr && key != nullptr ? section->entries.find(key, caseSensitive) : nullptr;
}

int getIniUInt(IniDocument* document, const char* section, const char* key, std::uint32_t* out) noexcept {
    const IniEntry* entry = findIniEntry(findIniSection(document, section), document->caseSensitive, key);
    if (entry == nullptr)
        return 0;
    document->lastKeyLine = entry->line;
    if (isBlankText(entry->value))
        return 0;
    const char* text = entry->value;
    while (isBlank(*text))
        ++text;
    if (*text == '+')
        ++text;
    std::uint32_t number = 0;
    if (!readDigits(text, number) || !isBlankText(text))
        return IniNotANumber;
    *out = number;
    return 1;
}

int setIniValue(IniDocument* document, const char* section, const char* key, const char* value,
                int quote) noexcept {
    if (isBlankText(section) || isBlankText(key))
        return IniEmptyName;
    IniString kept = trimmedCopy(value != nullptr ? value : "");
    if (kept == nullptr)
        return memoryFull(*document);
    IniSection* found = findIniSection(document, section);
    IniEntry* entry = nullptr;
    if (document->mergeDuplicates != 0)
        entry = findIniEntry(found, document->caseSensitive, key);
    if (entry != nullptr) {
        setValue(*entry, std::move(kept), quote);
        return 1;
    }
    IniSection* target = found != nullptr ? found : makeSection(*document, section);
    if (target == nullptr)
        return memoryFull(*document);
    if (!addEntry(*document, *target, key, std::move(kept), quote)) {
        if (found == nullptr)
            freeIniSection(document, target);
        return memoryFull(*document);
    }
    if (found == nullptr) {
        document->sections.append(target);
        document->currentSection = target;
    }
    return 1;
}

int deleteIniSection(IniDocument* document, const char* name) noexcept {
    IniSection* section = name != nullptr ? document->sections.find(name, document->caseSensitive) : nullptr;
    if (section == nullptr)
        return 0;
    if (document->currentSection == section)
        document->currentSection = nullptr;
    document->sections.remove(section);
    freeIniSection(document, section);
    return 1;
}

int deleteIniEntry(IniDocument* document, const char* section, const char* key) noexcept {
    IniSection* found = findIniSection(document, section);
    IniEntry* entry = findIniEntry(found, document->caseSensitive, key);
    if (entry == nullptr)
        return 0;
    found->entries.remove(entry);
    document->entryPool.release(entry);
    return 1;
}

std::uint32_t countIniEntries(const IniSection* section) noexcept {
    return section != nullptr ? section->entries.count() : 0;
}

IniEntry* getIniEntry(IniSection* section, std::uint32_t n) noexcept {
    return section != nullptr ? section->entries.at(n) : nullptr;
}

} // namespace vyini
