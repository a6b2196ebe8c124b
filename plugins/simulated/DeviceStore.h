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
    FileMissing = -64101,   ///< the `.devices` file cannot be opened or read
    FileMalformed = -64102, ///< the `.devices` file has a bad line
    NotWritable = -64103,   ///< the files beside it cannot be written (read-only folder? full disk?)
    FileNotUtf8 = -64104,   ///< the `.devices` file is in UTF-16 or UTF-32
    PathUnknown = -64105    ///< the system does not say where this library is
};

/// A failure of the store.
class StoreError : public std::runtime_error {
public:
    StoreError(Code errorCode, std::size_t errorLine, const std::string& reason)
        : std::runtime_error(reason), code(errorCode), line(errorLine) {}

    const Code code;
    const std::size_t line; ///< the bad line of the `.devices` file, from 1; 0: none
};

/// A `.devices` file and the changes made since it was written: the state that all processes share.
///
/// A change of a number or an alias appends one line to `<file>.journal`, so numbering n devices costs n
/// short writes. When a list is refreshed or released, the changes are folded into the file: the file is
/// replaced as a whole, and the journal is emptied. All this happens under an exclusive lock on `<file>.lck`.
/// To see whether there are changes needs no lock: the journal begins with the number of times it was
/// emptied, and until it is emptied again it only grows.
///
/// A change survives the end of the process at once. An alias survives a power failure at once, a number only
/// after the next folding. One thread uses an object; any number of objects, in any process, may share a
/// file.
class DeviceStore {
public:
    /// Opens nothing yet. `devicesFile` is the path of the `.devices` file.
    explicit DeviceStore(Path devicesFile);

    const Path path; ///< of the `.devices` file

    /// Reads the file and all changes, and folds the changes in. Throws StoreError, std::bad_alloc.
    std::vector<DeviceEntry> load();

    /// Whether the file differs from the one that load() read last. Looks only at the file's attributes.
    bool isFileChanged() const noexcept;

    /// The changes of all other objects since the last load() or readChanges(). May contain changes that are
    /// known already. Costs two small reads when nothing changed. Throws StoreError, std::bad_alloc.
    std::vector<DeviceChange> readChanges();

    /// Keeps a change. Throws StoreError(NotWritable), std::bad_alloc; then the change is not kept.
    void append(const DeviceChange& change);

    /// Folds the changes in, if there are any. Throws as load() does; then the journal keeps them.
    void fold();

private:
    /// The journal's header is "folded " and, in ten digits, how often it was emptied.
    static constexpr std::size_t headerSize = 17;

    /// What tells one state of the file from another.
    struct FileStamp {
        std::uint64_t size = 0;
        std::uint64_t written = 0;
    };
    /// The same for the journal.
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

    File lockFile;
    File journal;
    FileStamp loaded;  ///< of the file that load() read last
    JournalStamp seen; ///< the part of the journal whose changes this object has
};

} // namespace simulated

#endif
