#include "DeviceStore.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace simulated {
namespace {

/// What a new journal starts with.
constexpr std::string_view noFolding = "folded 0000000000";

std::string readRange(const File& file, std::uint64_t from, std::uint64_t to) {
    std::string text(static_cast<std::size_t>(to - from), '\0');
    if (file.read(from, text.data(), static_cast<std::uint32_t>(text.size())) != text.size()) {
        throw StoreError(Code::FileMissing, 0,
                         "the file cannot be read whole"); // a part would pass for all of it
    }
    return text;
}

void applyChanges(std::vector<DeviceEntry>& devices, std::vector<DeviceChange> changes) {
    std::unordered_map<std::string_view, DeviceEntry*> byToken;
    for (DeviceEntry& device : devices)
        byToken.emplace(device.token, &device);
    for (DeviceChange& change : changes) {
        const auto found = byToken.find(change.token);
        if (found == byToken.end())
            continue; // somebody took the device out of the file
        if (change.number)
            found->second->number = *change.number;
        if (change.alias)
            found->second->alias = std::move(change.alias);
    }
}

} // namespace

DeviceStore::DeviceStore(Path path) : path_(std::move(path)) {}

std::vector<DeviceEntry> DeviceStore::load() {
    openSideFiles();
    const FileLock lock = lockStore();
    // The stamp is taken first: an edit between it and the reading only makes the list stale once more.
    const FileStamp stamp = fileStamp();
    const std::string text = readFile();
    std::vector<DeviceEntry> devices = parseFile(text);
    JournalStamp journal = journalStamp();
    std::vector<DeviceChange> changes = readJournal(headerSize, journal.size);
    loaded_ = stamp;
    seen_ = journal;
    if (journal.size > headerSize) {
        applyChanges(devices, std::move(changes));
        const std::string folded = rewriteDevices(text, devices);
        // The journal goes on keeping the changes while the file cannot be replaced because someone holds it
        // open, or must not be because an editor, which takes no lock, has saved it just now.
        if (folded == text || (!isFileChanged() && replaceFile(folded))) {
            loaded_ = fileStamp();
            emptyJournal(journal);
        }
    }
    return devices;
}

bool DeviceStore::isFileChanged() const noexcept {
    const FileStamp now = fileStamp();
    return now.size != loaded_.size || now.written != loaded_.written;
}

std::vector<DeviceChange> DeviceStore::readChanges() {
    if (!journal_)
        return {};
    JournalStamp now = journalStamp();
    if (now.header == seen_.header && now.size == seen_.size)
        return {};
    const FileLock lock = lockStore();
    now = journalStamp();
    std::vector<DeviceChange> changes;
    if (now.header == seen_.header && now.size >= seen_.size) {
        changes = readJournal(seen_.size, now.size);
    } else { // folded meanwhile: what the journal held stands in the file
        for (DeviceEntry& device : parseFile(readFile())) {
            DeviceChange change{std::move(device.token), {}, std::move(device.alias)};
            if (device.number != vykel::noDeviceNumber)
                change.number = device.number;
            changes.push_back(std::move(change));
        }
        for (DeviceChange& change : readJournal(headerSize, now.size))
            changes.push_back(std::move(change));
    }
    seen_ = now;
    return changes;
}

void DeviceStore::append(const DeviceChange& change) {
    // The line end goes first: it ends whatever a killed process left half-written.
    const std::string record = "\n" + formatChange(change);
    openSideFiles();
    const FileLock lock = lockStore();
    const JournalStamp before = journalStamp();
    // An alias may be moved here from where it is deleted next, so it must be on the disk before that;
    // numbers that a power failure takes are given again.
    if (!journal_.write(before.size, record) || (change.alias && !FlushFileBuffers(journal_.handle()))) {
        journal_.truncate(before.size);
        throw StoreError(Code::NotWritable, 0, "the journal cannot be written");
    }
    if (before.header == seen_.header && before.size == seen_.size)
        seen_.size += record.size();
}

void DeviceStore::fold() {
    if (journal_ && journalStamp().size > headerSize)
        load();
}

void DeviceStore::openSideFiles() {
    if (!lockFile_)
        lockFile_ = File(path_ + ".lck", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (!lockFile_)
        throw StoreError(Code::NotWritable, 0, "the lock file cannot be opened for writing");
    if (journal_)
        return;
    const FileLock lock = lockStore();
    File journal(path_ + ".journal", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    const auto size = journal.size();
    if (!size || (*size < headerSize && !journal.write(0, noFolding)))
        throw StoreError(Code::NotWritable, 0, "the journal cannot be opened for writing");
    journal_ = std::move(journal);
}

FileLock DeviceStore::lockStore() const {
    FileLock lock(lockFile_);
    if (!lock.held())
        throw StoreError(Code::NotWritable, 0, "the lock file cannot be locked");
    return lock;
}

DeviceStore::FileStamp DeviceStore::fileStamp() const noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path_.c_str(), GetFileExInfoStandard, &data))
        return {};
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {join(data.nFileSizeHigh, data.nFileSizeLow),
            join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

DeviceStore::JournalStamp DeviceStore::journalStamp() const {
    JournalStamp stamp;
    const auto size = journal_.size();
    if (!size || *size < headerSize || journal_.read(0, stamp.header.data(), headerSize) != headerSize)
        throw StoreError(Code::NotWritable, 0, "the journal cannot be read");
    stamp.size = *size;
    return stamp;
}

std::string DeviceStore::readFile() const {
    const File file(path_, GENERIC_READ, OPEN_EXISTING);
    const auto size = file.size();
    if (!size)
        throw StoreError(Code::FileMissing, 0, "the file cannot be opened");
    return readRange(file, 0, *size);
}

std::vector<DeviceEntry> DeviceStore::parseFile(std::string_view text) const {
    try {
        return parseDevices(text);
    } catch (const TextError& error) {
        throw StoreError(Code::FileMalformed, error.line, error.what());
    }
}

std::vector<DeviceChange> DeviceStore::readJournal(std::uint64_t from, std::uint64_t to) const {
    const std::string text = readRange(journal_, from, to);
    std::vector<DeviceChange> changes;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        if (auto change = parseChange(std::string_view(text).substr(begin, end - begin)))
            changes.push_back(std::move(*change));
        begin = end == std::string::npos ? text.size() : end + 1;
    }
    return changes;
}

bool DeviceStore::replaceFile(const std::string& text) const noexcept {
    try {
        const Path temporary = path_ + ".tmp";
        bool written = false;
        {
            const File file(temporary, GENERIC_WRITE, CREATE_ALWAYS);
            written = file && file.write(0, text) && FlushFileBuffers(file.handle());
        }
        if (written &&
            MoveFileExW(temporary.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        DeleteFileW(temporary.c_str());
    } catch (const std::bad_alloc&) { // as any other failure: the file stays as it was
    }
    return false;
}

void DeviceStore::emptyJournal(const JournalStamp& current) noexcept {
    // The count goes first. Killed between the two, the next reader finds old changes and makes them again.
    std::uint32_t folded = 0;
    std::from_chars(current.header.data() + sizeof("folded"), current.header.data() + headerSize, folded);
    std::array<char, headerSize + 1> header = {};
    std::snprintf(header.data(), header.size(), "folded %010u", folded + 1);
    if (journal_.write(0, std::string_view(header.data(), headerSize)) && journal_.truncate(headerSize)) {
        std::copy_n(header.begin(), headerSize, seen_.header.begin());
        seen_.size = headerSize;
    }
}

} // namespace simulated
