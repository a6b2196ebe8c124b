#ifndef VYSYS_STDPATH_H
#define VYSYS_STDPATH_H

#include "errors/Status.h"
#include <string>

/// The standard folders of the machine. Any thread may call.
namespace vysys {

/// Replaces `folder` by the maker's folder (UTF-8, no trailing separator) within the folder of data common to
/// all users. It is computed, not created. Does nothing while the Status holds an error. Records
/// ResourceNotFound when the system does not give the folder, or MemoryFull; the text must then not be used.
void getSharedDataFolder(std::string& folder, vyerr::Status& status) noexcept;

/// Strips leading white space, and trailing white space, NULs and backslashes.
void trimPath(std::string& path) noexcept;

} // namespace vysys

#endif
