#include "doctor/PluginCheck.h"

#include "machine/Findings.h"
#include "machine/Registrations.h"
#include "PluginRegistrations.h"
#include "system/Failure.h"
#include "system/Files.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"
#include "vybase/owners.h"
#include <algorithm>
#include <map>
#include <utility>

namespace vykeldev::doctor {
namespace {

/// Checks what the library does not look at: the value's type, its size, and how it ends.
void checkValue(PluginAccount& plugin, Findings& findings) {
    HKEY handle = nullptr;
    const WideString keyPath = toWide(vykel::pluginsKey + plugin.name);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS)
        return;
    const vybase::RegistryKey key(handle);
    DWORD type = 0;
    DWORD bytes = 64 << 10; // more than any path
    WideString data(bytes / sizeof(WCHAR), 0);
    const LSTATUS error = RegQueryValueExW(key.get(), toWide(vykel::pluginPathValue).c_str(), nullptr, &type,
                                           reinterpret_cast<BYTE*>(data.data()), &bytes);
    if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA)
        return;
    plugin.valueType = type;
    data.resize(std::min<std::size_t>(data.size(), bytes / sizeof(WCHAR)));
    if (bytes > 0 && data.find(WCHAR{0}) == WideString::npos)
        findings.push_back({&finding::valueUnterminated, plugin.name, ""});
}

/// Checks whether any user could change a thing of a plug-in, or of all plug-ins.
void checkWriters(const std::string& subject, const std::string& path, Guarded kind, Findings& findings) {
    static constexpr const char* things[] = {"file", "folder", "folder", "key"};
    const std::string writers = ordinaryWriters(path, kind);
    if (!writers.empty())
        findings.push_back({kind == Guarded::RegistryKey ? &finding::keyWritable : &finding::fileWritable,
                            subject,
                            concat("the ", things[static_cast<std::size_t>(kind)], " '", path,
                                   "' can be changed by ", writers)});
}

void checkWriters(const PluginAccount& plugin, Findings& findings) {
    checkWriters(plugin.name, vykel::pluginsKey + plugin.name, Guarded::RegistryKey, findings);
    if (!isAbsolutePath(*plugin.path) || isFolder(*plugin.path) || !isOrdinaryFile(*plugin.path))
        return;
    checkWriters(plugin.name, *plugin.path, Guarded::File, findings);
    // With its separator: without it, a drive would mean the current folder there.
    const std::string folder = plugin.path->substr(0, plugin.path->find_last_of("\\/") + 1);
    const bool exists = GetFileAttributesW(toWide(*plugin.path).c_str()) != INVALID_FILE_ATTRIBUTES;
    checkWriters(plugin.name, folder, exists ? Guarded::Folder : Guarded::FolderOfMissing, findings);
}

/// What paths of one file have in common.
std::string identityOf(const std::string& path) {
    std::string text = path;
    try {
        text = absolutePath(path);
        if (const std::string identity = fileIdentity(text); !identity.empty())
            text = identity;
    } catch (const Failure&) { // nothing but the path is known
    }
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

void checkSameFiles(std::vector<PluginAccount>& plugins, Findings& findings) {
    std::map<std::string, std::string> firstOf; // by path
    for (PluginAccount& plugin : plugins) {
        if (!plugin.path || plugin.path->empty() || plugin.path->size() > maxPathBytes)
            continue;
        const auto [first, isNew] = firstOf.emplace(identityOf(*plugin.path), plugin.name);
        plugin.isRepeated = !isNew;
        if (plugin.isRepeated)
            findings.push_back({&finding::pathDuplicate, plugin.name, "the same file as " + first->second});
    }
}

void checkNumbers(const std::vector<PluginAccount>& plugins, Findings& findings) {
    std::map<Json, std::vector<std::string>> holders; // of each number, and of none
    for (const PluginAccount& plugin : plugins) {
        if (plugin.isRepeated)
            continue; // its devices are those of another plug-in, not others
        for (std::size_t i = 0; i < plugin.devices.size(); ++i) {
            const Json& token = plugin.devices[i]["token"];
            const std::string text = token.is_null() ? "" : " '" + token.get<std::string>() + '\'';
            holders[plugin.devices[i]["number"]].push_back(concat(plugin.name, '[', i, ']', text));
        }
        if (const std::size_t missing = std::exchange(holders[nullptr], {}).size(); missing > 0)
            findings.push_back({&finding::numberMissing, plugin.name,
                                concat(missing, " of ", plugin.devices.size(), " devices")});
    }
    for (const auto& [number, devices] : holders)
        if (devices.size() > 1)
            findings.push_back(
                {&finding::numberDuplicate, concat("number ", number), joined(devices, ", "), 0,
                 concat(
                     "Look for plug-ins that report the same device, or that were copied with their stored "
                     "numbers. When they are different devices, run 'vykeldev renumber KEL",
                     number,
                     "': all but the first get numbers of their own. With --token and the token of a "
                     "device, that one keeps the number.")});
}

} // namespace

std::vector<PluginAccount> checkPlugins(const DoctorOptions& options, Findings& findings,
                                        Progress& progress) {
    std::vector<PluginAccount> plugins;
    const std::optional<std::uint32_t> count = countPlugins(findings);
    if (!count)
        return plugins;
    checkWriters(fullPluginsKey(), vykel::pluginsKey, Guarded::RegistryKey, findings);
    for (std::uint32_t i = 0; i < *count; ++i) {
        PluginAccount plugin{readRegistration(i)};
        if (!options.name.empty() && plugin.name != options.name)
            continue;
        if (plugin.error) {
            plugin.obstacle = {&finding::valueMissing, Step::RegistryValue, plugin.error->systemText};
            findings.push_back({&finding::valueMissing, plugin.name, plugin.error->systemText});
        } else {
            progress.show(concat("probing plug-in ", i + 1, " of ", *count, ": ", plugin.name));
            checkValue(plugin, findings);
            examine(plugin, options, findings);
            checkWriters(plugin, findings);
        }
        plugins.push_back(std::move(plugin));
    }
    if (!options.name.empty() && plugins.empty())
        throw Failure("no plug-in is registered as '" + printable(options.name) + "'", "",
                      "'vykeldev plugins' shows the names.");
    checkSameFiles(plugins, findings);
    checkNumbers(plugins, findings);
    return plugins;
}

} // namespace vykeldev::doctor
