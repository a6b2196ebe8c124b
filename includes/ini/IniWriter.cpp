#include "ini/IniWriter.h"

#include "vybase/owners.h"
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <io.h>
#include <utility>

namespace vyini {

namespace {

/// Collects text and writes it to a borrowed stream in large pieces. After a failed write it writes nothing
/// more. One thread uses it.
class IniOutput {
public:
    // The buffer is written before it is read.
    // cppcheck-suppress uninitMemberVar
    explicit IniOutput(std::FILE* stream) noexcept : file(stream) {}
    IniOutput(const IniOutput&) = delete;
    IniOutput& operator=(const IniOutput&) = delete;

    /// Appends a text, every line feed as CR LF.
    void put(const char* text, std::size_t length) noexcept {
        if (length <= sizeof(buffer) - fill && std::memchr(text, '\n', length) == nullptr) {
            std::memcpy(buffer + fill, text, length);
            fill += length;
        } else {
            putByCharacter(text, length);
        }
    }

    /// Appends one character as it is.
    void put(char c) noexcept {
        if (fill == sizeof(buffer))
            writeOut();
        buffer[fill++] = c;
    }

    /// Appends CR LF.
    void endLine() noexcept {
        put('\r');
        put('\n');
    }

    /// Writes what is left. False when this or an earlier write failed.
    bool finish() noexcept {
        writeOut();
        return !failed;
    }

private:
    void putByCharacter(const char* text, std::size_t length) noexcept {
        for (const char* end = text + length; text != end; ++text) {
            if (*text == '\n')
                put('\r');
            put(*text);
        }
    }

    void writeOut() noexcept {
        failed = failed || std::fwrite(buffer, 1, fill, file) != fill;
        fill = 0;
    }

    std::FILE* file;
    std::size_t fill = 0;
    bool failed = false;
    char buffer[16384];
};

class Writer {
public:
    Writer(const IniDocument& source, std::FILE* file) noexcept
        : document(source), output(file), spaced((source.writeFlags & IniSpacedEquals) != 0) {}

    int write() noexcept {
        const bool rules = (document.writeFlags & IniBlankLineRules) != 0;
        const IniSection* previous = nullptr;
        for (const IniSection* section = document.sections.first(); section != nullptr;
             section = section->next) {
            const bool headerless = std::strcmp(section->name, headerlessSection) == 0;
            if (rules && section->line == -1 && previous != nullptr && previous->line >= 0)
                output.endLine();
            if (!headerless)
                writeHeader(*section);
            for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
                if (writeEntry(*entry) != 0)
                    return output.finish() ? IniKeyTooLong : IniWriteFailed;
            if (!rules || !(section->line != -1 || headerless))
                output.endLine();
            previous = section;
        }
        return output.finish() ? 0 : IniWriteFailed;
    }

private:
    void writeHeader(const IniSection& section) noexcept {
        output.put('[');
        output.put(section.name, std::strlen(section.name));
        output.put(']');
        output.endLine();
    }

    int writeEntry(const IniEntry& entry) noexcept {
        const std::size_t keyLength = std::strlen(entry.key);
        const std::size_t valueLength = std::strlen(entry.value);
        const std::size_t quotes = entry.quote != 0 ? 2 : 0;
        const auto length = static_cast<std::int64_t>(keyLength + (spaced ? 3 : 1) + valueLength + quotes);
        if (document.maxLineLength == -1 || length <= document.maxLineLength) {
            output.put(entry.key, keyLength);
            writeValue(entry.value, valueLength, entry.quote);
            return 0;
        }
        const std::size_t around = keyLength + numberRoom + quotes;
        const std::int64_t room = document.maxLineLength - static_cast<std::int64_t>(around);
        return room > 0 ? split(entry, keyLength, valueLength, static_cast<std::size_t>(room))
                        : IniKeyTooLong;
    }

    void writeValue(const char* value, std::size_t length, std::uint8_t quote) noexcept {
        if (spaced)
            output.put(" = ", 3);
        else
            output.put('=');
        if (quote != 0)
            output.put(static_cast<char>(quote));
        output.put(value, length);
        if (quote != 0)
            output.put(static_cast<char>(quote));
        output.endLine();
    }

    /// Writes the value in continuation entries, at most `room` bytes in each.
    int split(const IniEntry& entry, std::size_t keyLength, std::size_t valueLength,
              std::size_t room) noexcept {
        const char* rest = entry.value;
        const char* end = rest + valueLength;
        for (std::uint32_t number = 1; rest != end; ++number) {
            char digits[16] = "000";
            const char* digitsEnd = std::to_chars(digits + 3, digits + sizeof(digits), number).ptr;
            const char* firstDigit = std::min<const char*>(digits + 3, digitsEnd - 4);
            const auto digitCount = static_cast<std::size_t>(digitsEnd - firstDigit);
            // More than four digits take their room from the piece, but never all of it.
            const std::size_t maxPiece = room - std::min(digitCount - 4, room - 1);
            const std::size_t piece = measurePiece(rest, static_cast<std::size_t>(end - rest), maxPiece);
            output.put(entry.key, keyLength);
            output.put(" Line", 5);
            output.put(firstDigit, digitCount);
            writeValue(rest, piece, entry.quote);
            rest += piece;
        }
        return 0;
    }

    /// Length of the next piece: up to the last splitChar that fits, or else as much as fits.
    std::size_t measurePiece(const char* text, std::size_t length, std::size_t maxPiece) const noexcept {
        if (length <= maxPiece)
            return length;
        if (document.splitChar != 0) {
            for (std::size_t piece = maxPiece; piece != 0; --piece)
                if (text[piece - 1] == static_cast<char>(document.splitChar))
                    return piece;
        }
        return maxPiece;
    }

    static constexpr std::size_t numberRoom = 12; // " Line", four digits and the longer separator

    const IniDocument& document;
    IniOutput output;
    bool spaced;
};

constexpr std::uint32_t patternNames = 1000;

constexpr bool isPathSeparator(char c) noexcept {
    return c == '\\' || c == '/';
}

/// Length of the part that ends in the last separator; 0 when there is none.
std::size_t folderLength(const char* path) noexcept {
    std::size_t length = std::strlen(path);
    while (length != 0 && !isPathSeparator(path[length - 1]))
        --length;
    return length;
}

/// A file that is being written. The end of this object's life closes and deletes it, unless keep() was
/// called.
class PendingFile {
public:
    PendingFile() noexcept = default;
    ~PendingFile() {
        file.reset(); // an open file cannot be deleted
        if (name != nullptr)
            std::remove(name.get());
    }
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    /// Opens the file, truncated: 0 or IniCreateFailed. A file that cannot be opened is deleted only when it
    /// is our `own`.
    int open(IniString path, bool own) noexcept {
        file.reset(std::fopen(path.get(), "wb"));
        if (file != nullptr || own)
            name = std::move(path);
        return file != nullptr ? 0 : IniCreateFailed;
    }

    /// Writes, flushes and closes.
    int write(const IniDocument& document) noexcept {
        constexpr char mark[] = "\xEF\xBB\xBF";
        if ((document.writeFlags & IniWriteBom) != 0 && std::fwrite(mark, 1, 3, file.get()) != 3)
            return IniWriteFailed;
        const int written = writeIni(&document, file.get());
        if (written != 0)
            return written;
        if (std::fflush(file.get()) != 0)
            return IniWriteFailed;
        if ((document.writeFlags & IniFlushToDisk) != 0) {
            std::fflush(file.get());
            FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file.get()))));
        }
        return std::fclose(file.release()) == 0 ? 0 : IniWriteFailed;
    }

    const char* path() const noexcept { return name.get(); }

    /// Leaves the file in place at the end of this object's life.
    void keep() noexcept { name.reset(); }

private:
    vybase::FileStream file;
    IniString name;
};

/// Tries to open the target for writing and leaves it as it is: 0 or IniTargetRefused. It creates the file,
/// and deletes it again, only after ERROR_FILE_NOT_FOUND: after any other error the target may exist, and
/// must keep its content.
int probeTarget(const char* path) noexcept {
    const bool exists = findFile(path, nullptr) || GetLastError() != ERROR_FILE_NOT_FOUND;
    std::FILE* file = std::fopen(path, exists ? "r+b" : "wb");
    if (file == nullptr)
        return IniTargetRefused;
    const bool closed = std::fclose(file) == 0;
    const bool restored = exists || std::remove(path) == 0;
    return closed && restored ? 0 : IniTargetRefused;
}

/// Creates a file that did not exist and reports the system's error.
DWORD createNew(const char* path) noexcept {
    const HANDLE created =
        CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (created == INVALID_HANDLE_VALUE)
        return GetLastError();
    CloseHandle(created);
    return ERROR_SUCCESS;
}

int openTempByPattern(PendingFile& pending, const char* target) noexcept {
    for (std::uint32_t n = 0; n < patternNames; ++n) {
        IniString name = nameTempByPattern(target, n);
        if (name == nullptr)
            return IniMemoryFull;
        const DWORD error = createNew(name.get());
        if (error == ERROR_SUCCESS)
            return pending.open(std::move(name), true);
        if (error != ERROR_FILE_EXISTS)
            return IniTempFailed;
    }
    return IniTempNamesTaken;
}

/// Removes a leftover of that name first: it may be a link, and opening it would overwrite the file that it
/// points to.
int openTempByExtension(PendingFile& pending, const char* target) noexcept {
    IniString name = nameTempByExtension(target);
    if (name == nullptr)
        return IniMemoryFull;
    if (std::remove(name.get()) != 0 && errno != ENOENT)
        return IniCreateFailed;
    return pending.open(std::move(name), false);
}

/// Writes a temporary file and puts it in the target's place.
int saveSafely(const IniDocument& document, const char* target) noexcept {
    if (probeTarget(target) != 0)
        return IniTargetRefused;
    PendingFile temporary;
    const bool pattern = (document.writeFlags & IniTempByPattern) != 0;
    const int opened =
        pattern ? openTempByPattern(temporary, target) : openTempByExtension(temporary, target);
    if (opened != 0)
        return opened;
    const int written = temporary.write(document);
    if (written != 0)
        return written;
    if (MoveFileExA(temporary.path(), target, MOVEFILE_REPLACE_EXISTING) == FALSE)
        return IniTargetRefused;
    temporary.keep();
    return 0;
}

int saveInPlace(const IniDocument& document, const char* path) noexcept {
    IniString name = copyText(path, std::strlen(path));
    if (name == nullptr)
        return IniMemoryFull;
    PendingFile target;
    int result = target.open(std::move(name), false);
    if (result == 0)
        result = target.write(document);
    if (result == 0)
        target.keep();
    return result;
}

} // namespace

int writeIni(const IniDocument* document, std::FILE* file) noexcept {
    return Writer(*document, file).write();
}

IniString nameTempByExtension(const char* target) noexcept {
    const std::size_t length = std::strlen(target);
    const std::size_t folder = folderLength(target);
    const char* dot = std::strrchr(target + folder, '.');
    const bool replaces = folder != 0 && dot != nullptr && std::strcmp(dot, ".TMP") != 0;
    const std::size_t kept = replaces ? static_cast<std::size_t>(dot - target) : length;
    IniString name = copyText(target, kept, 4);
    if (name != nullptr)
        std::memcpy(name.get() + kept, ".TMP", 5);
    return name;
}

IniString nameTempByPattern(const char* target, std::uint32_t n) noexcept {
    std::size_t folder = folderLength(target);
    if (folder == 0 && target[0] != '\0' && target[1] == ':')
        folder = 2; // a drive without a folder
    IniString name = copyText(target, folder, 5 + 10 + 4);
    if (name != nullptr) {
        char* out = name.get() + folder;
        std::memcpy(out, "ini$$", 5);
        out = std::to_chars(out + 5, out + 15, n).ptr;
        std::memcpy(out, ".TMP", sizeof ".TMP");
    }
    return name;
}

int saveIniFile(IniDocument* document, const char* path) noexcept {
    if (path == nullptr || *path == '\0')
        return IniNoFile;
    // Copied before anything is touched: nothing may fail once the file is in place.
    IniString kept = copyText(path, std::strlen(path));
    if (kept == nullptr)
        return IniMemoryFull;
    const bool safe = (document->writeFlags & IniSafeSave) != 0;
    const int result = safe ? saveSafely(*document, path) : saveInPlace(*document, path);
    if (result != 0)
        return result;
    document->path = std::move(kept);
    IniFileFacts facts;
    findFile(document->path.get(), &facts);
    document->lastWriteTime = facts.lastWriteTime;
    return 0;
}

} // namespace vyini
