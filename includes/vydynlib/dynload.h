#ifndef VYDYNLIB_DYNLOAD_H
#define VYDYNLIB_DYNLOAD_H

#include "errors/Status.h"
#include "vytpl/NonCopyable.h"
#include <windows.h>

/// Loading of dynamic libraries. Nothing throws. The functions record a failure in the Status as
/// InvalidParameter, with the path or symbol and the system's code and text; loadLibrary also MemoryFull.
/// They do nothing while the Status holds an error. Any thread may call.
namespace vydynlib {

/// Loads a library by its UTF-8 path, in the system's standard search order. Returns the module, or null.
/// The caller frees each loading once; see LibraryHandle.
HMODULE loadLibrary(const char* path, vyerr::Status& status) noexcept;

/// The address of an exported function, or null.
FARPROC getSymbol(HMODULE module, const char* name, vyerr::Status& status) noexcept;

/// Owns one loading of a library. One thread uses it.
class LibraryHandle : private vytpl::NonCopyableT<LibraryHandle> {
public:
    LibraryHandle() noexcept = default;
    ~LibraryHandle() { unload(); }

    /// Unloads the library that it holds, and takes over `loaded`, which may be null.
    void reset(HMODULE loaded) noexcept {
        unload();
        module = loaded;
    }

    /// Frees the library when one is held.
    void unload() noexcept;

    /// Forgets the library without freeing it: it stays loaded for the life of the process.
    void abandon() noexcept { module = nullptr; }

    /// The module, or null; it stays owned here.
    HMODULE get() const noexcept { return module; }

private:
    HMODULE module = nullptr;
};

} // namespace vydynlib

#endif
