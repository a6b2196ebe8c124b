#ifndef VYKELDEV_SYSTEM_FILES_H
#define VYKELDEV_SYSTEM_FILES_H

#include "vybase/owners.h"
#include <cstdint>
#include <string>
#include <windows.h>

/// Whole files by their UTF-8 paths.
namespace vykeldev {

/// An open file of the system; null when there is none.
using FileHandle = vybase::Handle;

/// As CreateFileW, sharing everything unless `share` says less; null with the system's last error set.
FileHandle openFile(const std::string& path, DWORD access, DWORD disposition,
                    DWORD flags = FILE_ATTRIBUTE_NORMAL,
                    DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    SECURITY_ATTRIBUTES* security = nullptr);

/// Opens what has this path, sharing reading and writing; a link is opened itself, not what it leads to. Null
/// with the system's last error set.
FileHandle openItself(const std::string& path, DWORD access);

/// "a link", "a file with N names" (hard links), or empty, also when it cannot be looked at.
std::string linkText(const std::string& path);

/// A text that is the same for all paths of one file; empty when the system gives none.
std::string fileIdentity(const std::string& path);

/// Reads a file of at most 256 MB into `bytes`, which is empty before and stays so when that fails. Returns
/// the system's error; 0 is success.
DWORD readFile(const std::string& path, std::string& bytes);

/// Makes a file of that size that is on the disk for a moment and then gone. Returns the system's error; 0 is
/// success.
DWORD makeTemporaryFile(const std::string& path, std::uint64_t bytes);

} // namespace vykeldev

#endif
