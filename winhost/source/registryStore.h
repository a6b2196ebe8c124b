#ifndef WINHOST_REGISTRYSTORE_H
#define WINHOST_REGISTRYSTORE_H

#include "RegistryKey.h"
#include <functional>
#include <memory>

namespace winhost {

/// The registry at one moment, shared by all who read it.
using RegistrySnapshot = std::shared_ptr<const RegistryKey>;

/// The registry as its file is now: the root above HKEY_LOCAL_MACHINE, which always exists. Null when the
/// file lacks the format's first line. May be called by any thread. May throw std::bad_alloc.
RegistrySnapshot registrySnapshot();

/// Changes the registry: `change` works on a copy, which replaces the file in one step when `change` returns
/// 0. The changes of all processes run one after the other. Returns what `change` returned, or the Windows
/// error of a step that failed. May throw std::bad_alloc.
LSTATUS changeRegistry(const std::function<LSTATUS(RegistryKey& root)>& change);

} // namespace winhost

#endif
