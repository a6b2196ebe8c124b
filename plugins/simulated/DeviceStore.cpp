#include "DeviceStore.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace simulated {
namespace {

/// The header of a new journal.
constexpr std::string_view neverEmptied = "folded 0000000000";

std::string readRange(const File& file, std::uint64_t from, std::uint64_t to) {
    std::string text(static_cast<std::size_t>(to - from), '\0');
    if (file.read(from, text.data(), static_cast<std::uint32_t>(text.size())) != text.size())
        // Never use a part as the whole: the next folding would lose the rest.
        throw StoreError(Code::FileMissing, 0, "the file cannot be read to its end");
    return text;
}

void applyChanges(std::vector<DeviceEntry>& devices, std::vector<DeviceChange> changes) {
    std::unordered_map<std::string_view, DeviceEntry*> byToken;
    for (DeviceEntry& device : devices)
        byToken.emplace(device.token, &device);
    for (DeviceChange& change : changes) {
        const auto found = byToken.find(change.token);
        if (found == byToken.end())
            continue; // the device was removed from the file
        if (change.number)
            found->second->number = *change.number;
        if (change.alias)
            found->second->alias = std::move(change.alias);
    }
}

} // namespace

DeviceStore::DeviceStore(Path devicesFile) : path(std::move(devicesFile)) {}

std::vector<DeviceEntry> DeviceStore::load() {
    openSideFiles();
    const FileLock lock = lockStore();
    // The stamp is taken before the reading: an edit between the two only makes the list stale once more.
    const FileStamp stamp = fileStamp();
    const std::string text = readFile();
    std::vector<DeviceEntry> devices = parseFile(text);
    const JournalStamp journalNow = journalStamp();
    std::vector<DeviceChange> changes = readJournal(headerSize, journalNow.size);
    loaded = stamp;
    seen = journalNow;
    if (journalNow.size > headerSize) {
        applyChanges(devices, std::move(changes));
        const std::string folded = rewriteDevices(text, devices);
        // The journal keeps the changes in two cases: the file cannot be replaced, because a program has it
        // open; or it must not be, because an editor (editors take no lock) has saved it since it was read.
        if (folded == text || (!isFileChanged() && replaceFile(folded))) {
            loaded = fileStamp();
            emptyJournal(journalNow);
        }
    }
    return devices;
}

bool DeviceStore::isFileChanged() const noexcept {
    const FileStamp now = fileStamp();
    return now.size != loaded.size || now.written != loaded.written;
}

std::vector<DeviceChange> DeviceStore::readChanges() {
    if (!journal)
        return {};
    JournalStamp now = journalStamp();
    if (now.header == seen.header && now.size == seen.size)
        return {};
    const FileLock lock = lockStore();
    now = journalStamp();
    std::vector<DeviceChange> changes;
    if (now.header == seen.header && now.size >= seen.size) {
        changes = readJournal(seen.size, now.size);
    } else { // the journal was emptied: its changes are in the file now
        for (DeviceEntry& device : parseFile(readFile())) {
            DeviceChange change{std::move(device.token), {}, std::move(device.alias)};
            if (device.number != vykel::noDeviceNumber)
                change.number = device.number;
            changes.push_back(std::move(change));
        }
        for (DeviceChange& change : readJournal(headerSize, now.size))
            changes.push_back(std::move(change));
    }
    seen = now;
    return changes;
}

void DeviceStore::append(const DeviceChange& change) {
    // Begin with a line end: it ends a line that a killed process left incomplete.
    const std::string record = "\n" + formatChange(change);
    openSideFiles();
    const FileLock lock = lockStore();
    const JournalStamp before = journalStamp();
    // Flush an alias: the caller may delete its own copy next. A number that a power failure loses is given
    // again.
    if (!journal.write(before.size, record) || (change.alias && !FlushFileBuffers(journal.handle()))) {
        journal.truncate(before.size);
        throw StoreError(Code::NotWritable, 0, "the journal cannot be written");
    }
    if (before.header == seen.header && before.size == seen.size)
        seen.size += record.size();
}

void DeviceStore::fold() {
    if (journal && journalStamp().size > headerSize)
        load();
}

void DeviceStore::openSideFiles() {
    if (!lockFile)
        lockFile = File(path + ".lck", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (!lockFile)
        throw StoreError(Code::NotWritable, 0, "the lock file cannot be opened for writing");
    if (journal)
        return;
    const FileLock lock = lockStore();
    File opened(path + ".journal", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    const auto size = opened.size();
    if (!size || (*size < headerSize && !opened.write(0, neverEmptied)))
        throw StoreError(Code::NotWritable, 0, "the journal cannot be opened for writing");
    journal = std::move(opened);
}

FileLock DeviceStore::lockStore() const {
    FileLock lock(lockFile);
    if (!lock.held())
        throw StoreError(Code::NotWritable, 0, "the lock file cannot be locked");
    return lock;
}

DeviceStore::FileStamp DeviceStore::fileStamp() const noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return {};
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {join(data.nFileSizeHigh, data.nFileSizeLow),
            join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

DeviceStore::JournalStamp DeviceStore::journalStamp() const {
    JournalStamp stamp;
    const auto size = journal.size();
    if (!size || *size < headerSize || journal.read(0, stamp.header.data(), headerSize) != headerSize)
        throw StoreError(Code::NotWritable, 0, "the journal cannot be read");
    stamp.size = *size;
    return stamp;
}

std::string DeviceStore::readFile() const {
    const File file(path, GENERIC_READ, OPEN_EXISTING);
    const auto size = file.size();
    if (!size)
        throw StoreError(Code::FileMissing, 0, "the file cannot be opened");
    return readRange(file, 0, *size);
}

std::vector<DeviceEntry> DeviceStore::parseFile(std::string_view text) const {
    if (isWide(text)) // what `echo token=a > file` writes in PowerShell 5
        throw StoreError(Code::FileNotUtf8, 0, "the file is in UTF-16 or UTF-32; save it as UTF-8");
    try {
        return parseDevices(text);
    } catch (const TextError& error) {
        throw StoreError(Code::FileMalformed, error.line, error.what());
    }
}

std::vector<DeviceChange> DeviceStore::readJournal(std::uint64_t from, std::uint64_t to) const {
    const std::string text = readRange(journal, from, to);
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
        const Path temporary = path + ".tmp";
        bool written = false;
        {
            const File file(temporary, GENERIC_WRITE, CREATE_ALWAYS);
            written = file && file.write(0, text) && FlushFileBuffers(file.handle());
        }
        if (written &&
            MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        DeleteFileW(temporary.c_str());
    } catch (const std::bad_alloc&) { // like any other failure: the file stays unchanged
    }
    return false;
}

void DeviceStore::emptyJournal(const JournalStamp& current) noexcept {
    // Write the count first. When the process is killed between the two steps, the next reader applies old
    // changes again, which changes nothing.
    std::uint32_t folded = 0;
    std::from_chars(current.header.data() + sizeof("folded"), current.header.data() + headerSize, folded);
    std::array<char, headerSize + 1> header = {};
    std::snprintf(header.data(), header.size(), "folded %010u", folded + 1);
    if (journal.write(0, std::string_view(header.data(), headerSize)) && journal.truncate(headerSize)) {
        std::copy_n(header.begin(), headerSize, seen.header.begin());
        seen.size = headerSize;
    }
}

} // namespace simulated
