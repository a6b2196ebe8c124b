#ifndef INI_INIREADER_H
#define INI_INIREADER_H

#include "ini/IniDocument.h"
#include "ini/IniMemory.h"
#include "ini/IniText.h"
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <utility>

/// Reading of a file such as this one; its last two lines are one entry, Note with the value abcdef:
///
///     ; of an older driver
///     [General]
///     MajorVersion = 15
///     Alias="Lab 1"
///     Note Line0001=abc
///     Note Line0002=def
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

/// Receives every line that the parser skips, without the blanks around it: the lines that it cannot use,
/// blank ones included, and entries before the first section. It must not throw. Only tools use one.
struct IniSkippedLineObserver {
    void (*onSkipped)(void* context, IniRange line, std::int32_t number);
    void* context;
};

/// Replaces the document's sections by what it reads, as the document's options say. Returns 0, IniReadFailed
/// or IniMemoryFull. After a failure the document holds what was read so far, and continuation entries may be
/// unjoined. The document takes the reader's text.
///
/// Blanks at both ends of a line, name, key or value do not count. `[name]` begins a section; text after the
/// bracket is ignored. `key = value` is an entry. A line that begins with ";" is a comment and is dropped.
/// Any other line, blank ones included, is skipped, and the first such line is kept in firstBadLine. Entries
/// before the first section are dropped without IniColonSeparator. Escapes in values stay as they are.
///
/// Consecutive entries `<key> Line0001`, `<key> Line0002`, ... are one entry whose value was split: they are
/// joined under `<key>`. A run begins at number 1; the continuation entries after it belong to it, whatever
/// their key and number, up to the next number 1.
int parseIni(IniDocument* document, IniLineReader* reader,
             const IniSkippedLineObserver* observer = nullptr) noexcept;

/// For a key that ends in " Line" and a decimal number of 32 bits: the place of " Line", with the number in
/// `number`. Otherwise null.
const char* findContinuation(const char* key, std::uint32_t& number) noexcept;

/// Replaces the document's sections by the file's (see parseIni), and keeps its path and last-write time.
/// `path` is narrow, as the system's file functions take it. A byte-order mark of UTF-8 is skipped. Nothing
/// is written. `observer` may be null.
///
/// Returns 0; IniNoFile: the file does not exist; IniOpenFailed: it exists but cannot be opened; IniWideText:
/// it is UTF-16 or UTF-32; IniSeekFailed, IniReadFailed, IniMemoryFull. A failure leaves path and time as
/// they were; the sections are the former ones, or those read before the failure.
int loadIniFile(IniDocument* document, const char* path,
                const IniSkippedLineObserver* observer = nullptr) noexcept;

} // namespace vyini

#endif
