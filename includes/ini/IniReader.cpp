#include "ini/IniReader.h"

#include "vybase/owners.h"
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

constexpr char continuationWord[] = " Line";
constexpr std::ptrdiff_t wordLength = sizeof(continuationWord) - 1;

IniRange withoutLeadingBlanks(IniRange range) noexcept {
    while (range.begin != range.end && isBlank(*range.begin))
        ++range.begin;
    return range;
}

IniRange withoutTrailingBlanks(IniRange range) noexcept {
    while (range.begin != range.end && isBlank(range.end[-1]))
        --range.end;
    return range;
}

/// The place of the first `wanted` in the range, or the end.
char* findByte(IniRange range, char wanted) noexcept {
    void* found = std::memchr(range.begin, wanted, static_cast<std::size_t>(range.end - range.begin));
    return found != nullptr ? static_cast<char*>(found) : range.end;
}

/// True when the key ends in the word and digits. A quick test: nearly every key fails it.
bool mayContinue(IniRange key) noexcept {
    const char* digits = key.end;
    while (digits != key.begin && isDigit(digits[-1]))
        --digits;
    return digits != key.end && digits - key.begin >= wordLength &&
           std::memcmp(digits - wordLength, continuationWord, wordLength) == 0;
}

/// Ends the range with a NUL, which overwrites the byte after it.
const char* terminated(IniRange range) noexcept {
    *range.end = '\0';
    return range.begin;
}

class Parser {
public:
    Parser(IniDocument& target, const IniSkippedLineObserver* lineObserver) noexcept
        : document(target), observer(lineObserver) {}

    /// True when one of the keys may be that of a continuation entry.
    bool metContinuation() const noexcept { return continuation; }

    /// Takes one line in: 0 or IniMemoryFull.
    int take(IniRange line, std::int32_t number) noexcept {
        line = withoutTrailingBlanks(withoutLeadingBlanks(line));
        if (line.empty())
            return unusable(line, number);
        switch (*line.begin) {
        case ';':
            return 0;
        case '[':
            return takeHeader(line, number);
        default:
            return takeEntry(line, number);
        }
    }

private:
    int unusable(IniRange line, std::int32_t number) noexcept {
        if (document.firstBadLine == -1)
            document.firstBadLine = number;
        return skip(line, number);
    }

    int skip(IniRange line, std::int32_t number) const noexcept {
        if (observer != nullptr)
            observer->onSkipped(observer->context, line, number);
        return 0;
    }

    int takeHeader(IniRange line, std::int32_t number) noexcept {
        char* bracket = findByte(line, ']');
        if (bracket == line.end)
            return unusable(line, number);
        const IniRange name = withoutLeadingBlanks(withoutTrailingBlanks({line.begin + 1, bracket}));
        if (name.empty())
            return unusable(line, number);
        return openSection(terminated(name), number);
    }

    int openSection(const char* name, std::int32_t number) noexcept {
        IniSection* section = findMergeable(document.sections, name);
        if (section == nullptr) {
            section = document.sectionPool.make();
            if (section == nullptr)
                return IniMemoryFull;
            section->name = name;
            document.sections.append(section);
        }
        section->line = number;
        document.currentSection = section;
        return 0;
    }

    /// The item of that name that a duplicate is merged with, or null.
    template <class T>
    T* findMergeable(IniList<T>& list, const char* name) const noexcept {
        return document.mergeDuplicates != 0 ? list.find(name, document.caseSensitive) : nullptr;
    }

    int takeEntry(IniRange line, std::int32_t number) noexcept {
        const bool colons = (document.parseFlags & IniColonSeparator) != 0;
        char* separator = findByte(line, '=');
        if (colons)
            separator = findByte({line.begin, separator}, ':');
        if (separator == line.end)
            return unusable(line, number);
        char* afterSeparator = separator + 1;
        if (*separator == ':' && afterSeparator != line.end && *afterSeparator == '=')
            ++afterSeparator;
        const IniRange key = withoutTrailingBlanks({line.begin, separator});
        const IniRange value = withoutLeadingBlanks({afterSeparator, line.end});
        if (key.empty() || (value.empty() && (document.parseFlags & IniAllowEmptyValue) == 0))
            return unusable(line, number);
        if (document.currentSection == nullptr) {
            if (!colons)
                return skip(line, number);
            if (openSection(headerlessSection, -1) != 0)
                return IniMemoryFull;
        }
        continuation = continuation || mayContinue(key);
        return store(terminated(key), value, number);
    }

    int store(const char* key, IniRange value, std::int32_t number) noexcept {
        IniList<IniEntry>& entries = document.currentSection->entries;
        IniEntry* entry = findMergeable(entries, key);
        if (entry != nullptr) {
            document.lastKeyLine = entry->line;
        } else {
            entry = document.entryPool.make();
            if (entry == nullptr)
                return IniMemoryFull;
            entry->key = key;
            entries.append(entry);
        }
        entry->quote = stripQuotes(value);
        entry->value = terminated(value);
        entry->line = number;
        return 0;
    }

    /// Takes off the quotes that the options name. Returns the quote character, or 0.
    std::uint8_t stripQuotes(IniRange& value) const noexcept {
        if (value.end - value.begin < 2 || *value.begin != value.end[-1])
            return 0;
        const char quote = *value.begin;
        const bool strips = (quote == '"' && (document.parseFlags & IniStripDoubleQuotes) != 0) ||
                            (quote == '\'' && (document.parseFlags & IniStripSingleQuotes) != 0);
        if (!strips)
            return 0;
        ++value.begin;
        --value.end;
        return static_cast<std::uint8_t>(quote);
    }

    IniDocument& document;
    const IniSkippedLineObserver* observer;
    bool continuation = false;
};

/// Joins the run of continuation entries that begins at `first` into that entry: 0 or IniMemoryFull. `word`
/// is the place of " Line" in its key.
int joinRun(IniDocument& document, IniList<IniEntry>& entries, IniEntry* first, const char* word) noexcept {
    std::size_t length = std::strlen(first->value);
    IniEntry* end = first->next;
    std::uint32_t number = 0;
    for (; end != nullptr && findContinuation(end->key, number) != nullptr && number != 1; end = end->next)
        length += std::strlen(end->value);
    IniString value(static_cast<char*>(std::malloc(length + 1)));
    if (value == nullptr)
        return IniMemoryFull;
    char* out = value.get();
    for (const IniEntry* entry = first; entry != end; entry = entry->next) {
        const std::size_t piece = std::strlen(entry->value);
        std::memcpy(out, entry->value, piece);
        out += piece;
    }
    *out = '\0';
    while (first->next != end) {
        IniEntry* joined = first->next;
        entries.remove(joined);
        document.entryPool.release(joined);
    }
    const_cast<char*>(first->key)[word - first->key] = '\0'; // a key just read lies in the document's text
    first->value = value.release();
    first->ownsValue = true;
    return 0;
}

int joinContinuations(IniDocument& document) noexcept {
    for (IniSection* section = document.sections.first(); section != nullptr; section = section->next) {
        for (IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next) {
            std::uint32_t number = 0;
            const char* word = findContinuation(entry->key, number);
            if (word != nullptr && number == 1) {
                section->entries.dropIndex();
                if (joinRun(document, section->entries, entry, word) != 0)
                    return IniMemoryFull;
            }
        }
    }
    return 0;
}

/// Where the text begins after a byte-order mark, or IniWideText.
int findTextStart(const unsigned char* bytes, std::size_t count) noexcept {
    if (count == 4 &&
        (std::memcmp(bytes, "\xFF\xFE\0\0", 4) == 0 || std::memcmp(bytes, "\0\0\xFE\xFF", 4) == 0))
        return IniWideText;
    if (count >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0)
        return 3;
    if (count >= 2 && (std::memcmp(bytes, "\xFF\xFE", 2) == 0 || std::memcmp(bytes, "\xFE\xFF", 2) == 0))
        return IniWideText;
    return 0;
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

const char* findContinuation(const char* key, std::uint32_t& number) noexcept {
    const char* word = std::strstr(key, continuationWord);
    if (word == nullptr)
        return nullptr;
    const char* digits = word + wordLength;
    return readDigits(digits, number) && *digits == '\0' ? word : nullptr;
}

int parseIni(IniDocument* document, IniLineReader* reader, const IniSkippedLineObserver* observer) noexcept {
    clearIniSections(document);
    document->firstBadLine = -1;
    Parser parser(*document, observer);
    IniRange line = {};
    int result = reader->readLine(line);
    while (result > 0) {
        result = parser.take(line, reader->lineNumber());
        if (result == 0)
            result = reader->readLine(line);
    }
    document->text = reader->releaseText();
    return result == 0 && parser.metContinuation() ? joinContinuations(*document) : result;
}

int loadIniFile(IniDocument* document, const char* path, const IniSkippedLineObserver* observer) noexcept {
    const char* name = path != nullptr ? path : "";
    const vybase::FileStream file(std::fopen(name, "rb"));
    if (file == nullptr)
        return findFile(name, nullptr) ? IniOpenFailed : IniNoFile;
    IniFileFacts facts;
    findFile(name, &facts);

    unsigned char mark[4] = {};
    const int start = findTextStart(mark, std::fread(mark, 1, sizeof(mark), file.get()));
    if (start < 0)
        return start;
    if (std::fseek(file.get(), start, SEEK_SET) != 0)
        return IniSeekFailed;
    IniString kept = copyText(name, std::strlen(name)); // `path` may be the document's own
    if (kept == nullptr)
        return IniMemoryFull;
    IniLineReader reader(file.get(), facts.size);
    const int result = parseIni(document, &reader, observer);
    if (result == 0) {
        document->path = std::move(kept);
        document->lastWriteTime = facts.lastWriteTime;
    }
    return result;
}

} // namespace vyini
