#include "ini/IniDocument.h"

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
    for (IniEntry* entry = section->entries.first(); entry != nullptr;) {
        IniEntry* next = entry->next;
        document->entryPool.release(entry);
        entry = next;
    }
    document->sectionPool.release(section);
}

void clearIniSections(IniDocument* document) noexcept {
    for (IniSection* section = document->sections.first(); section != nullptr;) {
        IniSection* next = section->next;
        freeIniSection(document, section);
        section = next;
    }
    document->sections = {};
    document->currentSection = nullptr;
    document->sectionPool.clear();
    document->entryPool.clear();
    document->text.clear();
}

} // namespace vyini
