#ifndef TESTS_LOADEDLIBRARY_H
#define TESTS_LOADEDLIBRARY_H

#include "support/Platform.h"
#include "vykel/IDeviceList.h"
#include <memory>
#include <windows.h>

namespace vykeltest {

struct ReleaseList {
    void operator()(vykel::IDeviceList* list) const { list->release(); }
};
using ListPtr = std::unique_ptr<vykel::IDeviceList, ReleaseList>;

/// Refreshes a list; returns the code.
inline std::int32_t refresh(vykel::IDeviceList& list) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    list.refresh(&status);
    return status.code;
}

/// An exported function of a loaded library; null when it has none of that name.
struct Symbol {
    FARPROC address;
    template <class Function>
    operator Function*() const {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
    }
};

/// The library under test, loaded and unloaded as a client does it.
class LoadedLibrary {
    const HMODULE module =
        LoadLibraryExW((programFolder() / libraryFile).string<WCHAR>().c_str(), nullptr, 0);

public:
    LoadedLibrary() = default;
    ~LoadedLibrary() { FreeLibrary(module); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    std::int32_t (*const initialize)() = Symbol{GetProcAddress(module, "vykeldevenum_initialize")};
    std::int32_t (*const getAllKelDevices)(std::int32_t version, vykel::IDeviceList** list) = Symbol{
        GetProcAddress(module, "vykeldevenum_getAllKelDevices")};
    std::int32_t (*const finalize)() = Symbol{GetProcAddress(module, "vykeldevenum_finalize")};

    /// A new list. Throws the code when none can be made.
    ListPtr newList() const {
        vykel::IDeviceList* list = nullptr;
        if (const std::int32_t code = getAllKelDevices(0, &list); code < 0)
            throw code;
        return ListPtr(list);
    }
};

} // namespace vykeltest

#endif
