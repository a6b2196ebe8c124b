#ifndef SIMULATED_NUMBERSTORE_H
#define SIMULATED_NUMBERSTORE_H

#include "DeviceText.h"
#include "File.h"
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace simulated {

/// The numbers and aliases that devices were given, in one file for all users and processes.
///
/// Each change appends a line to the file, so numbering n devices costs n short writes; of one device the
/// last line counts. A reading puts a new file with one line for each device in its place when most lines are
/// out of date. All this happens under an exclusive lock on `<file>.lck`. Devices that are not listed keep
/// their lines.
///
/// A change survives the end of the process at once. An alias survives a power failure at once, a number only
/// when the system has written it to the disk.
///
/// Any user may replace the files, so a link, a file with a second name and a file above File::longest are
/// refused. One thread uses an object; any number of objects, in any process, may share a file.
class NumberStore {
public:
    /// Opens nothing yet. `sharedFolder` ends in a separator, or is empty when the system does not name it.
    NumberStore(Path sharedFolder, const Path& name);

    /// Reads what all objects have stored. Makes no file but the lock file, and that only when there is
    /// something to read. Throws std::bad_alloc, and PluginError:
    /// FileMalformed: there are bad lines. The good ones are read, and no new file is put in its place.
    /// NotKept: the file cannot be read, written or made. When it can be read, it is.
    void load();

    /// What is stored for a device now; null when that is nothing. Costs a look at the file's attributes when
    /// nothing changed. When a change cannot be read, what was read last counts.
    const DeviceEntry* find(std::string_view token) noexcept;

    /// Stores the number, the alias or both of a device. Throws PluginError(NotKept), std::bad_alloc; then
    /// nothing is stored. Refuses while the file cannot be read: the device may have a number there.
    void append(const DeviceEntry& change);

private:
    using Kept = std::map<std::string, DeviceEntry, std::less<>>;

    [[noreturn]] void fail(const std::string& reason, DWORD error = ERROR_SUCCESS) const;
    File& openLockFile();
    void require(const FileLock& held) const;
    File open(const Path& name, DWORD access, DWORD disposition) const;
    void replaceFile() const;

    const Path folder;
    const Path path;
    File lockFile;
    File file;            ///< open from a change to the next reading, since opening costs most
    FileStamp seen;       ///< of the file whose lines are in `kept`
    Kept kept;            ///< by token
    bool isKnown = false; ///< the last reading read everything that there was
};

} // namespace simulated

#endif
