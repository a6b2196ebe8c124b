#ifndef TESTS_INIMODEL_H
#define TESTS_INIMODEL_H

#include "ini/IniEdit.h"
#include "support/IniDescription.h"
#include <algorithm>
#include <list>
#include <string>

namespace vykeltest {

/// A model of an entry and of a section, with the members that describe() asks for.
struct ModelEntry {
    std::string key, value;
    int line, quote;
};

struct ModelSection {
    std::string key;
    int line;
    std::list<ModelEntry> entries;
};

inline std::string trim(std::string text) {
    constexpr const char* blanks = " \t\n\v\f\r";
    text.erase(text.find_last_not_of(blanks) + 1);
    return text.erase(0, text.find_first_not_of(blanks));
}

/// A document that keeps everything in plain lists and walks all of it for every question.
struct IniModel {
    int merge = 1, caseSensitive = 0;
    ModelSection* current = nullptr;
    std::list<ModelSection> sections;

    template <class Item>
    auto find(std::list<Item>& items, const std::string& key) const {
        return std::find_if(items.begin(), items.end(), [&](const Item& item) {
            return vyini::compareIniNames(item.key.c_str(), key.c_str(), caseSensitive) == 0;
        });
    }

    ModelSection* find(const std::string& name) {
        if (current != nullptr &&
            vyini::compareIniNames(current->key.c_str(), name.c_str(), caseSensitive) == 0)
            return current;
        const auto found = find(sections, name);
        return found != sections.end() ? current = &*found : nullptr;
    }

    int set(const std::string& name, const std::string& key, const std::string& value, int quote) {
        if (trim(name).empty() || trim(key).empty())
            return vyini::IniEmptyName;
        ModelSection* section = find(name);
        if (section == nullptr)
            section = current = &sections.emplace_back(ModelSection{trim(name), -1, {}});
        auto entry = merge != 0 ? find(section->entries, key) : section->entries.end();
        if (entry == section->entries.end())
            entry = section->entries.insert(entry, {trim(key), "", -1, 0});
        entry->value = trim(value);
        entry->quote = quote;
        return 1;
    }

    int removeSection(const std::string& name) {
        const auto found = find(sections, name);
        if (found == sections.end())
            return 0;
        current = current == &*found ? nullptr : current;
        sections.erase(found);
        return 1;
    }

    int removeEntry(const std::string& name, const std::string& key) {
        ModelSection* section = find(name);
        if (section == nullptr || find(section->entries, key) == section->entries.end())
            return 0;
        section->entries.erase(find(section->entries, key));
        return 1;
    }

    /// An entry of a section, counted from 1; empty when there is none.
    std::string describeNth(const std::string& name, std::size_t n) {
        ModelSection* const section = find(name);
        return section != nullptr && n != 0 && n <= section->entries.size()
                   ? describeEntry(*std::next(section->entries.begin(), static_cast<std::ptrdiff_t>(n - 1)))
                   : "";
    }

    /// Takes over what the engine has read.
    void copy(const vyini::IniDocument& document) {
        *this = {merge, caseSensitive, nullptr, {}};
        for (const vyini::IniSection* from = document.sections.first(); from != nullptr; from = from->next) {
            ModelSection& section = sections.emplace_back(ModelSection{from->name, from->line, {}});
            for (const vyini::IniEntry* entry = from->entries.first(); entry != nullptr; entry = entry->next)
                section.entries.push_back({entry->key, entry->value, entry->line, entry->quote});
            current = from == document.currentSection ? &section : current;
        }
    }

    std::string describe() const {
        std::string text;
        for (const ModelSection& section : sections) {
            text += "[" + section.key + "]" + std::to_string(section.line) + "{";
            for (const ModelEntry& entry : section.entries)
                text += describeEntry(entry);
            text += "}";
        }
        return text;
    }
};

} // namespace vykeltest

#endif
