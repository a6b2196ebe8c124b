#include "NumberStore.h"

#include "PluginError.h"
#include <optional>
#include <utility>

namespace simulated {
namespace {

/// So many lines of one file may be out of date, whatever its size.
constexpr std::size_t fewLines = 100;

void merge(DeviceEntry& entry, const DeviceEntry& change) {
    if (change.number != vykel::noDeviceNumber)
        entry.number = change.number;
    if (change.alias)
        entry.alias = change.alias;
}

} // namespace

NumberStore::NumberStore(Path sharedFolder, const Path& name)
    : folder(std::move(sharedFolder)), path(folder + name) {}

void NumberStore::load() {
    isKnown = false;
    file = File(); // Windows cannot replace a file that is open
    if (folder.empty())
        fail("the system names no folder for data common to all users");
    // The stamp is taken before the reading: a change between the two is only read once more.
    const FileStamp now = stampOf(path);
    if (now == FileStamp()) { // nobody has stored anything
        kept.clear();
        seen = {};
        if (!File(folder, FILE_ADD_FILE, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS))
            fail("the file cannot be made in its folder", GetLastError());
        isKnown = true;
        return;
    }
    const FileLock held(openLockFile());
    require(held);
    file = open(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    const DWORD refusal = file ? ERROR_SUCCESS : GetLastError();
    const std::optional<std::string> text =
        file ? file.readAll() : open(path, GENERIC_READ, OPEN_EXISTING).readAll();
    file = File();
    if (!text)
        fail("the file cannot be read, or is larger than 16 MiB", refusal);
    const Changes changes = parseChanges(*text);
    Kept found;
    for (const DeviceEntry& change : changes.entries)
        merge(found[change.token], change);
    kept.swap(found);
    seen = now;
    isKnown = true;
    if (changes.error)
        throw PluginError(Code::FileMalformed, path, changes.error->line, changes.error->what());
    if (refusal != ERROR_SUCCESS)
        fail("the file cannot be opened for writing", refusal);
    if (changes.entries.size() > 2 * kept.size() + fewLines) {
        replaceFile();
        seen = stampOf(path);
    }
}

const DeviceEntry* NumberStore::find(std::string_view token) noexcept {
    file = File(); // whoever reads has set what he had to
    try {
        if (!(stampOf(path) == seen))
            load();
    } catch (...) { // refresh reports it, setNumber and setAlias fail
    }
    const auto found = kept.find(token);
    return found == kept.end() ? nullptr : &found->second;
}

void NumberStore::append(const DeviceEntry& change) {
    if (!isKnown)
        fail("the file could not be read");
    DeviceEntry& entry = kept[change.token];
    DeviceEntry changed = entry;
    merge(changed, change);
    // Begin with a line end: it ends a line that a power failure left incomplete.
    const std::string line = '\n' + formatChange(change);
    const FileLock held(openLockFile());
    require(held);
    const FileStamp before = stampOf(path);
    if (!file)
        file = open(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (!file)
        fail("the file cannot be opened for writing", GetLastError());
    const auto size = file.size();
    if (!size || *size + line.size() > File::longest)
        fail("the file would be larger than 16 MiB");
    // Flush an alias: the caller may delete its own copy next. A number that a power failure loses is given
    // again.
    if (!file.write(*size, line) || (change.alias && !FlushFileBuffers(file.handle()))) {
        const DWORD error = GetLastError();
        file.truncate(*size);
        fail("the file cannot be written", error);
    }
    entry = std::move(changed);
    if (before == seen)
        seen = stampOf(path);
}

void NumberStore::fail(const std::string& reason, DWORD error) const {
    throw PluginError(Code::NotKept, path, 0,
                      reason + (error == ERROR_SUCCESS ? "" : ": system error " + std::to_string(error)));
}

File& NumberStore::openLockFile() {
    if (!lockFile)
        lockFile = open(path + ".lck", GENERIC_READ, OPEN_ALWAYS);
    if (!lockFile)
        fail("its lock file cannot be opened", GetLastError());
    return lockFile;
}

void NumberStore::require(const FileLock& held) const {
    if (!held.held())
        fail("its lock file cannot be locked", GetLastError());
}

/// Opens a file of the folder in which any user may have put something else. While it is open, nobody can
/// delete or replace it.
File NumberStore::open(const Path& name, DWORD access, DWORD disposition) const {
    File opened(name, access, disposition, FILE_FLAG_OPEN_REPARSE_POINT, FILE_SHARE_READ | FILE_SHARE_WRITE);
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (opened && (!GetFileInformationByHandle(opened.handle(), &facts) || facts.nNumberOfLinks != 1 ||
                   (facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0))
        fail("the file, or its lock file, is a link or has a second name");
    return opened;
}

/// Puts a file with one line for each device in place of the file. When that fails, the old one stays.
void NumberStore::replaceFile() const {
    std::string text;
    for (const auto& [token, entry] : kept) {
        DeviceEntry change = entry;
        change.token = token;
        text += formatChange(change) + '\n';
    }
    const Path temporary = path + ".tmp";
    DeleteFileW(temporary.c_str()); // whatever a killed process or another user left
    bool isWritten = false;
    {
        const File next(temporary, GENERIC_WRITE, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT);
        isWritten = next && next.write(0, text) && FlushFileBuffers(next.handle());
    }
    if (!isWritten ||
        !MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        DeleteFileW(temporary.c_str());
}

} // namespace simulated
