#ifndef VYSYS_WINDOWSREGISTRY_H
#define VYSYS_WINDOWSREGISTRY_H

#include "vysys/textConversion.h"
#include <cstdint>
#include <windows.h>

/// Reading of the registry below HKEY_LOCAL_MACHINE. Key paths and names are UTF-8. Every operation opens its
/// key itself and closes it before it returns, does nothing while the Status holds an error, and records
/// ResourceNotFound, with the system's code and text, when a call of the system fails, or MemoryFull. Any
/// thread may call.
namespace vysys {

/// Number of direct subkeys of a key; 0 after a failure.
std::uint32_t countSubkeys(const char* keyPath, vyerr::Status& status) noexcept;

/// Appends the name of the subkey at an index (0 up) in the system's order. A name of more than 255 units is
/// a failure.
void getSubkeyName(const char* keyPath, std::uint32_t index, Utf8Vector& name,
                   vyerr::Status& status) noexcept;

/// Appends the data of a value as text, whatever its type: the stored bytes are taken as UTF-16, a stored
/// terminating 0 included.
void readStringValue(const char* keyPath, const char* valueName, Utf8Vector& value,
                     vyerr::Status& status) noexcept;

/// An open key; closed at the end of the scope when the open succeeded.
struct RegistryKey : private vytpl::NonCopyableT<RegistryKey> {
    RegistryKey() noexcept = default;
    ~RegistryKey();

    HKEY handle = nullptr;
    bool opened = false;
};

/// Opens a key for reading into `key`. Unlike the others it asks the system also while the Status holds an
/// error; it then records nothing.
void openKey(const Utf16String& keyPath, RegistryKey& key, vyerr::Status& status) noexcept;

/// Records the failure of a registry call: ResourceNotFound, the system's error, and `description`.
void recordRegistryError(vyerr::Status& status, vyerr::RaiseSite site, LSTATUS error,
                         const char* description) noexcept;

} // namespace vysys

#endif
