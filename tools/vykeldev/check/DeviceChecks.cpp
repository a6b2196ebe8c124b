#include "check/DeviceChecks.h"

#include "check/Session.h"
#include "check/Trace.h"
#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace vykeldev::check {
namespace {

constexpr std::uint32_t formats[] = {1, 2};

/// The operations that return a text, and their names.
constexpr std::pair<const char*, const char* (*)(const Device&)> textOperations[] = {
    {"getPersistentToken", [](const Device& device) { return device.ownToken(1); }},
    {"getPersistentToken", [](const Device& device) { return device.ownToken(2); }},
    {"getAlias", [](const Device& device) { return device.ownAlias(); }},
};

/// All tokens, quoted, in an order that does not depend on that of the devices.
std::vector<std::string> tokensOf(const List& list) {
    std::vector<std::string> tokens;
    lookAtDevices(list, [&tokens](const Device& device, std::uint32_t) {
        for (const std::uint32_t format : formats)
            tokens.push_back(quotedText(device.getPersistentToken(format)));
    });
    std::sort(tokens.begin(), tokens.end());
    return tokens;
}

/// The first sorted token that is not among others, or an empty text.
std::string firstMissing(const std::vector<std::string>& tokens, const std::vector<std::string>& others) {
    std::vector<std::string> missing;
    std::set_difference(tokens.begin(), tokens.end(), others.begin(), others.end(),
                        std::back_inserter(missing));
    return missing.empty() ? "" : missing.front();
}

/// How many tokens there are, and then as many of them as fit into the notes.
std::vector<std::string> noteTokens(const std::vector<std::string>& tokens) {
    std::vector<std::string> notes{std::to_string(tokens.size())};
    std::size_t bytes = 0;
    for (const std::string& token : tokens) {
        bytes += token.size();
        if (bytes <= maxNoteBytes)
            notes.push_back(token);
    }
    return notes;
}

/// Compares with the notes of another process. A device may be gone since then, but then there are fewer.
void mustKnowTokens(const Subject& subject) {
    const std::size_t count = std::stoul(subject.notes.at(0));
    const std::vector<std::string> before(subject.notes.begin() + 1, subject.notes.end());
    const std::vector<std::string> now = tokensOf(Session(subject).list);
    const std::string gone = firstMissing(before, now);
    if (!gone.empty() && now.size() >= count && !subject.trace.wasCutShort())
        throw Broken("the token ", gone, " of one process is missing in the next");
}

} // namespace

void checkTokenPresent(const Subject& subject) {
    lookAtDevices(Session(subject).list, [](const Device& device, std::uint32_t i) {
        for (const std::uint32_t format : formats)
            if (!device.getPersistentToken(format))
                throw Broken("getPersistentToken of device ", i, " in format ", format, " is null");
    });
}

void checkTokensDiffer(const Subject& subject) {
    std::map<std::pair<std::uint32_t, PluginText>, std::uint32_t> holders; // by format and token
    lookAtDevices(Session(subject).list, [&holders](const Device& device, std::uint32_t i) {
        for (const std::uint32_t format : formats) {
            const auto [holder, isNew] =
                holders.emplace(std::pair(format, device.getPersistentToken(format)), i);
            if (!isNew)
                throw Broken("the devices ", holder->second, " and ", i, " both have the token ",
                             quotedText(holder->first.second), " in format ", format);
        }
    });
}

void checkTokenStable(const Subject& subject) {
    if (subject.stage == Stage::Second)
        return mustKnowTokens(subject);
    std::string change;
    for (int i = 0; i < 3; ++i) { // devices may come and go, but not every time
        const std::vector<std::string> before = tokensOf(Session(subject).list);
        const Session session(subject); // initialised again
        const std::vector<std::string> after = tokensOf(session.list);
        refresh(session.list);
        const std::vector<std::string> later = tokensOf(session.list);
        // Of lists that were read only in part, nobody knows what the other part has.
        if ((before == after && after == later) || subject.trace.wasCutShort())
            return subject.trace.note(noteTokens(later));
        const std::vector<std::string>& other = before != after ? before : later;
        change = "first " + firstMissing(other, after) + ", then " + firstMissing(after, other);
    }
    throw Broken("the tokens differ each time that the devices are listed: ", change);
}

void checkTextsUtf8(const Subject& subject) {
    lookAtDevices(Session(subject).list, [](const Device& device, std::uint32_t i) {
        for (const auto& [name, read] : textOperations) {
            const PluginText text = copied(read(device));
            if (text && !isUtf8(*text))
                throw Broken(name, " of device ", i, " is not valid UTF-8: ", quotedText(text));
        }
    });
}

void checkTextsStay(const Subject& subject) {
    const Session session(subject);
    const std::vector<Device> devices = devicesOf(session.list);
    if (devices.size() < 2)
        throw Skipped("this needs two devices");
    repeat(static_cast<std::uint32_t>(devices.size()), subject.trace, 2, 10, [&](std::uint32_t i) {
        const Device& other = devices[(i + 1) % devices.size()];
        for (const auto& each : textOperations) {
            const char* const text = each.second(devices[i]);
            const PluginText before = copied(text);
            for (const auto& later : textOperations)
                later.second(other);
            if (before && *before != text)
                throw Broken("a text of device ", i, ", ", quotedText(before), ", became ",
                             quotedText(PluginText(text)), " by calls on another device");
        }
    });
}

} // namespace vykeldev::check
