#include "PellumKelPluginManager.h"

#include "PluginRegistrations.h"
#include <cstdint>

namespace vykel {

namespace {

/// Unloads and destroys a plug-in that the manager does not keep.
struct UnloadAndDelete {
    void operator()(PellumKelPlugin* plugin) const noexcept {
        plugin->unload();
        delete plugin;
    }
};

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
            plugins.emplace_back(); // first: from the release on nothing may throw
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
