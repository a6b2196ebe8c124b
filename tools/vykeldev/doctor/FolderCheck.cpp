#include "doctor/FolderCheck.h"

#include "ConfigurationFolder.h"
#include "doctor/Files.h"
#include "errors/Exception.h"
#include "pellumkelddk/user/FileLock.h"
#include "System.h"
#include <chrono>
#include <cmath>
#include <io.h>

namespace vykeldev::doctor {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds longestWait{2};
constexpr DWORD millisecondsBetweenTries = 20;
constexpr DWORD wholeFile = 0xFFFFFFFF; // in both halves of the length

/// The lock that FileLockImpl takes, without its unbounded wait. Returns the system's error; 0: it was free.
DWORD tryLock(std::FILE* stream) {
    const HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    OVERLAPPED overlapped = {};
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, wholeFile, wholeFile,
                   &overlapped) != FALSE)
        return ERROR_SUCCESS;
    return GetLastError();
}

double secondsSince(Clock::time_point start) {
    return std::round(std::chrono::duration<double>(Clock::now() - start).count() * 100) / 100;
}

/// Waits for a lock and lets it go at once.
DWORD waitForLock(std::FILE* stream, LockState& lock, Progress& progress) {
    const Clock::time_point start = Clock::now();
    DWORD error = tryLock(stream);
    while (error == ERROR_LOCK_VIOLATION && Clock::now() - start < longestWait) {
        progress.show("waiting for " + lock.path);
        Sleep(millisecondsBetweenTries);
        lock.secondsWaited = secondsSince(start);
        error = tryLock(stream);
    }
    return error;
}

LockState checkLock(const std::string& path, Findings& findings, Progress& progress) {
    LockState lock;
    lock.path = path;
    try {
        const vykel::FileStream stream = vykel::openLockFile(path.c_str());
        const DWORD error = waitForLock(stream.get(), lock, progress);
        if (error == ERROR_LOCK_VIOLATION) {
            lock.state = LockState::State::Held;
            findings.push_back(
                {FindingId::LockHeld, path, "waited " + std::to_string(longestWait.count()) + " seconds"});
        } else if (error != ERROR_SUCCESS) {
            lock.state = LockState::State::Unusable;
            findings.push_back({FindingId::LockUnusable, path, systemErrorText(error)});
        }
    } catch (const vyerr::Exception&) {
        lock.state = LockState::State::Unusable;
        findings.push_back({FindingId::LockUnusable, path, "it can be neither opened nor made"});
    }
    return lock;
}

/// Whether files can be made in the folder, by making one.
void checkRights(const std::string& folder, Findings& findings) {
    const std::string path = folder + "vykeldev-" + std::to_string(GetCurrentProcessId()) + ".tmp";
    if (openFile(path, GENERIC_WRITE, CREATE_NEW))
        DeleteFileW(toWide(path).c_str());
    else
        findings.push_back({FindingId::FolderReadOnly, folder, systemErrorText(GetLastError())});
}

} // namespace

void checkFolder(Report& report, Progress& progress) {
    try {
        report.folder = vykel::getConfigurationFolder();
    } catch (const vyerr::Exception& exception) {
        report.findings.push_back(
            {FindingId::FolderUnknown, "common application data", exception.errorInfoJson()});
        return;
    }
    if (!isFolder(report.folder)) {
        report.findings.push_back({FindingId::FolderMissing, report.folder, ""});
        return;
    }
    checkRights(report.folder, report.findings);
    for (const char* const name : {"DeviceList.lck", "vykel.lck"})
        report.locks.push_back(checkLock(report.folder + name, report.findings, progress));
}

} // namespace vykeldev::doctor
