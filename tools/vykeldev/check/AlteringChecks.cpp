#include "check/Checks.h"
#include "check/Session.h"
#include "check/Trace.h"
#include <algorithm>
#include <map>

namespace vykeldev::check {
namespace {

/// Something that can be set on a device, as a text; none when it is not set.
struct Property {
    const char* name;
    const char* none; ///< When no device has it: what to do.
    std::string (*newValue)(const std::vector<Device>&);
    PluginText (*read)(const Device&);
    std::int32_t (*write)(const Device&, const std::string&);
};

/// What is altered for a moment: the notes of the rules about numbers and aliases.
struct Alteration {
    std::string token; ///< Quoted.
    std::string before;
    std::string value;
};

/// Finds a device again by its token.
Device find(const List& list, const std::string& token) {
    for (const Device& device : devicesOf(list))
        if (quotedText(device.getPersistentToken(1)) == token)
            return device;
    throw Skipped("the device ", token, " is no longer there");
}

void mustRead(const Property& property, const Device& device, const std::string& expected, const char* when) {
    const PluginText found = property.read(device);
    if (found != expected)
        throw Broken(property.name, " was set to ", quotedText(expected), ", and ", when, " it is ",
                     quotedText(found));
}

/// Sets the property of one device, and reads it back from the device and from a list that existed before.
void alter(const Subject& subject, const Session& session, const Property& property,
           const Alteration& alteration) {
    const List other = session.plugin.makeList();
    refresh(other);
    const Device device = find(session.list, alteration.token);
    subject.trace.note({alteration.token, alteration.before, alteration.value});
    const std::int32_t code = property.write(device, alteration.value);
    if (code < 0)
        throw Questionable("setting ", property.name, " was refused with ", code);
    mustRead(property, device, alteration.value, "read from the same device");
    mustRead(property, find(other, alteration.token), alteration.value, "read from another list");
}

/// Reads the property in a later process, and restores its old value.
void putBack(const Subject& subject, const Property& property) {
    const Alteration alteration{subject.notes.at(0), subject.notes.at(1), subject.notes.at(2)};
    const Session session(subject);
    const Device device = find(session.list, alteration.token);
    const PluginText kept = property.read(device);
    property.write(device, alteration.before);
    const List later = session.plugin.makeList();
    refresh(later);
    if (property.read(find(later, alteration.token)) == alteration.before)
        subject.trace.putBack();
    if (subject.stage == Stage::Second && kept != alteration.value)
        throw Broken(property.name, " was set to ", quotedText(alteration.value),
                     ", and in a new process it is ", quotedText(kept));
}

/// The first device with a token of its own whose property is set; null when there is none.
const Device* findAlterable(const std::vector<Device>& devices, const Property& property) {
    std::map<PluginText, int> count;
    for (const Device& device : devices)
        ++count[device.getPersistentToken(1)];
    const auto isAlterable = [&](const Device& device) {
        const PluginText token = device.getPersistentToken(1);
        const PluginText value = property.read(device);
        return count[token] == 1 && value && !value->empty() && isUtf8(value) &&
               quotedText(token).size() + value->size() <= maxNoteBytes;
    };
    const auto found = std::find_if(devices.begin(), devices.end(), isAlterable);
    return found == devices.end() ? nullptr : &*found;
}

/// A number that no device of these has.
std::string unusedNumber(const std::vector<Device>& devices) {
    std::uint32_t unused = 0;
    for (const Device& device : devices) {
        const std::uint32_t number = device.getNumber();
        unused = std::max(unused, number == vykel::noDeviceNumber ? 0 : number + 1);
    }
    if (unused == vykel::noDeviceNumber)
        throw Skipped("the highest number is in use");
    return std::to_string(unused);
}

/// Alters the property of one device, or puts it back in the second process. The property must be set
/// already: nothing could clear it again.
void checkKept(const Subject& subject, const Property& property) {
    if (subject.stage != Stage::First)
        return putBack(subject, property);
    const Session session(subject);
    const std::vector<Device> devices = devicesOf(session.list);
    const Device* const device = findAlterable(devices, property);
    if (device == nullptr)
        throw Skipped(property.none);
    alter(subject, session, property,
          {quotedText(device->getPersistentToken(1)), *property.read(*device), property.newValue(devices)});
}

} // namespace

void checkNumberKept(const Subject& subject) {
    static constexpr Property property = {
        "the number",
        "no device with a token of its own has a number; register the plug-in and let 'vykeldev list' "
        "number them",
        unusedNumber,
        [](const Device& device) {
            const std::uint32_t number = device.getNumber();
            return number == vykel::noDeviceNumber ? PluginText() : std::to_string(number);
        },
        [](const Device& device, const std::string& number) {
            return device.setNumber(static_cast<std::uint32_t>(std::stoul(number)));
        }};
    checkKept(subject, property);
}

void checkAliasKept(const Subject& subject) {
    static constexpr Property property = {
        "the alias",
        "no device with a token of its own has an alias; give one device an alias to have this checked",
        [](const std::vector<Device>&) { return std::string("vykeldev check \xC3\xA4\xE2\x82\xAC"); },
        [](const Device& device) { return device.getAlias(); },
        [](const Device& device, const std::string& alias) { return device.setAlias(alias); }};
    checkKept(subject, property);
}

} // namespace vykeldev::check
