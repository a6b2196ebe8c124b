#include "PellumKelPluginManager.h"

#include "errors/ScopedStatus.h"
#include "vysys/windowsRegistry.h"
#include <algorithm>

namespace vykel {

namespace {

/// Unloads a plug-in that does not make it into the manager before it is destroyed.
struct UnloadAndDelete {
    void operator()(PellumKelPlugin* plugin) const noexcept {
        plugin->unload();
        delete plugin;
    }
};

std::uint32_t countPlugins() {
    vyerr::ScopedStatus status;
    const std::uint32_t count = vysys::countSubkeys(pluginsKey, *status);
    status.check();
    return count;
}

std::string pluginName(std::uint32_t index) {
    vyerr::ScopedStatus status;
    vysys::Utf8Vector name;
    vysys::getSubkeyName(pluginsKey, index, name, *status);
    status.check();
    return {name.begin(), name.end()};
}

/// The path is the value up to its first 0; nothing else is done to it.
std::string pluginPath(const std::string& name) {
    vyerr::ScopedStatus status;
    vysys::Utf8Vector value;
    vysys::readStringValue((pluginsKey + name + "\\").c_str(), pluginPathValue, value, *status);
    status.check();
    return {value.begin(), std::find(value.begin(), value.end(), '\0')};
}

std::unique_ptr<PellumKelPlugin, UnloadAndDelete> loadPlugin(std::uint32_t index) {
    std::unique_ptr<PellumKelPlugin, UnloadAndDelete> plugin(
        new PellumKelPlugin(pluginPath(pluginName(index))));
    plugin->load();
    return plugin;
}

} // namespace

void PellumKelPluginManager::loadAll() {
    const std::uint32_t count = countPlugins();
    plugins.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        try {
            auto plugin = loadPlugin(i);
            plugins.emplace_back();
            plugins.back().reset(plugin.release());
        } catch (...) {
            // One bad plug-in must not keep the others from a client.
        }
    }
}

void PellumKelPluginManager::unloadAll() noexcept {
    for (const auto& plugin : plugins)
        plugin->unload();
    for (auto& plugin : plugins)
        plugin.reset();
    plugins.clear();
}

void PellumKelPluginManager::getDeviceLists(std::vector<DeviceListPtr>& lists) {
    for (const auto& plugin : plugins) {
        try {
            if (DeviceListPtr list = plugin->getInterface())
                lists.push_back(std::move(list));
        } catch (...) {
            // This plug-in has no list this time.
        }
    }
}

} // namespace vykel
