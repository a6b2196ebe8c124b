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

/// As CreateFileW, sharing everything; null with the system's last error set.
FileHandle openFile(const std::string& path, DWORD access, DWORD disposition);

/// Reads a file of at most 256 MB into `bytes`, which is empty before and stays so when that fails. Returns
/// the system's error; 0 is success.
DWORD readFile(const std::string& path, std::string& bytes);

/// Writes that many bytes to an open file and flushes them to the disk. False with the system's last error
/// set.
bool writeZeros(HANDLE file, std::uint64_t count);

} // namespace vykeldev

#endif
