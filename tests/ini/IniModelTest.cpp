// Lookups and edits compared with a model that keeps everything in plain vectors and walks all of it for
// every question: random files and operations, options changing in between.
#include "ini/IniEdit.h"
#include "support/IniTestKit.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace vykeltest;

std::string trim(const std::string& text) {
    constexpr char blanks[] = " \t\n\v\f\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::string upper(std::string text) {
    for (char& c : text)
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return text;
}

struct Entry {
    std::string key, value;
    int line, quote;
};

struct Section {
    std::string key;
    int line;
    std::vector<Entry> entries;
};
using Sections = std::vector<std::shared_ptr<Section>>;

class Model {
public:
    int merge = 1, caseSensitive = 0;
    std::shared_ptr<Section> current;
    Sections sections;

    /// The first difference decides, unless one side has only blanks left.
    bool same(const std::string& left, const std::string& right) const {
        if (caseSensitive != 0)
            return left == right;
        const std::string l = upper(trim(left + ".")), r = upper(trim(right + ".")); // blanks at the end stay
        const std::size_t common = std::min(l.size(), r.size()) - 1;
        return l.compare(0, common, r, 0, common) == 0 && trim(l.substr(common)) == "." &&
               trim(r.substr(common)) == ".";
    }

    Sections::iterator findFirst(const std::string& name) {
        return std::find_if(sections.begin(), sections.end(),
                            [&](const auto& section) { return same(section->key, name); });
    }

    Section* find(const std::string& name) {
        if (current != nullptr && same(current->key, name))
            return current.get();
        const auto found = findFirst(name);
        return found != sections.end() ? (current = *found).get() : nullptr;
    }

    std::vector<Entry>::iterator find(Section& section, const std::string& key) const {
        return std::find_if(section.entries.begin(), section.entries.end(),
                            [&](const Entry& entry) { return same(entry.key, key); });
    }

    void set(const std::string& name, const std::string& key, const std::string& value, int quote) {
        Section* section = find(name);
        if (section == nullptr)
            section =
                sections.emplace_back(current = std::make_shared<Section>(Section{trim(name), -1, {}})).get();
        const auto entry = merge != 0 ? find(*section, key) : section->entries.end();
        if (entry == section->entries.end())
            section->entries.push_back({trim(key), value, -1, quote});
        else
            *entry = {entry->key, value, entry->line, quote};
    }

    int removeSection(const std::string& name) {
        const auto found = findFirst(name);
        if (found == sections.end())
            return 0;
        if (current == *found)
            current = nullptr;
        sections.erase(found);
        return 1;
    }

    int removeEntry(const std::string& name, const std::string& key) {
        Section* section = find(name);
        if (section == nullptr || find(*section, key) == section->entries.end())
            return 0;
        section->entries.erase(find(*section, key));
        return 1;
    }

    /// Takes over what the engine has read.
    void copy(const IniDocument& document) {
        sections.clear();
        current = nullptr;
        for (const IniSection* from = document.sections.first(); from != nullptr; from = from->next) {
            auto& section =
                sections.emplace_back(std::make_shared<Section>(Section{from->name, from->line, {}}));
            for (const IniEntry* entry = from->entries.first(); entry != nullptr; entry = entry->next)
                section->entries.push_back({entry->key, entry->value, entry->line, entry->quote});
            if (from == document.currentSection)
                current = section;
        }
    }

    std::string describe() const {
        std::string text;
        for (const auto& section : sections) {
            text += "[" + section->key + "]" + std::to_string(section->line) + "{";
            for (const Entry& entry : section->entries)
                text += describeEntry(entry);
            text += "}";
        }
        return text;
    }
};

class Pair {
public:
    explicit Pair(unsigned round) : random(round) {}

    void step() {
        const std::string section = name("s");
        const std::string key = name("k");
        const std::size_t choice = below(1500);
        if (choice == 0) {
            load();
        } else if (choice < 6) {
            setOptions();
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
                      n != 0 && n <= count ? describeEntry(found->entries[n - 1]) : "");
        }
    }

    void compare() {
        ASSERT_EQ(describe(engine), model.describe());
        ASSERT_EQ(engine.currentSection != nullptr, model.current != nullptr);
    }

    void load() {
        static const std::vector<std::string> pieces = {
            "[",          "]",          "[s1]", "[S2]\r\n",   "k",
            "K1",         " ",          "\t",   "=",          "=",
            "v",          ":",          "\"",   "'",          " Line",
            " Line1=a\n", " Line2=b\n", "1",    "0002",       "99999999999",
            "\r",         "\n",         "\n",   "\r\n",       std::string(1, '\0'),
            ";",          "\xE4",       "=1\n", "k1=\"2\"\n", "\v"};
        std::string text;
        for (std::size_t count = below(2) * below(1500); count != 0; --count)
            text += pieces[below(pieces.size())];
        setOptions();
        ASSERT_EQ(folder.load(engine, text), 0);
        model.copy(engine);
    }

    void setOptions() {
        engine.mergeDuplicates = model.merge = below(3) != 0;
        engine.caseSensitive = model.caseSensitive = below(3) == 0;
        engine.parseFlags = static_cast<int>(below(16));
    }

private:
    std::size_t below(std::size_t limit) { return random() % limit; }

    /// One of a few names in some spelling.
    std::string name(const char* letter) {
        std::string text = letter + std::to_string(below(below(2) != 0 ? 4 : 60));
        text = below(3) == 0 ? upper(text) : text;
        return std::string(below(8) == 0 ? " " : "") + text + (below(8) == 0 ? "\t " : "");
    }

    std::mt19937 random;
    IniFolder folder;
    IniDocument engine;
    Model model;
};

TEST(IniModel, AgreesOverRandomFilesAndOperations) {
    for (unsigned round = 0; round < 60; ++round) {
        Pair pair(round);
        for (int i = 0; i < 1500; ++i) {
            ASSERT_NO_FATAL_FAILURE(pair.step()) << round << ", step " << i;
            ASSERT_NO_FATAL_FAILURE(i % 8 == 0 ? pair.compare() : void()) << round << ", step " << i;
        }
    }
}

} // namespace
