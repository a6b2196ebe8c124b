#ifndef VYKELDEV_MACHINE_REGISTRATIONS_H
#define VYKELDEV_MACHINE_REGISTRATIONS_H

#include <optional>
#include <string>
#include <vector>

/// The registered plug-ins: subkeys of HKEY_LOCAL_MACHINE\SOFTWARE\Morvance\VY-KEL\Plugins. All texts are
/// UTF-8.
namespace vykeldev {

/// One subkey.
struct Registration {
    std::string name;
    std::optional<std::string> path; ///< None when it cannot be read.
    std::string problem; ///< Why the library cannot use it, as far as that shows from outside, or empty.
};

/// Whether `name` can name a plug-in: 1 to 255 UTF-16 units and no backslash.
bool isRegistrationName(const std::string& name);

/// All registrations in the order in which the library loads them. Throws Failure.
std::vector<Registration> readRegistrations();

/// Makes or replaces a registration; `path` is stored as it is. Returns the path that it replaced, or an
/// empty text. Throws Failure.
std::string writeRegistration(const std::string& name, const std::string& path);

/// Removes a registration. Throws Failure, also when no plug-in has that name.
void removeRegistration(const std::string& name);

} // namespace vykeldev

#endif
