#ifndef WINHOST_REGISTRYSTORE_H
#define WINHOST_REGISTRYSTORE_H

#include "RegistryKey.h"
#include <functional>
#include <memory>

namespace winhost {

using RegistrySnapshot = std::shared_ptr<const RegistryKey>;

/// The registry as its file is now: the root above HKEY_LOCAL_MACHINE, which always exists. Null when the
/// file lacks the format's first line. May be called by any thread. May throw std::bad_alloc.
RegistrySnapshot registrySnapshot();

/// Changes the registry: `change` works on a copy, which replaces the file in one step when `change` returns
/// 0. The changes of all processes run one after the other. Returns what `change` returned, or a Windows
/// error of its own. May throw std::bad_alloc.
LSTATUS changeRegistry(const std::function<LSTATUS(RegistryKey& root)>& change);

} // namespace winhost

#endif
