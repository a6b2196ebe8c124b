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

/// An exported function of a loaded library; null when it has none of that name.
template <class Function>
Function symbolOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

/// The library under test, loaded and unloaded as a client does it.
class LoadedLibrary {
public:
    LoadedLibrary();
    ~LoadedLibrary() { FreeLibrary(module); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

private:
    HMODULE module;

public:
    std::int32_t (*const initialize)();
    std::int32_t (*const getAllKelDevices)(std::int32_t version, vykel::IDeviceList** list);
    std::int32_t (*const finalize)();

    /// A new list. Throws the code when none can be made.
    ListPtr newList() const;
};

/// Refreshes a list; returns the code.
std::int32_t refresh(vykel::IDeviceList& list);

} // namespace vykeltest

#endif
