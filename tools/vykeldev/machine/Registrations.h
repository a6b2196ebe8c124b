#ifndef VYKELDEV_MACHINE_REGISTRATIONS_H
#define VYKELDEV_MACHINE_REGISTRATIONS_H

#include "machine/Finding.h"
#include "machine/LibraryError.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The registered plug-ins: subkeys of HKEY_LOCAL_MACHINE\SOFTWARE\Morvance\VY-KEL\Plugins. All texts are
/// UTF-8.
namespace vykeldev {

/// One subkey.
struct Registration {
    std::string name;
    std::optional<std::string> path;   ///< None when it cannot be read.
    std::optional<LibraryError> error; ///< Why it cannot be read.
};

/// Whether `name` can name a plug-in: 1 to 255 UTF-16 units and no backslash.
bool isRegistrationName(const std::string& name);

/// The name of their key for people.
std::string fullPluginsKey();

/// Counts them. None, with a finding, when the key cannot be read; there is also one when there are none.
std::optional<std::uint32_t> countPlugins(Findings& findings);

/// The registration at an index below the count, in the order in which the library loads them.
Registration readRegistration(std::uint32_t index);

/// All registrations in the order in which the library loads them. Throws Failure.
std::vector<Registration> readRegistrations();

/// Makes or replaces a registration; `path` is stored as it is. Returns the path that it replaced, or an
/// empty text. Throws Failure.
std::string writeRegistration(const std::string& name, const std::string& path);

/// Removes a registration. Throws Failure, also when no plug-in has that name.
void removeRegistration(const std::string& name);

} // namespace vykeldev

#endif
