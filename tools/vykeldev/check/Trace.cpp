#include "check/Trace.h"

namespace vykeldev::check {

Trace::Trace(Reporter& toParent) : reporter(toParent), progress([this] { reportProgress(); }) {}

Trace::~Trace() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ended = true;
    }
    end.notify_one();
    progress.join();
}

void Trace::calling(const char* operation) {
    ++callCount;
    if (!isRepeating)
        reporter.beginStep(operation);
}

void Trace::repeating(const std::string& what) {
    ++callCount;
    reporter.beginStep(what);
    isRepeating = true;
}

void Trace::cutShort() {
    if (!shortened.exchange(true))
        reporter.report({{"cutShort", true}});
}

void Trace::incident(const char* rule, const std::string& observed) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!incidents.insert(rule + observed).second)
            return;
    }
    reporter.reportCut({{"incident", rule}, {"observed", observed}});
}

void Trace::exceptionLeft(const char* operation, const std::string& what) {
    incident("no-exception", "an exception left " + std::string(operation) + ": " + what);
    throw Skipped("an exception left ", operation, "; see 'no-exception'");
}

void Trace::reportProgress() {
    constexpr std::chrono::milliseconds interval(100);
    std::unique_lock<std::mutex> lock(mutex);
    std::uint64_t reported = 0;
    while (!end.wait_for(lock, interval, [this] { return ended; })) {
        if (const std::uint64_t calls = callCount; calls != reported) {
            reported = calls;
            reporter.report({{"progress", calls}});
        }
    }
}

bool Share::lasts() {
    constexpr int maxRounds = 1'000'000; // a faulty plug-in may count billions of devices
    if (rounds < minimum || (rounds < maxRounds && Clock::now() < end)) {
        ++rounds;
        return true;
    }
    trace.cutShort();
    return false;
}

} // namespace vykeldev::check
