#include "check/Checks.h"
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
    const char* notTried; ///< When no device has it: what to do.
    std::string (*newValue)(const List&);
    PluginText (*read)(const Device&);
    std::int32_t (*write)(const Device&, const std::string&);
};

/// What is altered: three notes of the rules about numbers and aliases.
struct Alteration {
    std::string token;  ///< Quoted.
    std::string before; ///< Empty: there was none. The new value stays.
    std::string value;  ///< The new one.
};
using Alterations = std::vector<Alteration>;

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

/// Sets the property of devices, and reads it back from them and from a list that existed before.
void alter(const Subject& subject, const Session& session, const Property& property,
           const Alterations& alterations) {
    const List other = session.plugin.makeList();
    refresh(other);
    std::vector<std::string> notes;
    for (const Alteration& each : alterations)
        notes.insert(notes.end(), {each.token, each.before, each.value});
    subject.trace.note(notes);
    for (const Alteration& each : alterations) {
        const Device device = find(session.list, each.token);
        const std::int32_t code = property.write(device, each.value);
        if (code < 0)
            throw Questionable("setting ", property.name, " was refused with ", code);
        mustRead(property, device, each.value, "read from the same device");
        mustRead(property, find(other, each.token), each.value, "read from another list");
    }
}

/// Reads the property in a later process, and restores its old value if there was one.
void putBack(const Subject& subject, const Property& property) {
    const Session session(subject);
    for (std::size_t i = 0; i + 2 < subject.notes.size(); i += 3) {
        const Alteration each{subject.notes[i], subject.notes[i + 1], subject.notes[i + 2]};
        const Device device = find(session.list, each.token);
        const PluginText kept = property.read(device);
        if (!each.before.empty()) {
            property.write(device, each.before);
            const List later = session.plugin.makeList();
            refresh(later);
            if (property.read(find(later, each.token)) == each.before)
                subject.trace.putBack();
        }
        if (subject.stage == Stage::Second && kept != each.value)
            reportLost(property, each.value, "in a new process", kept);
    }
}

/// The old values of all devices that take the property. Leaves out devices that do not have a token of their
/// own: nobody could find them again.
Alterations readAll(const List& list, const Property& property) {
    std::map<std::string, int> count;
    Alterations all;
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

/// What to alter: devices without a value get the free numbers. When there are none, the first device whose
/// property is set gets another value. Throws when there is nothing to alter.
Alterations chooseAlterations(const Subject& subject, const List& list, const Property& property) {
    const Alterations all = readAll(list, property);
    Alterations given;
    std::size_t bytes = 0;
    for (const Alteration& each : all)
        if (each.before.empty() && given.size() < subject.notes.size() &&
            (bytes += each.token.size()) <= maxNoteBytes)
            given.push_back({each.token, "", subject.notes[given.size()]});
    if (!given.empty())
        return given;
    for (const Alteration& each : all)
        if (!each.before.empty() && isUtf8(each.before) &&
            each.token.size() + each.before.size() <= maxNoteBytes)
            return {{each.token, each.before, property.newValue(list)}};
    throw Questionable(property.notTried);
}

/// Alters the property, or puts it back in the second process.
void checkKept(const Subject& subject, const Property& property) {
    if (subject.stage != Stage::First)
        return putBack(subject, property);
    const Session session(subject);
    alter(subject, session, property, chooseAlterations(subject, session.list, property));
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
        "not tried: no device with a token of its own has a number. 'vykeldev check PLUGIN --number-devices' gives "
        "some devices free numbers, for good, and tries it",
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
        "not tried: no device with a token of its own has an alias yet. Give one device an alias, by the means of "
        "the plug-in or by an entry in vykel.ini, and check again",
        [](const List&) { return std::string("vykeldev check \xC3\xA4\xE2\x82\xAC"); },
        [](const Device& device) { return device.getAlias(); },
        [](const Device& device, const std::string& alias) { return device.setAlias(alias); }};
    checkKept(subject, property);
}

} // namespace vykeldev::check
