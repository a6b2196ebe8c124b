#ifndef BENCH_THREADTIME_H
#define BENCH_THREADTIME_H

#include <time.h>

namespace bench {

/// Processor time of the calling thread in seconds: other work on the machine does not count.
inline double threadSeconds() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace bench

#endif
