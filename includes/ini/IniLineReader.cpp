#include "ini/IniLineReader.h"

#include "ini/IniDocument.h"
#include <algorithm>
#include <cstring>

namespace vyini {

namespace {

constexpr std::size_t readSize = 32768; // more than a stream buffers, so that no byte is copied twice
constexpr std::size_t largestFirstBlock = std::size_t{1} << 28; // the reported size of a file may be wrong
constexpr std::size_t largestNextBlock = std::size_t{1} << 20;

constexpr bool isLineEnd(char c) noexcept {
    return c == '\r' || c == '\n' || c == '\0';
}

} // namespace

// One byte more than expected: room for the read that meets the end of the file.
IniLineReader::IniLineReader(std::FILE* stream, std::size_t expectedSize) noexcept
    : file(stream),
      nextBlockSize(expectedSize != 0 ? std::min(expectedSize, largestFirstBlock) + 1 : readSize) {}

int IniLineReader::readLine(IniRange& line) noexcept {
    bool atStart = true;
    char* end = position;
    for (;;) {
        if (atStart && end != filled) {
            atStart = false;
            if (isLineEnd(*end) && *end != previousEnd)
                end = ++position; // the second half of the previous line's end
        }
        end += std::strcspn(end, "\r\n"); // or to the next NUL
        if (end != filled) {
            previousEnd = *end;
            break;
        }
        const std::ptrdiff_t length = end - position;
        const int got = refill();
        if (got < 0 || (got == 0 && length == 0))
            return got;
        end = position + length;
        if (got == 0)
            break; // a last line without an end
    }
    line = {position, end};
    position = end == filled ? end : end + 1;
    if (lines != INT32_MAX)
        ++lines;
    return 1;
}

/// Reads more bytes after those of the line in progress: 1 when some came, 0 at the end of the file.
int IniLineReader::refill() noexcept {
    if (filled == blockEnd && !startBlock())
        return IniMemoryFull;
    const std::size_t got =
        std::fread(filled, 1, std::min(static_cast<std::size_t>(blockEnd - filled), readSize), file);
    if (std::ferror(file) != 0)
        return IniReadFailed;
    filled += got;
    *filled = '\0';
    return got != 0 ? 1 : 0;
}

/// Begins a new block and moves the line in progress there. False when memory is short.
bool IniLineReader::startBlock() noexcept {
    const auto length = static_cast<std::size_t>(filled - position);
    const std::size_t size = std::max(nextBlockSize, 2 * length);
    char* block = text.add(size + 1);
    if (block == nullptr)
        return false;
    std::memcpy(block, position, length);
    position = block;
    filled = block + length;
    blockEnd = block + size;
    nextBlockSize = std::min(2 * size, largestNextBlock);
    return true;
}

} // namespace vyini
