#ifndef INI_INILINEREADER_H
#define INI_INILINEREADER_H

#include "ini/IniMemory.h"
#include "ini/IniText.h"
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace vyini {

/// Splits an open file into lines. It reads straight into the blocks that become the document's text. One
/// thread uses it.
///
/// A line ends at a carriage return, a line feed or a NUL; two different ones in a row (CR LF, LF CR) are one
/// end. One line feed or carriage return at the very start of the file ends no line. The last line needs no
/// end. How a line ends never depends on its length or on where a block ends.
class IniLineReader {
public:
    /// Reads from the stream's position; the stream is borrowed. `expectedSize` is the number of bytes that
    /// are left in the file, or 0 when that is unknown. When it is right, all text is in one block of that
    /// size.
    IniLineReader(std::FILE* stream, std::size_t expectedSize) noexcept;
    IniLineReader(const IniLineReader&) = delete;
    IniLineReader& operator=(const IniLineReader&) = delete;

    /// Reads the next line, of any length, without its end. Returns 1 with the line in `line`: the caller may
    /// change its bytes and the one at `line.end`. Returns 0 at the end of the file, IniReadFailed or
    /// IniMemoryFull.
    int readLine(IniRange& line) noexcept;

    /// Number of the line read last, from 1. All lines after the one numbered INT32_MAX share its number.
    std::int32_t lineNumber() const noexcept { return lines; }

    /// Hands over the text of all lines read. Read no more lines then.
    IniBlocks releaseText() noexcept { return std::move(text); }

private:
    int refill() noexcept;
    bool startBlock() noexcept;

    std::FILE* file;
    IniBlocks text;
    std::size_t nextBlockSize;
    char nothing = '\0';
    char* position = &nothing; ///< first byte of the line being read
    char* filled = &nothing;   ///< end of what was read; a NUL follows, which stops every search
    char* blockEnd = &nothing; ///< end of the room for reading; the room for that NUL follows
    char previousEnd = '\0';   ///< what ended the previous line
    std::int32_t lines = 0;
};

} // namespace vyini

#endif
