#ifndef VYKELDEVENUM_PLUGINREGISTRATIONS_H
#define VYKELDEVENUM_PLUGINREGISTRATIONS_H

#include <cstdint>
#include <string>

/// The plug-ins registered on the machine, as the library reads them. All texts are UTF-8. Every function
/// throws ResourceNotFound when the registry does not hold what is asked for, and MemoryFull. Any thread.
namespace vykel {

/// The registry key below HKEY_LOCAL_MACHINE with one subkey per plug-in.
constexpr const char* pluginsKey = "SOFTWARE\\Morvance\\VY-KEL\\Plugins\\";

/// The value of such a subkey that holds the path of the plug-in's library.
constexpr const char* pluginPathValue = "EnumeratorPluginPath";

/// Number of registered plug-ins.
std::uint32_t countPlugins();

/// The name of a plug-in's subkey. Plug-ins are loaded in the order of `index`, from 0.
std::string pluginName(std::uint32_t index);

/// The path of a plug-in's library: the value up to its first 0, otherwise unchanged.
std::string pluginPath(const std::string& name);

} // namespace vykel

#endif
