#include "check/AlteringChecks.h"

#include "check/Session.h"
#include "check/Trace.h"
#include <algorithm>
#include <map>

namespace vykeldev::check {
namespace {

/// Something that can be set on a device, as a text: empty when it is not set yet, none when the device takes
/// none.
struct Property {
    const char* name;
    const char* notSet; ///< What is seen when no device has it ...
    const char* setIt;  ///< ... and what to do then, once the plug-in is registered.
    std::string (*newValue)(const List&);
    PluginText (*read)(const Device&);
    std::int32_t (*write)(const Device&, const std::string&);
};

/// What is altered: the three notes of the rules about numbers and aliases.
struct Alteration {
    std::string token; ///< Quoted.
    std::string before;
    std::string value; ///< The new one.
};

/// Finds a device again by its token.
Device find(const List& list, const std::string& token) {
    Share share(list.itsTrace(), 4, 10);
    for (std::uint32_t i = 0, count = list.getCount(); i < count && share.lasts(); ++i)
        if (const Device device = deviceAt(list, i); quotedText(device.getPersistentToken(1)) == token)
            return device;
    throw Skipped("the device ", token, " is no longer there");
}

[[noreturn]] void reportLost(const Property& property, const std::string& expected, const char* when,
                             const PluginText& found) {
    throw Broken(property.name, " was set to ", quotedText(expected), ", and ", when, " it is ",
                 found == std::string() ? "not set" : quotedText(found));
}

void mustRead(const Property& property, const Device& device, const std::string& expected, const char* when) {
    const PluginText found = property.read(device);
    if (found != expected)
        reportLost(property, expected, when, found);
}

/// Sets the property of a device, and reads it back from that and from a list that existed before.
void alter(const Subject& subject, const Session& session, const Property& property,
           const Alteration& alteration) {
    const List other = session.plugin.makeList();
    refresh(other);
    subject.trace.note({alteration.token, alteration.before, alteration.value});
    const Device device = find(session.list, alteration.token);
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
        reportLost(property, alteration.value, "in a new process", kept);
}

/// The old values of all devices that take the property. Leaves out devices that do not have a token of their
/// own: nobody could find them again.
std::vector<Alteration> readAll(const List& list, const Property& property) {
    std::map<std::string, int> count;
    std::vector<Alteration> all;
    lookAtDevices(list, [&](const Device& device, std::uint32_t) {
        const std::string token = quotedText(device.getPersistentToken(1));
        ++count[token];
        if (const PluginText value = property.read(device))
            all.push_back({token, *value, ""});
    });
    const auto isAmbiguous = [&count](const Alteration& each) { return count[each.token] > 1; };
    all.erase(std::remove_if(all.begin(), all.end(), isAmbiguous), all.end());
    if (all.empty())
        throw Skipped(property.name, ": no device with a token of its own takes one");
    return all;
}

/// What to alter: the first device whose property is set gets another value. Throws when there is none.
Alteration chooseAlteration(const List& list, const Property& property, const std::string& plugin) {
    for (const Alteration& each : readAll(list, property))
        if (!each.before.empty() && isUtf8(each.before) &&
            each.token.size() + each.before.size() <= maxNoteBytes)
            return {each.token, each.before, property.newValue(list)};
    throw NotTried("Register the plug-in with 'vykeldev register NAME \"" + plugin +
                       "\"', list its devices with "
                       "'vykeldev list'" +
                       property.setIt + ", and check again.",
                   property.notSet);
}

/// Alters the property, or puts it back in the second process.
void checkKept(const Subject& subject, const Property& property) {
    if (subject.stage != Stage::First)
        return putBack(subject, property);
    const Session session(subject);
    alter(subject, session, property, chooseAlteration(session.list, property, subject.path));
}

/// A number that no device of the list has.
std::string unusedNumber(const List& list) {
    std::uint32_t unused = 0;
    lookAtDevices(list, [&unused](const Device& device, std::uint32_t) {
        const std::uint32_t number = device.getNumber();
        unused = std::max(unused, number == vykel::noDeviceNumber ? 0 : number + 1);
    });
    if (unused == vykel::noDeviceNumber)
        throw Skipped("the highest number is in use");
    return std::to_string(unused);
}

} // namespace

void checkNumberKept(const Subject& subject) {
    static constexpr Property property = {
        "the number",
        "no device with a token of its own has a number",
        ", which gives them numbers",
        unusedNumber,
        [](const Device& device) -> PluginText {
            const std::uint32_t number = device.getNumber();
            return number == vykel::noDeviceNumber ? "" : std::to_string(number);
        },
        [](const Device& device, const std::string& number) {
            return device.setNumber(static_cast<std::uint32_t>(std::stoul(number)));
        }};
    checkKept(subject, property);
}

void checkAliasKept(const Subject& subject) {
    static constexpr Property property = {
        "the alias",
        "no device with a token of its own has an alias yet",
        ", give one an alias, as in 'vykeldev alias KEL3 \"Main valve\"'",
        [](const List&) { return std::string("vykeldev check \xC3\xA4\xE2\x82\xAC"); },
        [](const Device& device) { return device.getAlias(); },
        [](const Device& device, const std::string& alias) { return device.setAlias(alias); }};
    checkKept(subject, property);
}

} // namespace vykeldev::check
