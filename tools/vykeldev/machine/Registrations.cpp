#include "machine/Registrations.h"

#include "machine/LibraryError.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Paths.h"
#include "system/Text.h"
#include "vysys/windowsRegistry.h"

namespace vykeldev {
namespace {

constexpr std::size_t maxNameUnits = 255; // in UTF-16 units; the registry's limit

Failure registryFailure(const std::string& action, DWORD error) {
    return systemFailure(action, error, "Check the rights on this registry key.");
}

Registration readRegistration(std::uint32_t index) {
    Registration result{"(subkey " + std::to_string(index) + ")", std::nullopt, {}};
    try {
        result.name = vykel::pluginName(index);
        result.path = vykel::pluginPath(result.name);
        result.problem = pathProblem(*result.path);
    } catch (const vyerr::Exception& exception) {
        const LibraryError error = makeLibraryError(exception);
        result.problem = std::string(vykel::pluginPathValue) + " cannot be read: " + error.systemText +
                         (error.system ? " (" + std::to_string(*error.system) + ")" : "");
    }
    return result;
}

/// The path of a plug-in, or an empty text when none can be read.
std::string registeredPath(const std::string& name) {
    try {
        return vykel::pluginPath(name);
    } catch (const vyerr::Exception&) {
        return {};
    }
}

} // namespace

bool isRegistrationName(const std::string& name) {
    return !name.empty() && name.find('\\') == std::string::npos && toWide(name).size() <= maxNameUnits;
}

std::vector<Registration> readRegistrations() {
    std::vector<Registration> registrations;
    try {
        const std::uint32_t count = vykel::countPlugins();
        for (std::uint32_t index = 0; index < count; ++index)
            registrations.push_back(readRegistration(index));
    } catch (const vyerr::Exception& exception) {
        const LibraryError error = makeLibraryError(exception);
        if (!error.system)
            throw statusFailure("reading the registry key of the plug-ins", error.code);
        if (*error.system != ERROR_FILE_NOT_FOUND)
            throw registryFailure("reading the registry key of the plug-ins", *error.system);
    }
    return registrations;
}

std::string writeRegistration(const std::string& name, const std::string& path) {
    std::string before = registeredPath(name);
    vysys::RegistryKey key;
    const WideString keyPath = toWide(vykel::pluginsKey + name);
    LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_WRITE, nullptr, &key.handle, nullptr);
    key.opened = error == ERROR_SUCCESS;
    if (key.opened) {
        const WideString text = toWide(path);
        const DWORD bytes = static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)); // with its terminator
        error = RegSetValueExW(key.handle, toWide(vykel::pluginPathValue).c_str(), 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.c_str()), bytes);
    }
    if (error != ERROR_SUCCESS)
        throw registryFailure("registering '" + printable(name) + "'", static_cast<DWORD>(error));
    return before;
}

void removeRegistration(const std::string& name) {
    vysys::RegistryKey plugins;
    LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(vykel::pluginsKey).c_str(), 0,
                                  KEY_READ | KEY_WRITE | DELETE, &plugins.handle);
    plugins.opened = error == ERROR_SUCCESS;
    if (plugins.opened)
        error = RegDeleteTreeW(plugins.handle, toWide(name).c_str());
    if (error == ERROR_FILE_NOT_FOUND) {
        throw Failure("no plug-in is registered as '" + printable(name) + "'", "",
                      "'vykeldev plugins' shows the names.");
    }
    if (error != ERROR_SUCCESS)
        throw registryFailure("unregistering '" + printable(name) + "'", static_cast<DWORD>(error));
}

} // namespace vykeldev
