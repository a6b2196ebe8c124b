#ifndef VYSYS_WINDOWSREGISTRY_H
#define VYSYS_WINDOWSREGISTRY_H

#include "vysys/textConversion.h"
#include "vytpl/NonCopyable.h"
#include <cstdint>
#include <windows.h>

/// Reading of the registry below HKEY_LOCAL_MACHINE. Key paths and names are UTF-8. Every operation opens its
/// key and closes it before it returns, and does nothing while the Status holds an error. It records
/// ResourceNotFound, with the system's code and text, when a call of the system fails, or MemoryFull. Any
/// thread may call.
namespace vysys {

/// Number of direct subkeys of a key; 0 after a failure.
std::uint32_t countSubkeys(const char* keyPath, vyerr::Status& status) noexcept;

/// Appends the name of the subkey at an index (0 up) in the system's order. A name of more than 255 units is
/// a failure.
void getSubkeyName(const char* keyPath, std::uint32_t index, Utf8Vector& name,
                   vyerr::Status& status) noexcept;

/// Appends the data of a value as text, whatever its type and length. It takes the stored bytes as UTF-16,
/// with a terminating 0 if one is stored, and leaves out an odd last byte.
void readStringValue(const char* keyPath, const char* valueName, Utf8Vector& value,
                     vyerr::Status& status) noexcept;

/// An open key; closed at the end of the scope when the open succeeded.
struct RegistryKey : private vytpl::NonCopyableT<RegistryKey> {
    RegistryKey() noexcept = default;
    RegistryKey(HKEY key, bool isOpen) noexcept : handle(key), opened(isOpen) {}
    ~RegistryKey();

    HKEY handle = nullptr;
    bool opened = false; ///< whether `handle` is to be closed
};

/// Opens a key for reading; the result says whether it is open.
RegistryKey openKey(const Utf16String& keyPath, vyerr::Status& status) noexcept;

/// The same as readStringValue above, but it replaces `value`, without a conversion of the units.
void readStringValue(const Utf16String& keyPath, const Utf16String& valueName, Utf16String& value,
                     vyerr::Status& status) noexcept;

} // namespace vysys

#endif
