#include "machine/Registrations.h"

#include "machine/Findings.h"
#include "output/Failures.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Paths.h"
#include "system/Text.h"
#include "vybase/owners.h"
#include "vysys/windowsRegistry.h"

namespace vykeldev {
namespace {

constexpr std::size_t maxNameUnits = 255; // in UTF-16 units; the registry's limit

Failure registryFailure(const std::string& action, DWORD error) {
    return systemFailure(action, error, "Check the rights on this registry key.");
}

/// The path of a plug-in, or an empty text when none can be read.
std::string registeredPath(const std::string& name) {
    try {
        return vykel::pluginPath(name);
    } catch (const vyerr::Exception&) {
        return {};
    }
}

constexpr const char* keyOf32Bit = "SOFTWARE\\WOW6432Node\\Morvance\\VY-KEL\\Plugins\\";

/// How many plug-ins are registered where Windows puts the keys of 32-bit programs, such as installers. No
/// client looks there.
std::uint32_t countMisplaced() {
    vyerr::Status status;
    vyerr::initStatus(&status);
    const std::uint32_t count = vysys::countSubkeys(keyOf32Bit, status);
    vyerr::releaseStatus(&status);
    return count;
}

/// Reports that the registry key names no plug-in.
void addNone(const FindingKind& kind, const std::string& detail, Findings& findings) {
    const std::uint32_t misplaced = countMisplaced();
    if (misplaced == 0)
        return findings.push_back({&kind, fullPluginsKey(), detail});
    findings.push_back(
        {&kind, fullPluginsKey(),
         concat(detail, detail.empty() ? "" : " ", "A 32-bit installer registered ", misplaced,
                " below HKEY_LOCAL_MACHINE\\", keyOf32Bit, ", where no client looks."),
         0,
         "Run 'vykeldev register NAME PATH' as administrator with the path of each plug-in, and "
         "report it to the vendor."});
}

} // namespace

std::string fullPluginsKey() {
    return std::string("HKEY_LOCAL_MACHINE\\") + vykel::pluginsKey;
}

std::optional<std::uint32_t> countPlugins(Findings& findings) {
    try {
        const std::uint32_t count = vykel::countPlugins();
        if (count == 0)
            addNone(finding::pluginsNone, "", findings);
        return count;
    } catch (const vyerr::Exception& exception) {
        const LibraryError error = makeLibraryError(exception);
        if (error.system == ERROR_ACCESS_DENIED)
            findings.push_back({&finding::pluginsKeyDenied, fullPluginsKey(), error.systemText});
        else
            addNone(finding::pluginsKeyMissing, error.systemText, findings);
        return std::nullopt;
    }
}

Registration readRegistration(std::uint32_t index) {
    Registration result{"(subkey " + std::to_string(index) + ")", std::nullopt, std::nullopt};
    try {
        result.name = vykel::pluginName(index);
        result.path = vykel::pluginPath(result.name);
    } catch (const vyerr::Exception& exception) {
        result.error = makeLibraryError(exception);
    }
    return result;
}

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
    HKEY handle = nullptr;
    const WideString keyPath = toWide(vykel::pluginsKey + name);
    LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_WRITE, nullptr, &handle, nullptr);
    const vybase::RegistryKey key(handle);
    if (key) {
        const WideString text = toWide(path);
        const DWORD bytes = static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)); // with its terminator
        error = RegSetValueExW(key.get(), toWide(vykel::pluginPathValue).c_str(), 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.c_str()), bytes);
    }
    if (error != ERROR_SUCCESS)
        throw registryFailure("registering '" + printable(name) + "'", static_cast<DWORD>(error));
    return before;
}

void removeRegistration(const std::string& name) {
    HKEY handle = nullptr;
    LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(vykel::pluginsKey).c_str(), 0,
                                  KEY_READ | KEY_WRITE | DELETE, &handle);
    const vybase::RegistryKey plugins(handle);
    if (plugins)
        error = RegDeleteTreeW(plugins.get(), toWide(name).c_str());
    if (error == ERROR_FILE_NOT_FOUND) {
        throw Failure("no plug-in is registered as '" + printable(name) + "'", "",
                      "'vykeldev plugins' shows the names.");
    }
    if (error != ERROR_SUCCESS)
        throw registryFailure("unregistering '" + printable(name) + "'", static_cast<DWORD>(error));
}

} // namespace vykeldev
