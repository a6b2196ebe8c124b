#include "check/Trace.h"

namespace vykeldev::check {

void Trace::calling(const char* operation) {
    if (!isRepeating)
        return reporter.beginStep(operation);
    const std::lock_guard<std::mutex> lock(mutex);
    if (const Clock::time_point now = Clock::now(); now >= nextReport) {
        nextReport = now + std::chrono::milliseconds(10); // little beside any time limit
        reporter.report({{"progress", true}});
    }
}

void Trace::repeating(const std::string& what) {
    reporter.beginStep(what);
    isRepeating = true;
}

void Trace::cutShort() {
    if (!shortened.exchange(true))
        reporter.report({{"cutShort", true}});
}

void Trace::incident(const char* rule, const std::string& observed) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (incidents.insert(rule + observed).second)
        reporter.reportCut({{"incident", rule}, {"observed", observed}});
}

std::uint32_t repeat(std::uint32_t times, Trace& trace, int parts, std::uint32_t minimum,
                     const std::function<void(std::uint32_t)>& step) {
    using Clock = std::chrono::steady_clock;
    constexpr std::uint32_t maxRounds = 1'000'000; // a faulty plug-in may count billions of devices
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(30'000) / parts;
    for (std::uint32_t number = 0; number < times; ++number) {
        if (number >= minimum && (number >= maxRounds || Clock::now() >= end)) {
            trace.cutShort();
            return number;
        }
        step(number);
    }
    return times;
}

} // namespace vykeldev::check
