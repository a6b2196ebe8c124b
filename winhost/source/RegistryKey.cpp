#include "RegistryKey.h"

#include "textConversion.h"
#include <algorithm>

namespace winhost {

namespace {

/// Removes the first name from a path and returns it; empty at the end.
std::u16string_view takeName(std::u16string_view& path) noexcept {
    path.remove_prefix(std::min(path.find_first_not_of(u'\\'), path.size()));
    const std::u16string_view name = path.substr(0, path.find(u'\\'));
    path.remove_prefix(name.size());
    return name;
}

} // namespace

RegistryKey::RegistryKey(std::u16string_view name) : givenName(name), foldedName(upperCase(name)) {}

RegistryKey::Subkeys::const_iterator RegistryKey::position(const std::u16string& folded) const noexcept {
    return std::lower_bound(
        children.begin(), children.end(), folded,
        [](const RegistryKey& key, const std::u16string& name) { return key.foldedName < name; });
}

const RegistryKey* RegistryKey::find(std::u16string_view path) const {
    const RegistryKey* key = this;
    for (std::u16string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        const std::u16string folded = upperCase(name);
        const auto found = key->position(folded);
        if (found == key->children.end() || found->foldedName != folded)
            return nullptr;
        key = &*found;
    }
    return key;
}

RegistryKey& RegistryKey::create(std::u16string_view path) {
    RegistryKey* key = this;
    for (std::u16string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        RegistryKey subkey(name);
        const auto found = key->position(subkey.foldedName);
        const auto at = key->children.begin() + (found - key->children.begin());
        const bool exists = at != key->children.end() && at->foldedName == subkey.foldedName;
        key = exists ? &*at : &*key->children.insert(at, std::move(subkey));
    }
    return *key;
}

bool RegistryKey::remove(std::u16string_view path) {
    RegistryKey* parent = nullptr;
    RegistryKey* key = this;
    for (std::u16string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        const RegistryKey* const found = key->find(name);
        if (found == nullptr)
            return false;
        parent = key;
        key = &key->children[static_cast<std::size_t>(found - key->children.data())];
    }
    if (parent != nullptr)
        parent->children.erase(parent->children.begin() + (key - parent->children.data()));
    return parent != nullptr;
}

const RegistryValue* RegistryKey::findValue(std::u16string_view name) const {
    const std::u16string folded = upperCase(name);
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const RegistryValue& value) {
        return upperCase(value.name) == folded;
    });
    return found == entries.end() ? nullptr : &*found;
}

void RegistryKey::setValue(RegistryValue value) {
    const RegistryValue* const found = findValue(value.name);
    if (found == nullptr)
        entries.push_back(std::move(value));
    else
        entries[static_cast<std::size_t>(found - entries.data())] = std::move(value);
}

} // namespace winhost
