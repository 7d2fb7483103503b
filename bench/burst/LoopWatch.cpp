// SPDX-License-Identifier: Apache-2.0

// Takes the place of poll(2) and ppoll(2) for this program and its libraries: every event dispatcher
// of Qt comes by one of them once a turn.

#include "burst/LoopWatch.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include <dlfcn.h>
#include <poll.h>
#include <unistd.h>

namespace bram::bench::loopwatch
{

namespace
{
double now(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

bool isMainThread()
{
    return gettid() == getpid();
}

struct Stretch {
    clockid_t clock;
    double sinceMs;
    double longestMs = 0;

    explicit Stretch(clockid_t which)
        : clock(which)
        , sinceMs(now(which))
    {
    }
    void begin() { sinceMs = now(clock); }
    void end() { longestMs = std::max(longestMs, now(clock) - sinceMs); }
};

Stretch elapsed(CLOCK_MONOTONIC);
Stretch processor(CLOCK_THREAD_CPUTIME_ID);

/// The wait in `call`, between two stretches.
template<typename Call>
int waitBetween(Call call)
{
    if (!isMainThread()) {
        return call();
    }
    elapsed.end();
    processor.end();
    const int result = call();
    elapsed.begin();
    processor.begin();
    return result;
}

template<typename Function>
Function *original(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}
} // namespace

double takeLongestMs()
{
    return std::exchange(elapsed.longestMs, 0);
}

double takeLongestProcessorMs()
{
    return std::exchange(processor.longestMs, 0);
}

} // namespace bram::bench::loopwatch

using bram::bench::loopwatch::original;
using bram::bench::loopwatch::waitBetween;

extern "C" int poll(pollfd *fds, nfds_t count, int timeoutMs)
{
    static auto *const next = original<int(pollfd *, nfds_t, int)>("poll");
    return waitBetween([&] { return next(fds, count, timeoutMs); });
}

extern "C" int ppoll(pollfd *fds, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    static auto *const next
        = original<int(pollfd *, nfds_t, const timespec *, const sigset_t *)>("ppoll");
    return waitBetween([&] { return next(fds, count, timeout, mask); });
}
