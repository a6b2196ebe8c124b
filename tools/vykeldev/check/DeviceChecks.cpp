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

/// An operation that returns a text.
struct TextReader {
    const char* operation;
    const char* (*read)(const Device&);
};
constexpr TextReader readers[] = {
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

/// As many of the tokens as fit into the notes, and then how many there are in all.
std::vector<std::string> noteTokens(const std::vector<std::string>& tokens) {
    std::vector<std::string> notes;
    std::size_t bytes = 0;
    for (const std::string& token : tokens) {
        bytes += token.size();
        if (bytes <= maxNoteBytes)
            notes.push_back(token);
    }
    notes.push_back(std::to_string(tokens.size()));
    return notes;
}

/// Compares with the notes of another process. A device may be gone since then, but then there are fewer.
void mustKnowTokens(const Subject& subject) {
    std::vector<std::string> before = subject.notes;
    const std::size_t count = std::stoul(before.back());
    before.pop_back();
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
    constexpr int attempts = 3; // devices may come and go, but not every time
    std::string change;
    for (int i = 0; i < attempts; ++i) {
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
        for (const TextReader& reader : readers) {
            const PluginText text = copied(reader.read(device));
            if (text && !isUtf8(*text))
                throw Broken(reader.operation, " of device ", i, " is not valid UTF-8: ", quotedText(text));
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
        for (const TextReader& reader : readers) {
            const char* const text = reader.read(devices[i]);
            const PluginText before = copied(text);
            for (const TextReader& otherReader : readers)
                otherReader.read(other);
            if (before && *before != text)
                throw Broken("a text of device ", i, ", ", quotedText(before), ", became ",
                             quotedText(PluginText(text)), " by calls on another device");
        }
    });
}

} // namespace vykeldev::check
