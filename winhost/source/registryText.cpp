#include "registryText.h"

#include "textConversion.h"
#include "winhost/registry.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace winhost {

namespace {

constexpr std::u16string_view formatLine = u"Windows Registry Editor Version 5.00";

/// The value of a hexadecimal digit, or 16.
unsigned digitValue(char16_t unit) noexcept {
    const std::size_t at = std::u16string_view(u"0123456789abcdefABCDEF").find(unit);
    return at == std::u16string_view::npos ? 16U : static_cast<unsigned>(at < 16 ? at : at - 6);
}

void appendUnit(std::vector<BYTE>& bytes, char16_t unit) {
    bytes.push_back(static_cast<BYTE>(unit));
    bytes.push_back(static_cast<BYTE>(unit >> 8U));
}

/// Parses in one pass. A take... function moves past what it takes; a line that is not understood is skipped.
class Parser {
public:
    Parser(std::u16string_view file, RegistryKey& registry) : text(file), root(registry) {}

    bool parse() {
        if (!take(formatLine))
            return false;
        for (skipLine(); !text.empty(); skipLine()) {
            skipAny(u" \t\r\n");
            if (take(u"["))
                parseKey();
            else if (!text.empty() && (text.front() == u'"' || text.front() == u'@'))
                parseValue();
        }
        return true;
    }

private:
    bool take(std::u16string_view prefix) noexcept {
        const bool found = text.substr(0, prefix.size()) == prefix;
        text.remove_prefix(found ? prefix.size() : 0);
        return found;
    }

    void skipAny(std::u16string_view units) noexcept {
        text.remove_prefix(std::min(text.find_first_not_of(units), text.size()));
    }

    void skipLine() noexcept { text.remove_prefix(std::min(text.find_first_of(u"\r\n"), text.size())); }

    void parseKey() {
        const std::u16string_view line = text.substr(0, text.find_first_of(u"\r\n"));
        const std::size_t end = line.rfind(u']'); // a key's name may contain one, too
        key = end == std::u16string_view::npos ? nullptr : &root.create(line.substr(0, end));
    }

    void parseValue() {
        RegistryValue value;
        if ((!take(u"@") && !takeQuoted(value.name)) || key == nullptr)
            return;
        skipAny(u" \t");
        if (!take(u"="))
            return;
        skipAny(u" \t");
        if (takeData(value))
            key->setValue(std::move(value));
    }

    bool takeData(RegistryValue& value) {
        std::u16string quotedText;
        if (takeQuoted(quotedText)) {
            value.type = REG_SZ;
            for (const char16_t unit : quotedText)
                appendUnit(value.bytes, unit);
            appendUnit(value.bytes, u'\0');
            return true;
        }
        if (take(u"dword:")) {
            DWORD number = 0;
            value.type = REG_DWORD;
            const bool good = takeNumber(number);
            appendUnit(value.bytes, static_cast<char16_t>(number));
            appendUnit(value.bytes, static_cast<char16_t>(number >> 16U));
            return good;
        }
        value.type = REG_BINARY;
        if (!take(u"hex") || (take(u"(") && !(takeNumber(value.type) && take(u")"))) || !take(u":"))
            return false;
        takeBytes(value.bytes);
        return true;
    }

    /// A text between quotes; it may contain line ends.
    bool takeQuoted(std::u16string& result) {
        if (!take(u"\""))
            return false;
        while (!text.empty() && !take(u"\"")) {
            take(u"\\");
            result.append(text.substr(0, 1));
            text.remove_prefix(std::min<std::size_t>(1, text.size()));
        }
        return true;
    }

    bool takeNumber(DWORD& number) noexcept {
        std::size_t digits = 0;
        for (number = 0; !text.empty() && digitValue(text.front()) < 16; ++digits) {
            number = number << 4U | digitValue(text.front());
            text.remove_prefix(1);
        }
        return digits > 0 && digits <= 8;
    }

    /// Bytes between commas; a backslash continues them on the next line.
    void takeBytes(std::vector<BYTE>& bytes) {
        DWORD byte = 0;
        do {
            skipAny(u" \t,");
            if (take(u"\\"))
                skipAny(u" \t\r\n");
            if (!takeNumber(byte))
                return;
            bytes.push_back(static_cast<BYTE>(byte));
        } while (true);
    }

    std::u16string_view text;
    RegistryKey& root;
    RegistryKey* key = nullptr;
};

std::u16string decoded(std::string_view bytes) {
    if (bytes.substr(0, 2) != "\xFF\xFE")
        return toUtf16(bytes.substr(0, 3) == "\xEF\xBB\xBF" ? bytes.substr(3) : bytes);
    std::u16string text((bytes.size() - 2) / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data() + 2, text.size() * sizeof(char16_t));
    return text;
}

std::u16string quoted(std::u16string_view text) {
    std::u16string result = u"\"";
    for (const char16_t unit : text)
        result.append(unit == u'"' || unit == u'\\' ? 1 : 0, u'\\').append(1, unit);
    return result + u'"';
}

/// Whether the value can be written as a quoted text: terminated, valid, without control characters. Then
/// `text` is that text.
bool isPlainText(const RegistryValue& value, std::u16string& text) {
    const std::size_t units = value.bytes.size() / sizeof(char16_t);
    if (value.type != REG_SZ || units == 0 || value.bytes.size() % sizeof(char16_t) != 0)
        return false;
    text.resize(units);
    std::memcpy(text.data(), value.bytes.data(), value.bytes.size());
    const bool terminated = text.back() == u'\0';
    text.pop_back();
    return terminated && std::none_of(text.begin(), text.end(), [](char16_t unit) { return unit < u' '; }) &&
           utf8FromUtf16(text, nullptr, 0).valid;
}

std::u16string hexData(const RegistryValue& value) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, value.type == REG_BINARY ? "hex:" : "hex(%x):", value.type);
    std::u16string text = toUtf16(buffer);
    std::size_t column = 0;
    for (const BYTE byte : value.bytes) {
        if (column == 25)
            text += u",\\\r\n  ";
        else if (column > 0)
            text += u',';
        column = column == 25 ? 1 : column + 1;
        std::snprintf(buffer, sizeof buffer, "%02x", byte);
        text += toUtf16(buffer);
    }
    return text;
}

std::u16string formatData(const RegistryValue& value) {
    std::u16string text;
    if (isPlainText(value, text))
        return quoted(text);
    DWORD number = 0;
    if (value.type == REG_DWORD && value.bytes.size() == sizeof number) {
        char buffer[16];
        std::memcpy(&number, value.bytes.data(), sizeof number);
        std::snprintf(buffer, sizeof buffer, "dword:%08x", number);
        return toUtf16(buffer);
    }
    return hexData(value);
}

void formatKey(const RegistryKey& key, const std::u16string& path, std::u16string& out) {
    out += u"\r\n[" + path + u"]\r\n";
    for (const RegistryValue& value : key.values())
        out += (value.name.empty() ? u"@" : quoted(value.name)) + u'=' + formatData(value) + u"\r\n";
    for (const RegistryKey& subkey : key.subkeys())
        formatKey(subkey, path + u'\\' + subkey.name(), out);
}

} // namespace

bool parseRegistry(std::string_view bytes, RegistryKey& root) {
    const std::u16string text = decoded(bytes);
    return Parser(text, root).parse();
}

std::string formatRegistry(const RegistryKey& root) {
    std::u16string text = std::u16string(formatLine) + u"\r\n";
    for (const RegistryKey& key : root.subkeys())
        formatKey(key, key.name(), text);
    if (std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; }))
        return {text.begin(), text.end()};
    std::string bytes("\xFF\xFE");
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit);
        bytes += static_cast<char>(unit >> 8U);
    }
    return bytes;
}

} // namespace winhost
