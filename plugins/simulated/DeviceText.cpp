#include "DeviceText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <unordered_map>
#include <utility>
#include <windows.h>

namespace simulated {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// `key=value` in a line, with the position of the value as it is written there, quotes included.
struct Item {
    std::string_view key;
    std::string value;
    std::size_t begin;
    std::size_t end;
};

[[noreturn]] void fail(const std::string& reason) {
    throw TextError(0, reason); // parseDevices adds the line
}

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r';
}

void requireUtf8(std::string_view line) {
    const bool valid = line.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.data(),
                                                           static_cast<int>(line.size()), nullptr, 0) > 0;
    if (!valid || line.find('\0') != std::string_view::npos)
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
        Item item{line.substr(at, equals - at), {}, equals + 1, 0};
        at = equals + 1;
        if (at < line.size() && line[at] == '"') {
            item.value = readQuoted(line, at);
        } else {
            at = std::min(line.find_first_of(" \t\r#\"", at), line.size());
            item.value = line.substr(item.begin, at - item.begin);
        }
        if (at == item.begin || (at < line.size() && !isBlank(line[at]) && line[at] != '#'))
            fail("the value of '" + std::string(item.key) + "' is not one word; put it in quotes");
        item.end = at;
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

std::uint32_t parseDeviceNumber(const Item& item) {
    return parseInteger(item, vykel::noDeviceNumber - 1);
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
            entry.number = parseDeviceNumber(item);
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

/// Sets `key` to `written` in a valid line; adds it after the last item when the line lacks it.
void setItem(std::string& line, std::string_view key, const std::string& value, const std::string& written) {
    std::size_t end = 0;
    for (const Item& item : parseItems(line)) {
        if (item.key == key) {
            if (item.value != value)
                line.replace(item.begin, item.end - item.begin, written);
            return;
        }
        end = item.end;
    }
    line.insert(end, " " + std::string(key) + "=" + written);
}

/// Calls `visit` with every line of `text`, without its line end, and its number from 1.
template <class Visit>
void forEachLine(std::string_view text, Visit&& visit) {
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        visit(text.substr(0, end), number);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// The length of the byte-order mark, if there is one.
std::size_t markLength(std::string_view text) noexcept {
    return text.substr(0, byteOrderMark.size()) == byteOrderMark ? byteOrderMark.size() : 0;
}

} // namespace

bool isWide(std::string_view text) noexcept {
    const std::string_view start = text.substr(0, 2);
    return start == "\xFF\xFE" || start == "\xFE\xFF" || start.find('\0') != std::string_view::npos;
}

std::vector<DeviceEntry> parseDevices(std::string_view text) {
    std::vector<DeviceEntry> devices;
    std::unordered_map<std::string, std::size_t> lineOfToken;
    forEachLine(text.substr(markLength(text)), [&](std::string_view line, std::size_t number) {
        try {
            requireUtf8(line);
            std::vector<Item> items = parseItems(line);
            if (items.empty())
                return;
            DeviceEntry entry = toEntry(std::move(items));
            entry.line = number;
            const auto [earlier, isNew] = lineOfToken.emplace(entry.token, number);
            if (!isNew)
                fail("the token is used already in line " + std::to_string(earlier->second));
            devices.push_back(std::move(entry));
        } catch (const TextError& error) {
            throw TextError(number, error.what());
        }
    });
    return devices;
}

std::string rewriteDevices(std::string_view text, const std::vector<DeviceEntry>& devices) {
    std::string result(text.substr(0, markLength(text)));
    auto device = devices.begin();
    forEachLine(text.substr(result.size()), [&](std::string_view original, std::size_t number) {
        std::string line(original);
        if (device != devices.end() && device->line == number) {
            if (device->number != vykel::noDeviceNumber) {
                const std::string value = std::to_string(device->number);
                setItem(line, "number", value, value);
            }
            if (device->alias)
                setItem(line, "alias", *device->alias, quoted(*device->alias));
            ++device;
        }
        result += line;
        if (original.data() + original.size() != text.data() + text.size())
            result += '\n';
    });
    return result;
}

std::string formatChange(const DeviceChange& change) {
    std::string line;
    if (change.number)
        line += "number=" + std::to_string(*change.number) + " ";
    if (change.alias)
        line += "alias=" + quoted(*change.alias) + " ";
    return line + "token=" + quoted(change.token);
}

std::optional<DeviceChange> parseChange(std::string_view line) {
    try {
        DeviceChange change;
        for (Item& item : parseItems(line))
            if (item.key == "number")
                change.number = parseDeviceNumber(item);
            else if (item.key == "alias")
                change.alias = std::move(item.value);
            else if (item.key == "token")
                change.token = std::move(item.value);
        return change.token.empty() ? std::nullopt : std::optional(std::move(change));
    } catch (const TextError&) {
        return std::nullopt;
    }
}

} // namespace simulated
