#include "PellumKelPlugin.h"

#include "errors/Exception.h"
#include "errors/ScopedStatus.h"
#include <utility>

namespace vykel {

namespace {

constexpr vyerr::RaiseSite notInitializedSite{__FILE__, 31};
constexpr vyerr::RaiseSite getInterfaceSite{__FILE__, 38};
constexpr vyerr::RaiseSite initializeSite{__FILE__, 54};

} // namespace

PellumKelPlugin::PellumKelPlugin(std::string libraryPath) : path(std::move(libraryPath)) {}

PellumKelPlugin::~PellumKelPlugin() {
    library.abandon();
}

template <class Function>
void PellumKelPlugin::resolve(Function& function, const char* name) {
    vyerr::ScopedStatus status;
    // Through an untyped function pointer: the compilers warn of a direct cast between unlike signatures.
    using AnyFunction = void (*)();
    const FARPROC symbol = vydynlib::getSymbol(library.get(), name, *status);
    function = reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(symbol));
    status.check();
}

void PellumKelPlugin::load() {
    loadLibrary();
    resolveEntryPoints();
    initialize();
}

void PellumKelPlugin::loadLibrary() {
    vyerr::ScopedStatus status;
    library.reset(vydynlib::loadLibrary(path.c_str(), *status));
    status.check();
}

void PellumKelPlugin::resolveEntryPoints() {
    resolve(getPluginInterface, "vykel_getPluginInterface");
    resolve(initializePlugin, "vykel_initializePlugin");
    resolve(finalizePlugin, "vykel_finalizePlugin");
}

void PellumKelPlugin::initialize() {
    const std::int32_t result = callPlugin([this] { return initializePlugin(); });
    if (result < 0)
        vyerr::raiseError(result, vyerr::constant::deviceEnumeration, initializeSite);
    initialized = true;
}

DeviceListPtr PellumKelPlugin::getInterface() {
    if (!initialized || getPluginInterface == nullptr)
        vyerr::raiseError(StatusCode::PluginNotInitialized, vyerr::constant::deviceEnumeration,
                          notInitializedSite);
    IDeviceList* list = nullptr;
    const std::int32_t result = callPlugin([&] { return getPluginInterface(0, &list); });
    if (result < 0)
        vyerr::raiseError(result, vyerr::constant::deviceEnumeration, getInterfaceSite);
    return DeviceListPtr(list);
}

void PellumKelPlugin::unload() noexcept {
    if (initialized)
        callPluginQuietly([this] { finalizePlugin(); });
    initialized = false;
    getPluginInterface = nullptr;
    initializePlugin = nullptr;
    finalizePlugin = nullptr;
    library.unload();
}

} // namespace vykel
