#ifndef VYKELDEV_CHECK_TRACE_H
#define VYKELDEV_CHECK_TRACE_H

#include "check/Rule.h"
#include "child/ChildTask.h"
#include "vytpl/NonCopyable.h"
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace vykeldev::check {

/// Reports to the parent process what a rule is doing, so that the parent knows what a plug-in that crashes
/// or hangs was last asked for. As long as calls begin, it reports that ten times a second: the plug-in does
/// not hang. Any thread may call.
class Trace : private vytpl::NonCopyableT<Trace> {
public:
    explicit Trace(Reporter& toParent);
    ~Trace();

    /// Makes a call into the plug-in. When an exception comes out, that is an incident of its own, and the
    /// rule at work is skipped (throws Skipped).
    template <class Call>
    decltype(auto) call(const char* operation, Call&& intoPlugin) {
        calling(operation);
        std::string escaped;
        try {
            return intoPlugin();
        } catch (const std::exception& exception) {
            escaped = exception.what(); // copied: the object may go with its plug-in
        } catch (...) {
            escaped = "of no standard type";
        }
        exceptionLeft(operation, escaped);
    }

    /// Names what is done next.
    void calling(const char* operation);

    /// Says once what the many calls from here on are for, and no longer names each.
    void repeating(const std::string& what);

    /// Leaves notes, valid UTF-8, for the rule's second process.
    void note(const std::vector<std::string>& notes) { reporter.report({{"notes", notes}}); }

    /// What the rule altered is as it was before.
    void putBack() { reporter.report({{"putBack", true}}); }

    /// The rule looks less often than usual, because its time for repeating is over.
    void cutShort();
    bool wasCutShort() const noexcept { return shortened; }

    /// A rule other than the one at work turns out to be broken.
    void incident(const char* rule, const std::string& observed);

private:
    [[noreturn]] void exceptionLeft(const char* operation, const std::string& what);
    void reportProgress();

    Reporter& reporter;
    bool isRepeating = false;
    std::atomic<std::uint64_t> callCount{0};
    std::atomic<bool> shortened{false};
    std::mutex mutex;
    std::set<std::string> incidents; // each is reported once
    bool ended = false;
    std::condition_variable end;
    std::thread progress;
};

/// The time that the loops of one rule may take together.
constexpr std::chrono::milliseconds repeatingTime = std::chrono::seconds(30);

/// The part of this time that one loop may use. A slow plug-in, or one of very many devices, is then
/// looked at less often instead of for hours. One thread.
class Share : private vytpl::NonCopyableT<Share> {
public:
    /// The loop may take repeatingTime divided by `parts`, but makes `minimum` rounds in any case.
    Share(Trace& itsTrace, int parts, int itsMinimum = 1)
        : trace(itsTrace), minimum(itsMinimum), end(Clock::now() + repeatingTime / parts) {}

    /// Whether there may be another round. Call it only when there is something left to do.
    bool lasts();

private:
    using Clock = std::chrono::steady_clock;
    Trace& trace;
    const int minimum;
    const Clock::time_point end;
    int rounds = 0;
};

} // namespace vykeldev::check

#endif
