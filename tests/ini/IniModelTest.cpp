// Lookups and edits compared with a model that keeps everything in plain lists and walks all of it for every
// question: random files and operations, options changing in between.
#include "ini/IniEdit.h"
#include "support/IniTestKit.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <list>
#include <random>

namespace {

using namespace vykeltest;

struct Entry {
    std::string key, value;
    int line, quote;
};

struct Section {
    std::string key;
    int line;
    std::list<Entry> entries;
};

std::string trim(std::string name) {
    name.erase(name.find_last_not_of("\t ") + 1);
    return name.erase(0, name.find_first_not_of(' '));
}

struct Model {
    int merge, caseSensitive;
    Section* current;
    std::list<Section> sections;

    template <class Item>
    auto find(std::list<Item>& items, const std::string& key) const {
        return std::find_if(items.begin(), items.end(), [&](const Item& item) {
            return compareIniNames(item.key.c_str(), key.c_str(), caseSensitive) == 0;
        });
    }

    Section* find(const std::string& name) {
        if (current != nullptr && compareIniNames(current->key.c_str(), name.c_str(), caseSensitive) == 0)
            return current;
        const auto found = find(sections, name);
        return found != sections.end() ? current = &*found : nullptr;
    }

    void set(const std::string& name, const std::string& key, const std::string& value, int quote) {
        Section* section = find(name);
        if (section == nullptr)
            section = current = &sections.emplace_back(Section{trim(name), -1, {}});
        auto entry = merge != 0 ? find(section->entries, key) : section->entries.end();
        if (entry == section->entries.end())
            entry = section->entries.insert(entry, {trim(key), "", -1, 0});
        entry->value = value;
        entry->quote = quote;
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
        Section* section = find(name);
        if (section == nullptr || find(section->entries, key) == section->entries.end())
            return 0;
        section->entries.erase(find(section->entries, key));
        return 1;
    }

    /// Takes over what the engine has read.
    void copy(const IniDocument& document) {
        *this = {merge, caseSensitive, nullptr, {}};
        for (const IniSection* from = document.sections.first(); from != nullptr; from = from->next) {
            Section& section = sections.emplace_back(Section{from->name, from->line, {}});
            for (const IniEntry* entry = from->entries.first(); entry != nullptr; entry = entry->next)
                section.entries.push_back({entry->key, entry->value, entry->line, entry->quote});
            current = from == document.currentSection ? &section : current;
        }
    }

    std::string describe() const {
        std::string text;
        for (const Section& section : sections) {
            text += "[" + section.key + "]" + std::to_string(section.line) + "{";
            for (const Entry& entry : section.entries)
                text += describeEntry(entry);
            text += "}";
        }
        return text;
    }
};

class Pair {
public:
    explicit Pair(unsigned round) : random(round) {}

    void step(bool compares) {
        const std::string section = name("s"), key = name("k");
        const std::size_t choice = below(1500);
        if (choice < 6)
            setOptions();
        if (choice == 0) {
            load();
        } else if (choice < 20) {
            ASSERT_EQ(deleteIniSection(&engine, section.c_str()), model.removeSection(section));
        } else if (choice < 350) {
            ASSERT_EQ(deleteIniEntry(&engine, section.c_str(), key.c_str()), model.removeEntry(section, key));
        } else if (choice < 650) {
            find(section);
        } else {
            const int quote = below(2) != 0 ? '"' : 0;
            const std::string value = std::to_string(below(1000));
            ASSERT_EQ(setIniValue(&engine, section.c_str(), key.c_str(), value.c_str(), quote), 1);
            model.set(section, key, value, quote);
        }
        ASSERT_EQ(engine.currentSection != nullptr, model.current != nullptr);
        ASSERT_EQ(compares ? describe(engine) : "", compares ? model.describe() : "");
    }

private:
    std::size_t below(std::size_t limit) { return random() % limit; }

    /// One of a few names in some spelling.
    std::string name(std::string letter) {
        letter[0] = static_cast<char>(letter[0] - (below(3) == 0 ? 'a' - 'A' : 0));
        const std::string text = letter + std::to_string(below(below(2) != 0 ? 4 : 60));
        return (below(8) == 0 ? " " : "") + text + (below(8) == 0 ? "\t " : "");
    }

    void setOptions() {
        engine.mergeDuplicates = model.merge = below(3) != 0;
        engine.caseSensitive = model.caseSensitive = below(3) == 0;
        engine.parseFlags = static_cast<int>(below(16));
    }

    void load() {
        constexpr char bytes[] = "[]\n\n\n\r==::\"\"'' \t\v;\xE4"; // and NUL
        std::string text;
        for (std::size_t count = below(2) * below(1500); count != 0; --count) {
            const std::string pieces[] = {"\n[" + name("s") + "]\n", "\n" + name("k") + "=1",
                                          "\n" + name("k") + " Line" + std::to_string(below(4)) + "=2\n",
                                          std::string(1, bytes[below(sizeof bytes)])};
            text += pieces[below(4)];
        }
        ASSERT_EQ(folder.load(engine, text), 0);
        model.copy(engine);
    }

    void find(const std::string& section) {
        IniSection* at = findIniSection(&engine, section.c_str());
        const Section* found = model.find(section);
        ASSERT_EQ(at != nullptr, found != nullptr);
        const std::uint32_t count = countIniEntries(at);
        ASSERT_EQ(count, found != nullptr ? found->entries.size() : 0);
        for (int i = 0; i < 3; ++i) {
            const auto n = static_cast<std::uint32_t>(below(count + 2));
            const IniEntry* entry = getIniEntry(at, n);
            ASSERT_EQ(entry != nullptr ? describeEntry(*entry) : "",
                      n != 0 && n <= count ? describeEntry(*std::next(found->entries.begin(), n - 1)) : "");
        }
    }

    std::mt19937 random;
    IniFolder folder;
    IniDocument engine;
    Model model = {1, 0, nullptr, {}};
};

TEST(IniModel, AgreesOverRandomFilesAndOperations) {
    for (unsigned round = 0; round < 60; ++round) {
        Pair pair(round);
        for (int i = 0; i < 1500; ++i)
            ASSERT_NO_FATAL_FAILURE(pair.step(i % 8 == 0)) << round << ", step " << i;
    }
}

} // namespace
