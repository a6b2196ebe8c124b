#ifndef WINHOST_REGISTRYTEXT_H
#define WINHOST_REGISTRYTEXT_H

#include "RegistryKey.h"
#include <string>
#include <string_view>

namespace winhost {

/// Adds the content of a file of the registry editor to `root`, whose subkeys are HKEY_LOCAL_MACHINE and the
/// like. Skips a line that it does not understand. False when the format's first line is missing. May throw
/// std::bad_alloc.
bool parseRegistry(std::string_view bytes, RegistryKey& root);

/// The registry as such a file: in ASCII if possible, else in UTF-16LE with a byte-order mark, because
/// Windows does not read UTF-8. May throw std::bad_alloc.
std::string formatRegistry(const RegistryKey& root);

} // namespace winhost

#endif
