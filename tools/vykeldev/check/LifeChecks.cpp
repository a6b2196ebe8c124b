#include "check/LifeChecks.h"

#include "check/Session.h"
#include "system/Process.h"
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

namespace vykeldev::check {
namespace {

void mustInitialize(Plugin& plugin, int round) {
    const std::int32_t code = plugin.initialize();
    if (code < 0)
        throw Broken("vykel_initializePlugin accepted at first, and in round ", round, " refused with ",
                     code);
}

/// Uses the plug-in as if it were registered twice, once from start to end.
void loadTwice(const Subject& subject, int round) {
    Plugin first(subject, Ending::Unloaded);
    mustInitialize(first, round);
    Plugin second(subject, Ending::Unloaded);
    mustInitialize(second, round);
}

/// Refreshes a list and reads what it has, as clients do.
void useList(const List& list) {
    refresh(list);
    const std::uint32_t count = list.getCount();
    Share share(list.itsTrace(), 8, 10);
    for (std::uint32_t i = 0; i < count && share.lasts(); ++i) {
        const Fetched fetched = list.getDevice(i);
        if (!fetched.device)
            continue; // another rule is about that
        fetched.device->getPersistentToken(1);
        fetched.device->getNumber();
        fetched.device->getAlias();
    }
}

/// Makes a step so many times, or fewer within repeatingTime divided by `parts`. Returns how many.
int repeat(int times, Trace& trace, int parts, const std::function<void()>& step) {
    int done = 0;
    for (Share share(trace, parts); done < times && share.lasts(); ++done)
        step();
    return done;
}

/// Repeats a step some thousand times, in which this process must not grow. `what` names several of them.
void mustNotGrow(const char* what, Trace& trace, const std::function<void()>& step) {
    constexpr int warmUp = 100; // what is allocated once
    constexpr int steps = 1000;
    constexpr int rounds = 4;                      // a leak grows every time, anything else settles ...
    constexpr std::chrono::milliseconds rest(100); // ... given the time, such as a thread's start
    constexpr std::uint64_t tolerated = 12 << 10;  // a few pages
    constexpr std::uint64_t toleratedHandles = 10;
    std::string growth;
    repeat(warmUp, trace, 8, step);
    for (int round = 0; round < rounds; ++round) {
        const Usage before = usageOfThisProcess();
        const int done = repeat(steps, trace, 8, step);
        const Usage after = usageOfThisProcess();
        const std::uint64_t memory = after.memory > before.memory ? after.memory - before.memory : 0;
        const std::uint64_t handles = after.handles > before.handles ? after.handles - before.handles : 0;
        if (memory <= tolerated && handles <= toleratedHandles)
            return;
        std::this_thread::sleep_for(rest);
        growth = concat(done, " ", what, " left ", memory >> 10, " KiB and ", handles, " handles");
    }
    throw Broken(growth, " behind, in each of four tries");
}

} // namespace

void checkLibraryLoads(const Subject& subject) {
    const Module module(subject);
}

void checkEntryPoints(const Subject& subject) {
    const Plugin plugin(subject);
}

void checkInitialises(const Subject& subject) {
    Plugin plugin(subject);
    const std::int32_t code = plugin.initialize();
    if (code < 0)
        throw Broken("vykel_initializePlugin refused with ", code);
}

void checkReload(const Subject& subject) {
    constexpr int rounds = 100;
    constexpr int roundsLoaded = 10;
    subject.trace.repeating("initialising and finalising, loading and unloading, again and again");
    {
        const Module staysLoaded(subject, Ending::Unloaded);
        repeat(roundsLoaded, subject.trace, 4, [&, round = 0]() mutable { loadTwice(subject, ++round); });
    }
    repeat(rounds, subject.trace, 2, [&, round = 0]() mutable { loadTwice(subject, ++round); });
}

void checkNewList(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    const auto makeList = [&] { return refusalIsQuestionable([&] { return plugin.makeList(); }); };
    const List first = makeList();
    const List second = makeList();
    if (first.identity() == second.identity())
        throw Broken("two calls of vykel_getPluginInterface stored the same list");
}

void checkInterfaceVersion(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    std::optional<List> list;
    const std::int32_t code = plugin.getInterface(1, list);
    if (code >= 0)
        throw Broken("interface version 1 was accepted with ", code);
}

void checkAttachDetach(const Subject& subject) {
    constexpr std::uint64_t token = 0x0123456789ABCDEF;
    constexpr std::uint64_t otherToken = ~token;
    const InitializedPlugin plugin(subject);
    const List list = plugin.makeList();
    const std::int32_t refused = list.attach(token);
    if (refused < 0)
        throw Skipped("attach refuses tokens with ", refused);
    if (list.attach(otherToken) >= 0)
        list.detach(otherToken);
    list.detach(token);
    plugin.trace.repeating("attach and detach, again and again");
    mustNotGrow("tokens attached and detached", plugin.trace, [&, round = 1]() mutable {
        ++round;
        const std::int32_t code = list.attach(token);
        // cppcheck-suppress identicalConditionAfterEarlyExit ; a plug-in may answer otherwise this time
        if (code < 0)
            throw Broken("attach took a token, and after its detach refused it with ", code, " in round ",
                         round);
        list.detach(token);
    });
    list.attach(token); // the release at the end of this function ends that, too
}

void checkReleaseFrees(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    plugin.trace.repeating("making, using and releasing lists by the thousand");
    mustNotGrow("lists made and released", plugin.trace, [&, number = 0]() mutable {
        ++number;
        try {
            useList(plugin.makeList());
        } catch (const Broken& broken) {
            throw Broken("list ", number, ": ", broken.observed);
        }
    });
}

void checkThreads(const Subject& subject) {
    constexpr int rounds = 50;
    const InitializedPlugin plugin(subject);
    useList(plugin.makeList()); // works on this thread
    plugin.trace.repeating("refreshing lists on two other threads at once");
    std::mutex entryPoints; // stands for the lock of the library
    const auto work = [&] {
        std::unique_lock<std::mutex> lock(entryPoints);
        const List list = plugin.makeList();
        lock.unlock();
        repeat(rounds, plugin.trace, 2, [&] { useList(list); });
    };
    try {
        std::future<void> first = std::async(std::launch::async, work);
        std::future<void> second = std::async(std::launch::async, work);
        first.get();
        second.get();
    } catch (const Broken& broken) {
        throw Broken("on another thread than the first, ", broken.observed);
    }
}

} // namespace vykeldev::check
