#include "check/Checks.h"
#include "check/Session.h"
#include "Text.h"
#include <algorithm>

namespace vykeldev::check {
namespace {

constexpr std::uint32_t formats[] = {1, 2};

std::string name(const char* operation, std::size_t device) {
    return std::string(operation) + " of device " + std::to_string(device);
}

void mustBeUtf8(const PluginText& text, const std::string& what) {
    const bool valid = !text || text->empty() ||
                       MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text->data(),
                                           static_cast<int>(text->size()), nullptr, 0) != 0;
    if (!valid)
        throw Broken{what + " is no valid UTF-8: " + quoted(text)};
}

std::vector<PluginText> tokensOf(const List& list) {
    std::vector<PluginText> tokens;
    for (const Device& device : devicesOf(list)) {
        for (const std::uint32_t format : formats)
            tokens.push_back(device.getPersistentToken(format));
    }
    return tokens;
}

/// The first difference between two that differ.
std::string difference(const std::vector<PluginText>& before, const std::vector<PluginText>& after) {
    if (before.size() != after.size())
        return "other devices";
    const auto [one, other] = std::mismatch(before.begin(), before.end(), after.begin());
    return "first " + quoted(*one) + ", then " + quoted(*other);
}

/// Finds a device again by its token.
Device find(const List& list, const PluginText& token) {
    for (const Device& device : devicesOf(list)) {
        if (device.getPersistentToken(1) == token)
            return device;
    }
    throw Skipped{"the device " + quoted(token) + " has gone meanwhile"};
}

/// Something that can be set on a device; `Value` is compared, `show` makes it a text.
template <class Value>
struct Property {
    const char* name;
    Value (Device::*read)() const;
    std::int32_t (*write)(const Device&, const Value&);
    std::string (*show)(const Value&);
};

template <class Value>
void mustRead(const Property<Value>& property, const Device& device, const Value& expected,
              const std::string& when) {
    const Value found = (device.*property.read)();
    if (!(found == expected))
        throw Broken{std::string(property.name) + " was set to " + property.show(expected) + ", and " + when +
                     " it is " + property.show(found)};
}

/// Sets the property of one device, and reads it back: from the device, from a list that was there before,
/// and after the plug-in was loaded again.
template <class Value>
void setAndReadBack(const Subject& subject, const Property<Value>& property, const PluginText& token,
                    const Value& value) {
    {
        const Session session(subject);
        const List other = session.plugin.makeList();
        refresh(other);
        const Device device = find(session.list, token);
        const std::int32_t code = property.write(device, value);
        if (code < 0)
            throw Broken{
                "setting " + std::string(property.name) + " was refused with " + std::to_string(code), true};
        mustRead(property, device, value, "read from the same device");
        mustRead(property, find(other, token), value, "read from another list");
    }
    const Session later(subject);
    mustRead(property, find(later.list, token), value, "after the plug-in was loaded again");
}

/// Gives the property its old value again. False when that does not work.
template <class Value>
bool putBack(const Subject& subject, const Property<Value>& property, const PluginText& token,
             const Value& old) {
    const Session session(subject);
    const Device device = find(session.list, token);
    property.write(device, old);
    return (device.*property.read)() == old;
}

/// The whole rule: as above, and the old value put back whatever came out.
template <class Value>
void mustKeep(const Subject& subject, const Property<Value>& property, const PluginText& token,
              const Value& old, const Value& value) {
    const std::string notPutBack = "the old one, " + property.show(old) + ", could not be put back";
    try {
        setAndReadBack(subject, property, token, value);
    } catch (Broken& broken) {
        if (!putBack(subject, property, token, old))
            broken.observed += "; " + notPutBack;
        throw;
    } catch (const Skipped&) {
        putBack(subject, property, token, old);
        throw;
    }
    if (!putBack(subject, property, token, old))
        throw Broken{std::string(property.name) + " was set, and then " + notPutBack};
}

} // namespace

void checkTokenPresent(const Subject& subject) {
    const Session session(subject);
    const std::vector<PluginText> tokens = tokensOf(session.list);
    const auto missing = std::find(tokens.begin(), tokens.end(), std::nullopt) - tokens.begin();
    const auto index = static_cast<std::size_t>(missing);
    if (index < tokens.size())
        throw Broken{name("getPersistentToken", index / 2) + " in format " +
                     std::to_string(formats[index % 2]) + " is null"};
}

void checkTokenStable(const Subject& subject) {
    constexpr int attempts = 3; // devices may come and go, but not every time
    std::string change;
    for (int i = 0; i < attempts; ++i) {
        const std::vector<PluginText> before = tokensOf(Session(subject).list);
        const Session session(subject); // loaded again
        const std::vector<PluginText> after = tokensOf(session.list);
        refresh(session.list);
        const std::vector<PluginText> later = tokensOf(session.list);
        if (before == after && after == later)
            return;
        change = before != after ? difference(before, after) : difference(after, later);
    }
    throw Broken{"the tokens differ each time that the devices are listed: " + change};
}

void checkTextsUtf8(const Subject& subject) {
    const Session session(subject);
    const std::vector<Device> devices = devicesOf(session.list);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        for (const std::uint32_t format : formats)
            mustBeUtf8(devices[i].getPersistentToken(format), name("getPersistentToken", i));
        mustBeUtf8(devices[i].getAlias(), name("getAlias", i));
    }
}

void checkNumberKept(const Subject& subject) {
    static constexpr Property<std::uint32_t> property = {
        "the number", &Device::getNumber,
        [](const Device& device, const std::uint32_t& number) { return device.setNumber(number); },
        [](const std::uint32_t& number) {
            return number == vykel::noDeviceNumber ? "none" : std::to_string(number);
        }};
    std::optional<std::uint32_t> old;
    PluginText token;
    std::uint32_t unused = 0;
    {
        const Session session(subject);
        for (const Device& device : devicesOf(session.list)) {
            const std::uint32_t number = device.getNumber();
            if (number == vykel::noDeviceNumber)
                continue;
            unused = std::max(unused, number + 1);
            if (!old) {
                old = number;
                token = device.getPersistentToken(1);
            }
        }
    }
    // A number that is given for the check alone could not be taken back.
    if (!old)
        throw Skipped{"no device has a number yet; register the plug-in and let 'vykeldev list' number them"};
    if (unused == vykel::noDeviceNumber)
        throw Skipped{"the highest number is in use"};
    mustKeep(subject, property, token, *old, unused);
}

void checkAliasKept(const Subject& subject) {
    static constexpr Property<PluginText> property = {
        "the alias", &Device::getAlias,
        [](const Device& device, const PluginText& alias) { return device.setAlias(*alias); }, quoted};
    PluginText old;
    PluginText token;
    {
        const Session session(subject);
        for (const Device& device : devicesOf(session.list)) {
            old = device.getAlias();
            token = device.getPersistentToken(1);
            if (old)
                break;
        }
    }
    if (!old)
        throw Skipped{"no device takes an alias"};
    mustKeep(subject, property, token, old, PluginText("vykeldev check \xC3\xA4\xE2\x82\xAC"));
}

} // namespace vykeldev::check
