#include "ini/IniSave.h"

#include "ini/IniFile.h"
#include "ini/IniWriter.h"
#include "vybase/owners.h"
#include <cerrno>
#include <charconv>
#include <cstring>
#include <io.h>

namespace vyini {

namespace {

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

/// Tries to open the target for writing and leaves it as it is: 0 or IniTargetRefused. Creates the file only
/// when it is certainly missing, and deletes it again: the search may fail for other reasons, and then the
/// target must keep its content.
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
