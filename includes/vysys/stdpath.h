#ifndef VYSYS_STDPATH_H
#define VYSYS_STDPATH_H

#include "vysys/textConversion.h"
#include <string>

/// Where the machine keeps things: its standard folders, and the registry values that name further places.
/// Every operation does nothing while the Status holds an error. Any thread may call.
namespace vysys {

/// Sizes `buffer` to the longest path of the system (260 units) and asks for the folder of data common to all
/// users. Records ResourceNotFound when the system does not tell it, MemoryFull when the buffer cannot grow.
void getFolderPath(Utf16String& buffer, vyerr::Status& status) noexcept;

/// Replaces `folder` by the maker's folder (UTF-8, no trailing separator) within the common data folder. It
/// is computed, not created. After a failure, recorded as by getFolderPath, the text must not be used.
void getSharedDataFolder(std::string& folder, vyerr::Status& status) noexcept;

/// Strips leading white space, and trailing white space, NULs and backslashes.
void trimPath(std::string& path) noexcept;

/// Replaces `data` by the data of a registry value below HKEY_LOCAL_MACHINE, whatever its type and length,
/// as UTF-16 units; an odd last byte is left out. Records ResourceNotFound or MemoryFull.
void readStringValue(const Utf16String& keyPath, const Utf16String& valueName, Utf16String& data,
                     vyerr::Status& status) noexcept;

} // namespace vysys

#endif
