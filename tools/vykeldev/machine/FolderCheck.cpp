#include "machine/FolderCheck.h"

#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "machine/Findings.h"
#include "machine/HeldPlace.h"
#include "machine/LegacyCheck.h"
#include "machine/LibraryError.h"
#include "machine/Locks.h"
#include "pellumkelddk/user/FileLock.h"
#include "system/Files.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"
#include <cmath>

namespace vykeldev {
namespace {

/// Waits for a lock. Returns its stream, which holds it; null when it cannot be locked.
vykel::FileStream takeLock(const std::string& name, FolderReport& report, Progress& progress) {
    LockState& lock = report.locks.emplace_back();
    lock.path = report.folder + name;
    const auto fail = [&](const char* state, const FindingKind& kind, const std::string& detail,
                          const std::string& remedy = "") {
        lock.state = state;
        report.findings.push_back({&kind, lock.path, detail, 0, remedy});
        return nullptr;
    };
    vykel::FileStream stream;
    try {
        stream = vykel::openLockFile(lock.path.c_str());
    } catch (const vyerr::Exception&) {
        if (isFolder(lock.path))
            return fail("unusable", finding::lockUnusable, "a folder has its name", "Move the folder away.");
        const DWORD error = openFile(lock.path, GENERIC_READ, OPEN_EXISTING) ? 0 : GetLastError();
        const bool isFull = !report.findings.empty() && report.findings.back().kind == &finding::diskFull;
        return fail("unusable", finding::lockUnusable, "it cannot be opened or made",
                    isFull ? finding::diskFull.remedyFor("") : remedyOfOpening(error));
    }
    const DWORD error = lockInTime(stream.get(), [&](auto waited) {
        progress.show("waiting for " + lock.path);
        lock.secondsWaited = std::round(std::chrono::duration<double>(waited).count() * 100) / 100;
    });
    if (error == ERROR_LOCK_VIOLATION)
        return fail("held", finding::lockHeld,
                    "waited " + std::to_string(longestLockWait.count()) + " seconds");
    if (error != ERROR_SUCCESS)
        return fail("unusable", finding::lockUnusable, systemErrorText(error),
                    "Keep the folder on a local disk, whose files the system can lock.");
    return stream;
}

/// The size of a file; 0 when there is none.
std::uint64_t fileSize(const std::string& path) {
    const FileHandle file = openFile(path, 0, OPEN_EXISTING);
    LARGE_INTEGER size = {};
    return file && GetFileSizeEx(file.get(), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

/// Whether this user may make files in the folder: makes one, as large as a new vykel.ini could be.
bool checkRights(const std::string& folder, Findings& findings) {
    const std::string path = folder + "vykeldev-" + std::to_string(GetCurrentProcessId()) + ".tmp";
    const DWORD error = makeTemporaryFile(path, fileSize(folder + "vykel.ini"));
    if (error == ERROR_SUCCESS)
        return true;
    const bool isFull = error == ERROR_DISK_FULL;
    findings.push_back(
        {isFull ? &finding::diskFull : &finding::folderReadOnly, folder, systemErrorText(error)});
    return isFull;
}

/// Looks at the folder and the one above it: a link, owner and rights. Returns whether neither is a link.
bool checkFolders(const std::string& folder, Findings& findings) {
    const std::string own = folder.substr(0, folder.size() - 1); // without the backslash
    const std::pair<std::string, Guarded> folders[] = {
        {own.substr(0, own.rfind('\\')), Guarded::ReadOnlyFolder}, {own, Guarded::SharedFolder}};
    for (const auto& [path, kind] : folders) {
        if (const std::string link = linkText(path); !link.empty()) {
            findings.push_back({&finding::folderLink, path, link});
            return false;
        }
        if (const FileHandle opened = openItself(path, READ_CONTROL);
            opened && !belongsToAdministrators(opened.get(), path))
            findings.push_back({&finding::folderOwner, path, ""});
        if (const std::string writers = ordinaryWriters(path, kind); !writers.empty())
            findings.push_back({&finding::folderRights, path, writers});
    }
    return true;
}

/// Looks for links among the files of the folder. Returns whether the legacy alias file itself is no link.
bool checkLinks(const std::string& folder, Findings& findings) {
    std::string link;
    for (const char* const name : {"DeviceList.lck", "vykel.lck", "vykel.TMP", "vykel.ini"})
        if (link = linkText(folder + name); !link.empty())
            findings.push_back({&finding::folderLink, folder + name, link});
    return link.empty();
}

Finding missingFolder(const std::string& folder) {
    const std::string path = folder.substr(0, folder.size() - 1); // without the backslash
    if (GetFileAttributesW(toWide(path).c_str()) == INVALID_FILE_ATTRIBUTES)
        return {&finding::folderMissing, folder, ""};
    return {&finding::folderMissing, folder, "a file has its name", 0,
            "Move the file away, then run 'vykeldev setup' as administrator: it makes the folder."};
}

} // namespace

void checkFolder(FolderReport& report, Progress& progress) {
    try {
        report.folder = vykel::getConfigurationFolder();
    } catch (const vyerr::Exception& exception) {
        const DWORD result = makeLibraryError(exception).system.value_or(0);
        report.findings.push_back({&finding::folderUnknown, "common application data",
                                   systemErrorText(result & 0xFFFF)}); // the error in an HRESULT
        return;
    }
    report.legacy.path = report.folder + "vykel.ini";
    if (!checkFolders(report.folder, report.findings))
        return; // clients follow the link; the doctor makes and locks nothing there
    if (!isFolder(report.folder)) {
        report.findings.push_back(missingFolder(report.folder));
        return;
    }
    const bool writable = checkRights(report.folder, report.findings);
    takeLock("DeviceList.lck", report, progress); // and frees it at once
    const vykel::FileStream lock = takeLock("vykel.lck", report, progress);
    if (!lock)
        report.findings.back().detail += "; vykel.ini was not checked";
    report.legacy.state = "not read";
    if (checkLinks(report.folder, report.findings) && lock)
        checkLegacyFile(report, writable);
}

} // namespace vykeldev
