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

/// Refreshes a list and reads what it has, as clients do.
void useList(const List& list) {
    refresh(list);
    repeat(list.getCount(), *list.trace, 8, 10, [&list](std::uint32_t i) {
        const std::optional<Device> device = list.getDevice(i).object;
        if (!device)
            return; // another rule is about that
        device->getPersistentToken(1);
        device->getNumber();
        device->getAlias();
    });
}

/// Repeats a step some thousand times, in which this process must not grow. `what` names several of them.
void mustNotGrow(const char* what, Trace& trace, const std::function<void(std::uint32_t)>& step) {
    constexpr std::uint64_t tolerated = 12 << 10; // a few pages
    constexpr std::uint64_t toleratedHandles = 10;
    std::string growth;
    repeat(100, trace, 8, 1, step); // what is allocated once
    // A leak grows every time, anything else settles, given the time, such as a thread's start.
    for (int round = 0; round < 4; ++round) {
        const Usage before = usageOfThisProcess();
        const std::uint32_t done = repeat(1000, trace, 8, 1, step);
        const Usage after = usageOfThisProcess();
        const std::uint64_t memory = after.memory > before.memory ? after.memory - before.memory : 0;
        const std::uint64_t handles = after.handles > before.handles ? after.handles - before.handles : 0;
        if (memory <= tolerated && handles <= toleratedHandles)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        growth = concat(done, " ", what, " left ", memory >> 10, " KiB and ", handles, " handles");
    }
    throw Broken(growth, " behind, in each of four tries");
}

} // namespace

void checkLibraryLoads(const Subject& subject) {
    loadModule(subject);
}

void checkEntryPoints(const Subject& subject) {
    const Plugin plugin(subject);
}

void checkInitialises(const Subject& subject) {
    Plugin(subject).initialize<Broken>();
}

void checkReload(const Subject& subject) {
    subject.trace.repeating("initialising and finalising, loading and unloading, again and again");
    Module staysLoaded = loadModule(subject, unload);
    const auto loadTwice = [&subject](std::uint32_t number) { // as if it were registered twice
        const std::string when = concat("accepted at first, and in round ", number + 1, " ");
        Plugin first(subject, unload);
        first.initialize<Broken>(when);
        Plugin second(subject, unload);
        second.initialize<Broken>(when);
    };
    repeat(10, subject.trace, 4, 1, loadTwice);
    staysLoaded.reset();
    repeat(100, subject.trace, 2, 1, loadTwice);
}

void checkNewList(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    const List first = plugin.makeList<Questionable>();
    const List second = plugin.makeList<Questionable>();
    if (first.object == second.object)
        throw Broken("two calls of vykel_getPluginInterface stored the same list");
}

void checkInterfaceVersion(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    const auto [list, code] = plugin.getInterface(1);
    if (code >= 0)
        throw Broken("interface version 1 was accepted with ", code);
}

void checkAttachDetach(const Subject& subject) {
    constexpr std::uint64_t token = 0x0123456789ABCDEF;
    constexpr std::uint64_t otherToken = ~token;
    const InitializedPlugin plugin(subject);
    const List list = plugin.makeList();
    mustAccept<Skipped>(list.attach(token), "attach refuses tokens with ");
    if (list.attach(otherToken) >= 0)
        list.detach(otherToken);
    list.detach(token);
    plugin.trace.repeating("attach and detach, again and again");
    mustNotGrow("tokens attached and detached", plugin.trace, [&, round = 1](std::uint32_t) mutable {
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
    mustNotGrow("lists made and released", plugin.trace, [&, number = 0](std::uint32_t) mutable {
        ++number;
        try {
            useList(plugin.makeList());
        } catch (const Broken& broken) {
            throw Broken("list ", number, ": ", broken.observed);
        }
    });
}

void checkThreads(const Subject& subject) {
    const InitializedPlugin plugin(subject);
    useList(plugin.makeList()); // works on this thread
    plugin.trace.repeating("refreshing lists on two other threads at once");
    std::mutex entryPoints; // stands for the lock of the library
    const auto work = [&] {
        std::unique_lock<std::mutex> lock(entryPoints);
        const List list = plugin.makeList();
        lock.unlock();
        repeat(50, plugin.trace, 2, 1, [&list](std::uint32_t) { useList(list); });
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
