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
    std::optional<Device> found;
    repeat(list.getCount(), *list.trace, 4, 10, [&](std::uint32_t i) {
        if (found)
            return;
        if (const Device device = deviceAt(list, i); quotedText(device.getPersistentToken(1)) == token)
            found = device;
    });
    return found ? *found : throw Skipped("the device ", token, " is no longer there");
}

void mustBe(const Property& property, const std::string& expected, const char* when,
            const PluginText& found) {
    if (found != expected)
        throw Broken(property.name, " was set to ", quotedText(expected), ", and ", when, " it is ",
                     found == std::string() ? "not set" : quotedText(found));
}

/// Reads the property in a later process, and restores its old value.
void putBack(const Subject& subject, const Property& property) {
    const Alteration alteration{subject.notes.at(0), subject.notes.at(1), subject.notes.at(2)};
    const Session session(subject);
    const Device device = find(session.list, alteration.token);
    const PluginText kept = property.read(device);
    property.write(device, alteration.before);
    const List later = session.makeList();
    refresh(later);
    if (property.read(find(later, alteration.token)) == alteration.before)
        subject.trace.putBack();
    if (subject.stage == Stage::Second)
        mustBe(property, alteration.value, "in a new process", kept);
}

/// What to alter: the first device whose property is set gets another value. Leaves out devices that do not
/// have a token of their own: nobody could find them again. Throws when there is none.
Alteration chooseAlteration(const List& list, const Property& property, const std::string& plugin) {
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
    for (const Alteration& each : all)
        if (!each.before.empty() && isUtf8(each.before) &&
            each.token.size() + each.before.size() <= maxNoteBytes)
            return {each.token, each.before, property.newValue(list)};
    throw notTried("Register the plug-in with 'vykeldev register NAME \"" + plugin +
                       "\"', list its devices with 'vykeldev list'" + property.setIt + ", and check again.",
                   property.notSet);
}

/// Sets the property of a device, and reads it back from that and from a list that existed before. Puts it
/// back in the second process.
void checkKept(const Subject& subject, const Property& property) {
    if (subject.stage != Stage::First)
        return putBack(subject, property);
    const Session session(subject);
    const auto [token, before, value] = chooseAlteration(session.list, property, subject.path);
    const List other = session.makeList();
    refresh(other);
    subject.trace.note({token, before, value});
    const Device device = find(session.list, token);
    mustAccept<Questionable>(property.write(device, value), "setting ", property.name, " was refused with ");
    mustBe(property, value, "read from the same device", property.read(device));
    mustBe(property, value, "read from another list", property.read(find(other, token)));
}

/// A number that no device of the list has.
std::string unusedNumber(const List& list) {
    std::uint32_t unused = 0;
    lookAtDevices(list, [&unused](const Device& device, std::uint32_t) {
        unused = std::max(unused, device.getNumber() + 1); // 0 after none, the highest of all
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
