#ifndef VYKELDEV_CHECK_TRACE_H
#define VYKELDEV_CHECK_TRACE_H

#include "check/Rule.h"
#include "child/ChildTask.h"
#include "vytpl/NonCopyable.h"
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace vykeldev::check {

/// Reports to the parent process what a rule is doing, so that the parent knows what a plug-in that crashes
/// or hangs was last asked for, and that it does not hang as long as calls begin. Any thread may call.
class Trace : private vytpl::NonCopyableT<Trace> {
public:
    explicit Trace(Reporter& toParent) : reporter(toParent) {}

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
        incident("no-exception", concat("an exception left ", operation, ": ", escaped));
        throw Skipped("an exception left ", operation, "; see 'no-exception'");
    }

    /// The same at the end of an object, whatever comes out.
    template <class Call>
    void callAtEnd(const char* operation, Call&& intoPlugin) noexcept {
        try {
            call(operation, intoPlugin);
        } catch (const Skipped&) { // reported as an incident
        }
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
    using Clock = std::chrono::steady_clock;

    Reporter& reporter;
    bool isRepeating = false;
    std::atomic<bool> shortened{false};
    std::mutex mutex; // of the following
    Clock::time_point nextReport;
    std::set<std::string> incidents; // each is reported once
};

/// Makes a step for each number below `times`, or for fewer, but at least `minimum`, when that takes too
/// long: the loops of one rule may take 30 seconds together, this one a part of `parts` of that. So a slow
/// plug-in, or one of very many devices, is looked at less often instead of for hours. Returns how many steps
/// it made.
std::uint32_t repeat(std::uint32_t times, Trace& trace, int parts, std::uint32_t minimum,
                     const std::function<void(std::uint32_t number)>& step);

} // namespace vykeldev::check

#endif
