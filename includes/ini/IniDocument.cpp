#include "ini/IniDocument.h"

#include <cstdint>
#include <new>
#include <utility>

namespace vyini {

namespace {

void freeOwned(const char* text, bool owned) noexcept {
    if (owned)
        std::free(const_cast<char*>(text));
}

} // namespace

IniEntry::~IniEntry() {
    freeOwned(key, ownsKey);
    freeOwned(value, ownsValue);
}

IniSection::~IniSection() {
    freeOwned(name, ownsName);
}

IniDocument::~IniDocument() {
    clearIniSections(this);
}

IniDocument* createIniDocument() noexcept {
    return new (std::nothrow) IniDocument;
}

void freeIniDocument(IniDocument* document) noexcept {
    delete document;
}

void freeIniSection(IniDocument* document, IniSection* section) noexcept {
    for (IniEntry* entry = section->entries.first(); entry != nullptr;)
        document->entryPool.release(std::exchange(entry, entry->next));
    document->sectionPool.release(section);
}

void clearIniSections(IniDocument* document) noexcept {
    for (IniSection* section = document->sections.first(); section != nullptr;)
        freeIniSection(document, std::exchange(section, section->next));
    document->sections = {};
    document->currentSection = nullptr;
    document->sectionPool.clear();
    document->entryPool.clear();
    document->text.clear();
}

bool findFile(const char* path, IniFileFacts* facts) noexcept {
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA(path, &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    if (facts != nullptr) {
        facts->lastWriteTime = found.ftLastWriteTime;
        facts->size = static_cast<std::size_t>(std::uint64_t{found.nFileSizeHigh} << 32 |
                                               std::uint64_t{found.nFileSizeLow});
    }
    return true;
}

} // namespace vyini
