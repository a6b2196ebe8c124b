#ifndef VYKELDEV_CHILD_TIMELIMIT_H
#define VYKELDEV_CHILD_TIMELIMIT_H

#include <algorithm>
#include <chrono>

namespace vykeldev {

/// A time that runs out unless it is restarted. One thread.
class TimeLimit {
public:
    explicit TimeLimit(std::chrono::milliseconds duration) : limit(duration) { restart(); }

    void restart() noexcept { start = Clock::now(); }
    bool isOver() const noexcept { return Clock::now() - start >= limit; }
    /// What is left, rounded up; 0 when it is over.
    std::chrono::milliseconds left() const noexcept {
        const auto exact = std::max(start + limit - Clock::now(), Clock::duration::zero());
        return std::chrono::ceil<std::chrono::milliseconds>(exact);
    }

private:
    using Clock = std::chrono::steady_clock;
    std::chrono::milliseconds limit;
    Clock::time_point start;
};

} // namespace vykeldev

#endif
