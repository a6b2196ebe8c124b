#ifndef WINHOST_REGISTRYKEY_H
#define WINHOST_REGISTRYKEY_H

#include "winhost/types.h"
#include <string>
#include <string_view>
#include <vector>

namespace winhost {

/// A value of a key.
struct RegistryValue {
    std::u16string name; ///< empty for the key's default value
    DWORD type = 0;
    std::vector<BYTE> bytes; ///< as stored: a text need not be terminated
};

/// A key with everything below it. Names compare without regard to case. A path is names joined by
/// backslashes; empty names are skipped. Operations may throw std::bad_alloc.
class RegistryKey {
public:
    /// A key without content.
    explicit RegistryKey(std::u16string_view name = {});

    /// The name as it was given; empty for the root.
    const std::u16string& name() const noexcept { return givenName; }
    /// The direct subkeys, sorted by name.
    const std::vector<RegistryKey>& subkeys() const noexcept { return children; }
    /// The values, in the order in which they were added.
    const std::vector<RegistryValue>& values() const noexcept { return entries; }

    /// The key at `path` below this one; this one for an empty path; null when there is none.
    const RegistryKey* find(std::u16string_view path) const;
    /// The same, but creates the keys that are missing. Valid until the next create or remove.
    RegistryKey& create(std::u16string_view path);
    /// Removes the key at `path` and everything below it. False when there is no such key, and for an empty
    /// path.
    bool remove(std::u16string_view path);

    /// The value of that name, or null.
    const RegistryValue* findValue(std::u16string_view name) const;
    /// Adds a value, or replaces the one of that name.
    void setValue(RegistryValue value);

private:
    using Subkeys = std::vector<RegistryKey>;
    Subkeys::const_iterator position(const std::u16string& folded) const noexcept;

    std::u16string givenName;
    std::u16string foldedName; ///< for sorting and comparing
    Subkeys children;
    std::vector<RegistryValue> entries;
};

} // namespace winhost

#endif
