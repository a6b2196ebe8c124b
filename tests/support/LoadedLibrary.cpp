#include "support/LoadedLibrary.h"

namespace vykeltest {

LoadedLibrary::LoadedLibrary()
    : module(LoadLibraryExW((programFolder() / libraryFile).string<WCHAR>().c_str(), nullptr, 0)),
      initialize(symbolOf<decltype(initialize)>(module, "vykeldevenum_initialize")),
      getAllKelDevices(symbolOf<decltype(getAllKelDevices)>(module, "vykeldevenum_getAllKelDevices")),
      finalize(symbolOf<decltype(finalize)>(module, "vykeldevenum_finalize")) {}

ListPtr LoadedLibrary::newList() const {
    vykel::IDeviceList* list = nullptr;
    if (const std::int32_t code = getAllKelDevices(0, &list); code < 0)
        throw code;
    return ListPtr(list);
}

std::int32_t refresh(vykel::IDeviceList& list) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    list.refresh(&status);
    return status.code;
}

} // namespace vykeltest
