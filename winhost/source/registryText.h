#ifndef WINHOST_REGISTRYTEXT_H
#define WINHOST_REGISTRYTEXT_H

#include "RegistryKey.h"
#include <string>
#include <string_view>

namespace winhost {

/// Adds the content of a registry editor's file to `root`, whose subkeys are HKEY_LOCAL_MACHINE and the like.
/// A line that can't be understood is skipped. False when the format's first line is missing. May throw
/// std::bad_alloc.
bool parseRegistry(std::string_view bytes, RegistryKey& root);

/// The registry as such a file: ASCII while that suffices, else UTF-16LE with its mark, since Windows takes
/// no UTF-8. May throw std::bad_alloc.
std::string formatRegistry(const RegistryKey& root);

} // namespace winhost

#endif
