#include "check/ListChecks.h"

#include "check/Session.h"
#include <algorithm>
#include <chrono>
#include <limits>

namespace vykeldev::check {
namespace {

void mustRefuse(const List& list, std::uint32_t index, std::uint32_t count) {
    const auto [device, code] = list.getDevice(index);
    if (device || code >= 0)
        throw Broken("getDevice(", index, ") of ", count, " answered ", (device ? "a device" : "null"),
                     " and left the code ", code);
}

/// What a device reports about itself, unchanged while it lives.
std::string describe(const Device& device) {
    return quotedText(device.getPersistentToken(1)) + ", sort key " + std::to_string(device.getSortKey()) +
           ", version " + std::to_string(device.getVersion());
}

/// Overwrites memory that was freed, so that whoever still uses it is noticed.
void overwriteFreedMemory() {
    std::vector<std::vector<char>> blocks;
    for (std::size_t size = 16; size <= 1024; size += 16)
        blocks.insert(blocks.end(), 16, std::vector<char>(size, '\xDD'));
}

} // namespace

void checkEmptyBeforeRefresh(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    const List list = plugin.makeList();
    const std::uint32_t count = list.getCount();
    if (count != 0)
        throw Broken("a new list has ", count, " devices before its first refresh");
}

void checkRefresh(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    const List list = plugin.makeList();
    for (int round = 0; round < 2; ++round) {
        list.isStale();
        refresh<Questionable>(list);
        const std::uint32_t count = list.getCount();
        repeat(count, plugin.trace, 8, 10, [&list](std::uint32_t i) { list.getDevice(i); });
        const std::uint32_t later = list.getCount();
        if (later != count)
            throw Broken("getCount changed from ", count, " to ", later, " without a refresh");
    }
}

void checkDevices(const Subject& subject) {
    const Session session(subject);
    if (devicesOf(session.list).empty())
        throw Skipped("it sees no devices here");
}

void checkDevicesStay(const Subject& subject) {
    const Session session(subject);
    std::vector<Device> devices;
    std::vector<std::string> before;
    lookAtDevices(session.list, [&](const Device& device, std::uint32_t) {
        devices.push_back(device);
        before.push_back(describe(device));
    });
    {
        const List other = session.makeList();
        refresh(other);
        devicesOf(other);
        session.list.isStale();
    }
    overwriteFreedMemory();
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const std::string now = describe(devices[i]);
        if (now != before[i])
            throw Broken("device ", i, " was ", before[i], " and became ", now,
                         " without a refresh of its list");
    }
}

void checkIndexBeyond(const Subject& subject) {
    constexpr std::uint32_t calls = 1'000'000;
    const Session session(subject);
    const std::uint32_t count = session.list.getCount();
    mustRefuse(session.list, count, count);
    mustRefuse(session.list, std::numeric_limits<std::uint32_t>::max(), count);
    session.trace.repeating("getDevice for a million indices beyond the count");
    const std::uint32_t step = (std::numeric_limits<std::uint32_t>::max() - count) / calls;
    repeat(calls, subject.trace, 1, 1,
           [&](std::uint32_t i) { mustRefuse(session.list, count + i * step, count); });
}

void checkMinimumVersion(const Subject& subject) {
    const Session session(subject);
    const std::int32_t version = deviceAt(session.list, 0).getVersion();
    const std::string text = concat("of version ", version, ", asked for at least ");
    if (!session.list.getDevice(0, version).object)
        throw Broken("a device ", text, "that, was refused");
    if (version == std::numeric_limits<std::int32_t>::max())
        throw Skipped("no version is above that of the first device");
    const auto [newer, code] = session.list.getDevice(0, version + 1);
    if (newer || code >= 0)
        throw Broken("a device ", text, version + 1, ", was ",
                     (newer ? "returned all the same" : "refused without an error"));
}

void checkStaleCheap(const Subject& subject) {
    using Clock = std::chrono::steady_clock;
    constexpr int calls = 5;
    const InitializedPlugin plugin(subject);
    const List list = plugin.makeList();
    list.isStale();
    list.refresh();
    Clock::duration best = Clock::duration::max();
    for (int batch = 0; batch < 5; ++batch) { // the best counts: others may keep the machine busy
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < calls; ++i)
            list.isStale();
        best = std::min(best, (Clock::now() - start) / calls);
    }
    if (best > std::chrono::milliseconds(1))
        throw Broken("isStale takes ", std::chrono::duration_cast<std::chrono::microseconds>(best).count(),
                     " microseconds");
}

void checkStaleSettles(const Subject& subject) {
    const Session session(subject);
    for (int i = 0; i < 3; ++i) { // something may really have changed, but not every time
        refresh(session.list);
        if (!session.list.isStale())
            return;
    }
    throw Broken("the list is stale right after each of three refreshes");
}

} // namespace vykeldev::check
