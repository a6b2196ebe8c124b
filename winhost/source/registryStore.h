#ifndef WINHOST_REGISTRYSTORE_H
#define WINHOST_REGISTRYSTORE_H

#include "RegistryKey.h"
#include <functional>
#include <memory>

namespace winhost {

using RegistrySnapshot = std::shared_ptr<const RegistryKey>;

/// The registry as its file holds it now: the root above HKEY_LOCAL_MACHINE, which is always there. Null when
/// the file lacks the format's first line. Any thread may call it; may throw std::bad_alloc.
RegistrySnapshot registrySnapshot();

/// Changes the registry: `change` works on a copy that replaces the file in one step when it returns 0. All
/// processes' changes run one after the other. Returns what `change` returned, or a Windows error of its own;
/// may throw std::bad_alloc.
LSTATUS changeRegistry(const std::function<LSTATUS(RegistryKey& root)>& change);

} // namespace winhost

#endif
