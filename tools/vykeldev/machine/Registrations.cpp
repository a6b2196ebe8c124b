#include "machine/Registrations.h"

#include "machine/Findings.h"
#include "output/Failures.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Paths.h"
#include "system/Text.h"
#include "vysys/windowsRegistry.h"

namespace vykeldev {
namespace {

constexpr std::size_t maxNameUnits = 255; // in UTF-16 units; the registry's limit

Failure registryFailure(const std::string& action, DWORD error) {
    return systemFailure(action, error, "Check the rights on this registry key.");
}

constexpr const char* keyOf32Bit = "SOFTWARE\\WOW6432Node\\Morvance\\VY-KEL\\Plugins\\";

/// Reports that the registry key names no plug-in. Looks where Windows puts the keys of 32-bit programs, such
/// as installers; no client looks there.
void addNone(const FindingKind& kind, const std::string& detail, Findings& findings) {
    vyerr::Status ignored;
    vyerr::initStatus(&ignored);
    const std::uint32_t misplaced = vysys::countSubkeys(keyOf32Bit, ignored);
    vyerr::releaseStatus(&ignored);
    Finding none{&kind, fullPluginsKey(), detail};
    if (misplaced != 0) {
        none.detail += concat(detail.empty() ? "" : " ", "A 32-bit installer registered ", misplaced,
                              " below HKEY_LOCAL_MACHINE\\", keyOf32Bit, ", where no client looks.");
        none.remedy = "Run 'vykeldev register NAME PATH' as administrator with the path of each plug-in, and "
                      "report it to the vendor.";
    }
    findings.push_back(none);
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
    std::string before;
    try {
        before = vykel::pluginPath(name);
    } catch (const vyerr::Exception&) { // there is none, or nobody can read it
    }
    const WideString text = toWide(path);
    const DWORD bytes = static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)); // with its terminator
    const LSTATUS error =
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, toWide(vykel::pluginsKey + name).c_str(),
                        toWide(vykel::pluginPathValue).c_str(), REG_SZ, text.c_str(), bytes);
    if (error != ERROR_SUCCESS)
        throw registryFailure("registering '" + printable(name) + "'", static_cast<DWORD>(error));
    return before;
}

void removeRegistration(const std::string& name) {
    const LSTATUS error = RegDeleteTreeW(HKEY_LOCAL_MACHINE, toWide(vykel::pluginsKey + name).c_str());
    if (error == ERROR_FILE_NOT_FOUND)
        throw Failure("no plug-in is registered as '" + printable(name) + "'", "",
                      "'vykeldev plugins' shows the names.");
    if (error != ERROR_SUCCESS)
        throw registryFailure("unregistering '" + printable(name) + "'", static_cast<DWORD>(error));
}

} // namespace vykeldev
