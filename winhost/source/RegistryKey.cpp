#include "RegistryKey.h"
#include "textConversion.h"
#include <algorithm>

namespace winhost {

namespace {

/// Takes the first name off a path; empty at its end.
std::u16string_view takeName(std::u16string_view& path) noexcept {
    path.remove_prefix(std::min(path.find_first_not_of(u'\\'), path.size()));
    const std::u16string_view name = path.substr(0, path.find(u'\\'));
    path.remove_prefix(name.size());
    return name;
}

} // namespace

RegistryKey::RegistryKey(std::u16string_view name) : name_(name), folded_(upperCase(name)) {}

RegistryKey::Subkeys::const_iterator RegistryKey::position(const std::u16string& folded) const noexcept {
    return std::lower_bound(
        subkeys_.begin(), subkeys_.end(), folded,
        [](const RegistryKey& key, const std::u16string& name) { return key.folded_ < name; });
}

const RegistryKey* RegistryKey::find(std::u16string_view path) const {
    const RegistryKey* key = this;
    for (std::u16string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        const std::u16string folded = upperCase(name);
        const auto found = key->position(folded);
        if (found == key->subkeys_.end() || found->folded_ != folded)
            return nullptr;
        key = &*found;
    }
    return key;
}

RegistryKey& RegistryKey::create(std::u16string_view path) {
    RegistryKey* key = this;
    for (std::u16string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        RegistryKey subkey(name);
        const auto found = key->position(subkey.folded_);
        const auto at = key->subkeys_.begin() + (found - key->subkeys_.begin());
        const bool exists = at != key->subkeys_.end() && at->folded_ == subkey.folded_;
        key = exists ? &*at : &*key->subkeys_.insert(at, std::move(subkey));
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
        key = &key->subkeys_[static_cast<std::size_t>(found - key->subkeys_.data())];
    }
    if (parent == nullptr) {
        subkeys_.clear();
        values_.clear();
    } else {
        parent->subkeys_.erase(parent->subkeys_.begin() + (key - parent->subkeys_.data()));
    }
    return true;
}

const RegistryValue* RegistryKey::findValue(std::u16string_view name) const {
    const std::u16string folded = upperCase(name);
    const auto found = std::find_if(values_.begin(), values_.end(), [&](const RegistryValue& value) {
        return upperCase(value.name) == folded;
    });
    return found == values_.end() ? nullptr : &*found;
}

void RegistryKey::setValue(RegistryValue value) {
    const RegistryValue* const found = findValue(value.name);
    if (found == nullptr)
        values_.push_back(std::move(value));
    else
        values_[static_cast<std::size_t>(found - values_.data())] = std::move(value);
}

bool RegistryKey::removeValue(std::u16string_view name) {
    const RegistryValue* const found = findValue(name);
    if (found != nullptr)
        values_.erase(values_.begin() + (found - values_.data()));
    return found != nullptr;
}

} // namespace winhost
