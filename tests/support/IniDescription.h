#ifndef TESTS_INIDESCRIPTION_H
#define TESTS_INIDESCRIPTION_H

#include "ini/IniDocument.h"
#include <string>
#include <vector>

namespace vykeltest {

inline std::string trim(std::string text) {
    constexpr const char* blanks = " \t\n\v\f\r";
    text.erase(text.find_last_not_of(blanks) + 1);
    return text.erase(0, text.find_first_not_of(blanks));
}

/// An entry of a document or of a model of one: `key=value@line;`, and before `=` the quote that was taken
/// off.
template <class Entry>
std::string describeEntry(const Entry& entry, bool withLine = true) {
    const std::string quote(entry.quote != 0 ? 1 : 0, static_cast<char>(entry.quote));
    const std::string line = withLine ? "@" + std::to_string(entry.line) : "";
    return entry.key + quote + "=" + entry.value + line + ";";
}

/// Of each section its name and line, then its entries.
inline std::vector<std::vector<std::string>> textsOf(const vyini::IniDocument& document,
                                                     bool withLines = true) {
    std::vector<std::vector<std::string>> texts;
    for (auto* section = document.sections.first(); section != nullptr; section = section->next) {
        auto& text = texts.emplace_back(1, "[" + std::string(section->name) + "]" +
                                               (withLines ? std::to_string(section->line) : ""));
        for (auto* entry = section->entries.first(); entry != nullptr; entry = entry->next)
            text.push_back(describeEntry(*entry, withLines));
    }
    return texts;
}

/// Everything that a document holds: `[name]line{entries}`.
inline std::string describe(const vyini::IniDocument& document, bool withLines = true) {
    std::string all;
    for (const auto& texts : textsOf(document, withLines)) {
        all += texts.front() + '{';
        for (std::size_t i = 1; i < texts.size(); ++i)
            all += texts[i];
        all += '}';
    }
    return all;
}

} // namespace vykeltest

#endif
