#include "PluginRegistrations.h"

#include "errors/ScopedStatus.h"
#include "vysys/windowsRegistry.h"
#include <algorithm>

namespace vykel {

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

std::string pluginPath(const std::string& name) {
    vyerr::ScopedStatus status;
    vysys::Utf8Vector value;
    vysys::readStringValue((pluginsKey + name + "\\").c_str(), pluginPathValue, value, *status);
    status.check();
    return {value.begin(), std::find(value.begin(), value.end(), '\0')};
}

} // namespace vykel
