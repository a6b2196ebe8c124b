#ifndef VYKELDEV_SYSTEM_SYSTEM_H
#define VYKELDEV_SYSTEM_SYSTEM_H

#include <optional>
#include <string>
#include <windows.h>

/// The system: its errors, its version and its files. Paths and texts are UTF-8.
namespace vykeldev {

/// The file name of the library on this system.
extern const char* const libraryFileName;

/// Whether libraries of this system have the headers of Windows. If not, the loader is their only judge.
extern const bool librariesArePe;

/// Where the system's loader finds a library that another one imports by that name. An empty path: it is
/// loaded already, or it belongs to the system. None: it is not found.
std::optional<std::string> findImport(const std::string& name);

/// The system's text for an error, without a line end; empty when there is none.
std::string systemErrorText(DWORD error);

/// The system's name and version.
std::string systemVersion();

/// What a library's file states of itself, or empty texts.
struct FileVersion {
    std::string number;
    std::string maker;
};
FileVersion fileVersion(const std::string& path);

/// False when opening `path`, which is absolute, could wait for a device or a pipe.
bool isOrdinaryFile(const std::string& path);

/// A thing that only administrators should change: a folder because of one file in it, which exists or is
/// missing. Whoever may only add other files to the folder does no harm. A folder that is guarded itself: in
/// the shared one, users may make files; in the read-only one, nothing.
enum class Guarded { File, Folder, FolderOfMissing, RegistryKey, SharedFolder, ReadOnlyFolder };

/// Which of all ordinary users' groups may change it, for people; empty when none may, or when that cannot be
/// read. A key is one of HKEY_LOCAL_MACHINE. The host knows no rights of keys.
std::string ordinaryWriters(const std::string& path, Guarded kind);

/// Whether an owner is the administrators or the system; or the user of this process, when it runs as
/// administrator. On the host: root, or the user of this process.
bool isAdministrator(PSID owner);

} // namespace vykeldev

#endif
