#ifndef SIMULATED_DEVICESTORE_H
#define SIMULATED_DEVICESTORE_H

#include "DeviceText.h"
#include "File.h"
#include "vykel/StatusCodes.h"
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulated {

/// This plug-in's own status codes.
enum class Code : std::int32_t {
    FileMissing = -64101,   ///< The `.devices` file cannot be opened.
    FileMalformed = -64102, ///< The `.devices` file has a bad line.
    NotWritable =
        -64103 ///< The side files or the `.devices` file cannot be written (folder read-only? disk full?).
};

/// A failure of the store. `line` is the bad line of the `.devices` file, from 1, or 0.
class StoreError : public std::runtime_error {
public:
    StoreError(Code errorCode, std::size_t errorLine, const std::string& reason)
        : std::runtime_error(reason), code(errorCode), line(errorLine) {}
    const Code code;
    const std::size_t line;
};

/// A `.devices` file with what was set since: the state that all processes share.
///
/// A number or alias set is one line appended to `<file>.journal`, so that numbering n devices costs n short
/// writes. The journal is folded into the file, by one replacement of the whole, when a list is refreshed or
/// released. Everything happens under an exclusive lock on `<file>.lck`. Whether anything changed is told
/// without the lock: the journal starts with the count of its foldings, and between two of them it only
/// grows.
///
/// What was set survives the end of the process at once, and a power failure from the next folding on.
/// One object belongs to one thread; any number of objects, in any process, may share a file.
class DeviceStore {
public:
    /// Opens nothing yet. `path` is the `.devices` file.
    explicit DeviceStore(Path path);

    const Path& path() const noexcept { return path_; }

    /// Reads the file and all changes, and folds them in. Throws StoreError, std::bad_alloc.
    std::vector<DeviceEntry> load();

    /// True when the file is not the one that load() read last. One look at the file's attributes.
    bool isFileChanged() const noexcept;

    /// What any other object has changed since the last load(), readChanges(), or append(). Costs two small
    /// reads when that is nothing. Throws StoreError, std::bad_alloc.
    std::vector<DeviceChange> readChanges();

    /// Keeps a change. Throws StoreError(NotWritable), std::bad_alloc; then nothing is kept.
    void append(const DeviceChange& change);

    /// Folds the journal in when there is anything in it. Throws as load() does; the journal is kept then.
    void fold();

private:
    static constexpr std::size_t headerSize = 17; // "folded 0000000000"

    struct FileStamp {
        std::uint64_t size = 0;
        std::uint64_t written = 0;
    };
    struct JournalStamp {
        std::array<char, headerSize> header = {};
        std::uint64_t size = 0;
    };

    void openSideFiles();
    FileLock lockStore() const;
    FileStamp fileStamp() const noexcept;
    JournalStamp journalStamp() const;
    std::string readFile() const;
    std::vector<DeviceEntry> parseFile(std::string_view text) const;
    std::vector<DeviceChange> readJournal(std::uint64_t from, std::uint64_t to) const;
    bool replaceFile(const std::string& text) const noexcept;
    void emptyJournal(const JournalStamp& current) noexcept;

    Path path_;
    File lockFile_;
    File journal_;
    FileStamp loaded_;
    JournalStamp seen_;
};

} // namespace simulated

#endif
