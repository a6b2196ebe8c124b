#ifndef WINHOST_REGISTRYKEY_H
#define WINHOST_REGISTRYKEY_H

#include "winhost/types.h"
#include <string>
#include <string_view>
#include <vector>

namespace winhost {

struct RegistryValue {
    std::u16string name; ///< empty for the key's default value
    DWORD type = 0;
    std::vector<BYTE> bytes; ///< as stored: a text need not be terminated
};

/// A key with everything below it. Names compare without regard to case; a path is names joined by
/// backslashes, of which empty ones don't count. Operations may throw std::bad_alloc.
class RegistryKey {
public:
    explicit RegistryKey(std::u16string_view name = {});

    const std::u16string& name() const noexcept { return name_; }
    const std::vector<RegistryKey>& subkeys() const noexcept { return subkeys_; } ///< sorted
    const std::vector<RegistryValue>& values() const noexcept { return values_; } ///< in the order they came

    /// The key below this one at `path`, itself for an empty path; null when there is none.
    const RegistryKey* find(std::u16string_view path) const;
    /// The same, making each key on the way that is missing. Good until the next create or remove.
    RegistryKey& create(std::u16string_view path);
    /// Removes the key at `path` and all below it; for an empty path, all that this key holds. False: no such
    /// key.
    bool remove(std::u16string_view path);

    const RegistryValue* findValue(std::u16string_view name) const;
    /// Adds a value or replaces the one of that name in its place.
    void setValue(RegistryValue value);
    bool removeValue(std::u16string_view name);

private:
    using Subkeys = std::vector<RegistryKey>;
    Subkeys::const_iterator position(const std::u16string& folded) const noexcept;

    std::u16string name_;
    std::u16string folded_; // what names are sorted and compared by
    Subkeys subkeys_;
    std::vector<RegistryValue> values_;
};

} // namespace winhost

#endif
