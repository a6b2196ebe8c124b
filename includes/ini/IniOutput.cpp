#include "ini/IniOutput.h"
#include <cstring>

namespace vyini {

void IniOutput::put(const char* text, std::size_t length) noexcept {
    const char* end = text + length;
    while (const auto* lineFeed =
               static_cast<const char*>(std::memchr(text, '\n', static_cast<std::size_t>(end - text)))) {
        append(text, static_cast<std::size_t>(lineFeed - text));
        endLine();
        text = lineFeed + 1;
    }
    append(text, static_cast<std::size_t>(end - text));
}

bool IniOutput::finish() noexcept {
    writeOut();
    return !failed;
}

void IniOutput::append(const char* text, std::size_t length) noexcept {
    while (length > sizeof(buffer) - fill) {
        const std::size_t part = sizeof(buffer) - fill;
        std::memcpy(buffer + fill, text, part);
        fill += part;
        text += part;
        length -= part;
        writeOut();
    }
    std::memcpy(buffer + fill, text, length);
    fill += length;
}

void IniOutput::writeOut() noexcept {
    failed = failed || std::fwrite(buffer, 1, fill, file) != fill;
    fill = 0;
}

} // namespace vyini
