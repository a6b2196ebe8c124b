#include "DeviceText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <new>
#include <unordered_map>
#include <utility>
#include <windows.h>

namespace simulated {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// `key=value` in a line.
struct Item {
    std::string_view key;
    std::string value;
};

[[noreturn]] void fail(const std::string& reason) {
    throw TextError(0, reason); // forEachEntry adds the line
}

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r';
}

void requireUtf8(std::string_view line) {
    const bool converted = line.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(),
                                                               static_cast<int>(line.size()), nullptr, 0) > 0;
    if (!converted && GetLastError() != ERROR_NO_UNICODE_TRANSLATION)
        throw std::bad_alloc(); // the line may be good
    if (!converted || line.find('\0') != std::string_view::npos)
        fail("the line is not UTF-8 text");
}

/// Reads the quoted text that starts at `line[at]` and moves `at` after it.
std::string readQuoted(std::string_view line, std::size_t& at) {
    std::string value;
    for (++at; at < line.size() && line[at] != '"'; ++at) {
        if (line[at] != '\\') {
            value += line[at];
            continue;
        }
        const char escaped = ++at < line.size() ? line[at] : '\0';
        switch (escaped) {
        case '\\':
        case '"':
            value += escaped;
            break;
        case 'n':
            value += '\n';
            break;
        case 'r':
            value += '\r';
            break;
        default:
            fail("a quoted text allows \\\\ \\\" \\n and \\r, no other \\");
        }
    }
    if (at == line.size())
        fail("a quoted text has no end");
    ++at;
    return value;
}

std::vector<Item> parseItems(std::string_view line) {
    std::vector<Item> items;
    std::size_t at = 0;
    for (;;) {
        while (at < line.size() && isBlank(line[at]))
            ++at;
        if (at == line.size() || line[at] == '#')
            return items;
        const std::size_t equals = line.find_first_of("= \t\r#\"", at);
        if (equals == std::string_view::npos || line[equals] != '=')
            fail("key=value expected at '" + std::string(line.substr(at, 20)) + "'");
        Item item{line.substr(at, equals - at), {}};
        const std::size_t begin = at = equals + 1;
        if (at < line.size() && line[at] == '"') {
            item.value = readQuoted(line, at);
        } else {
            at = std::min(line.find_first_of(" \t\r#\"", at), line.size());
            item.value = line.substr(begin, at - begin);
        }
        if (at == begin || (at < line.size() && !isBlank(line[at]) && line[at] != '#'))
            fail("the value of '" + std::string(item.key) + "' is not one word; put it in quotes");
        for (const Item& earlier : items)
            if (earlier.key == item.key)
                fail("'" + std::string(item.key) + "' occurs twice in the line");
        items.push_back(std::move(item));
    }
}

std::uint32_t parseInteger(const Item& item, std::uint32_t highest) {
    std::uint32_t result = 0;
    const char* const end = item.value.data() + item.value.size();
    const auto parsed = std::from_chars(item.value.data(), end, result);
    if (parsed.ec != std::errc() || parsed.ptr != end || result > highest)
        fail("'" + std::string(item.key) + "' must be a whole number from 0 to " + std::to_string(highest));
    return result;
}

DeviceEntry toEntry(std::vector<Item> items) {
    DeviceEntry entry;
    for (Item& item : items) {
        if (item.key == "token") {
            entry.token = std::move(item.value);
        } else if (item.key == "token2") {
            entry.token2 = std::move(item.value);
        } else if (item.key == "version") {
            entry.version =
                static_cast<std::int32_t>(parseInteger(item, std::numeric_limits<std::int32_t>::max()));
        } else if (item.key == "sortKey") {
            entry.sortKey = parseInteger(item, std::numeric_limits<std::uint32_t>::max());
        } else if (item.key == "number") {
            entry.number = parseInteger(item, vykel::noDeviceNumber - 1);
        } else if (item.key == "alias") {
            entry.alias = std::move(item.value);
        } else {
            fail("unknown key '" + std::string(item.key) + "'");
        }
    }
    if (entry.token.empty())
        fail("a device needs a token");
    if (entry.token2.empty())
        entry.token2 = entry.token;
    return entry;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n' || c == '\r') {
            result += c == '\n' ? "\\n" : "\\r";
            continue;
        }
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result += '"';
}

/// Calls `visit` with the entry of each line of `text` that has one, and the line's number from 1. Calls
/// `fault` with what is wrong with a line.
template <class Visit, class Fault>
void forEachEntry(std::string_view text, Visit&& visit, Fault&& fault) {
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        try {
            requireUtf8(line);
            std::vector<Item> items = parseItems(line);
            if (!items.empty())
                visit(toEntry(std::move(items)), number);
        } catch (const TextError& error) {
            fault(TextError(number, error.what()));
        }
    }
}

} // namespace

bool isWide(std::string_view text) noexcept {
    const std::string_view start = text.substr(0, 2);
    return start == "\xFF\xFE" || start == "\xFE\xFF" || start.find('\0') != std::string_view::npos;
}

std::vector<DeviceEntry> parseDevices(std::string_view text) {
    std::vector<DeviceEntry> devices;
    std::unordered_map<std::string, std::size_t> lineOfToken;
    const auto add = [&](DeviceEntry entry, std::size_t line) {
        const auto [earlier, isNew] = lineOfToken.emplace(entry.token, line);
        if (!isNew)
            fail("the token is used already in line " + std::to_string(earlier->second));
        devices.push_back(std::move(entry));
    };
    forEachEntry(text, add, [](const TextError& error) { throw error; });
    return devices;
}

Changes parseChanges(std::string_view text) {
    Changes changes;
    forEachEntry(
        text, [&](DeviceEntry entry, std::size_t) { changes.entries.push_back(std::move(entry)); },
        [&](const TextError& error) {
            if (!changes.error)
                changes.error.emplace(error);
        });
    return changes;
}

std::string formatChange(const DeviceEntry& change) {
    std::string line;
    if (change.number != vykel::noDeviceNumber)
        line += "number=" + std::to_string(change.number) + " ";
    if (change.alias)
        line += "alias=" + quoted(*change.alias) + " ";
    return line + "token=" + quoted(change.token);
}

} // namespace simulated
