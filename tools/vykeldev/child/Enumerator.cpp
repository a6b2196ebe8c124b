#include "child/Enumerator.h"

#include "output/Failures.h"
#include "system/DisplayText.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"
#include "system/ToolCommand.h"

namespace vykeldev {

std::string defaultLibraryPath() {
    const std::string tool = modulePath(nullptr);
    if (tool.empty()) // a library in the working folder could be anybody's
        throw systemFailure("finding the folder of this tool", GetLastError(),
                            "Give the path of the library with --library.");
    return tool.substr(0, tool.find_last_of("\\/") + 1) + libraryFileName;
}

template <class Function>
Function* Enumerator::resolve(const char* name) const {
    const FARPROC address = GetProcAddress(module.get(), name);
    if (address == nullptr) {
        throw systemFailure("finding '" + std::string(name) + "' in '" + printable(path) + "'",
                            GetLastError(), "Give the path of a vykeldevenum library with --library.");
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
}

Enumerator::Enumerator(const std::string& library) : path(absolutePath(library)) {
    module.reset(LoadLibraryExW(toWide(path).c_str(), nullptr, 0));
    if (!module) {
        throw systemFailure(
            "loading '" + printable(path) + "'", GetLastError(),
            "Put the vykeldevenum library beside this tool, or give its path with --library.");
    }
    auto* const initialize = resolve<decltype(vykeldevenum_initialize)>("vykeldevenum_initialize");
    getAllKelDevices = resolve<decltype(vykeldevenum_getAllKelDevices)>("vykeldevenum_getAllKelDevices");
    finalize = resolve<decltype(vykeldevenum_finalize)>("vykeldevenum_finalize");
    const std::int32_t code = initialize();
    if (code < 0)
        throw statusFailure("initialising the library", code);
}

Enumerator::~Enumerator() {
    finalize();
}

vykel::DeviceListPtr Enumerator::makeList() const {
    vykel::IDeviceList* list = nullptr;
    const std::int32_t code = getAllKelDevices(0, &list);
    if (code < 0)
        throw statusFailure("making a device list", code);
    return vykel::DeviceListPtr(list);
}

} // namespace vykeldev
