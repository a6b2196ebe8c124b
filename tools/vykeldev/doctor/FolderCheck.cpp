#include "doctor/FolderCheck.h"

#include "ConfigurationFolder.h"
#include "doctor/Findings.h"
#include "doctor/LegacyCheck.h"
#include "errors/Exception.h"
#include "pellumkelddk/user/FileLock.h"
#include "platform/DoctorPlatform.h"
#include "platform/System.h"
#include "support/BoundedLock.h"
#include "support/Files.h"
#include <cmath>

namespace vykeldev::doctor {
namespace {

vykel::FileStream openLock(const std::string& path) {
    try {
        return vykel::openLockFile(path.c_str());
    } catch (const vyerr::Exception&) {
        return nullptr;
    }
}

/// Waits for a lock, and lets it go when `whileHeld` is done. False when it cannot be had.
template <class Work>
bool checkLock(const std::string& name, Report& report, Progress& progress, Work whileHeld) {
    LockState& lock = report.locks.emplace_back();
    lock.path = report.folder + name;
    const vykel::FileStream stream = openLock(lock.path);
    if (stream == nullptr) {
        lock.state = LockState::State::Unusable;
        report.findings.push_back({&finding::lockUnusable, lock.path, "it can be neither opened nor made"});
        return false;
    }
    const DWORD error = lockInTime(stream.get(), [&](auto waited) {
        progress.show("waiting for " + lock.path);
        lock.secondsWaited = std::round(std::chrono::duration<double>(waited).count() * 100) / 100;
    });
    if (error == ERROR_SUCCESS) {
        whileHeld();
        return true;
    }
    const bool held = error == ERROR_LOCK_VIOLATION;
    lock.state = held ? LockState::State::Held : LockState::State::Unusable;
    report.findings.push_back(
        {held ? &finding::lockHeld : &finding::lockUnusable, lock.path,
         held ? "waited " + std::to_string(longestLockWait.count()) + " seconds" : systemErrorText(error)});
    return false;
}

/// Whether files can be made in the folder, by making one.
bool checkRights(const std::string& folder, Findings& findings) {
    const std::string path = folder + "vykeldev-" + std::to_string(GetCurrentProcessId()) + ".tmp";
    if (makeTemporaryFile(path))
        return true;
    findings.push_back({&finding::folderReadOnly, folder, systemErrorText(GetLastError())});
    return false;
}

} // namespace

void checkFolder(Report& report, Progress& progress) {
    try {
        report.folder = vykel::getConfigurationFolder();
    } catch (const vyerr::Exception& exception) {
        report.findings.push_back(
            {&finding::folderUnknown, "common application data", exception.errorInfoJson()});
        return;
    }
    report.legacy.path = report.folder + "vykel.ini";
    if (!isFolder(report.folder)) {
        report.findings.push_back({&finding::folderMissing, report.folder, ""});
        return;
    }
    const bool writable = checkRights(report.folder, report.findings);
    checkLock("DeviceList.lck", report, progress, [] {});
    if (!checkLock("vykel.lck", report, progress, [&] { checkLegacyFile(report, writable); })) {
        report.legacy.state = "not read";
        report.findings.back().detail += "; vykel.ini was not looked at";
    }
}

} // namespace vykeldev::doctor
