// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <cstring>

#include <ctime>

// What the measuring programs of the window share: a clock and the rows that bench/run reads.
namespace clipheave::bench {

/// Wall-clock time, or with --cpu the processor time of the calling thread, for a machine
/// that does other work at the same time.
inline clockid_t clockOfRun = CLOCK_MONOTONIC;

inline void readOptions(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--cpu") == 0)
            clockOfRun = CLOCK_THREAD_CPUTIME_ID;
}

class Stopwatch {
public:
    [[nodiscard]] double milliseconds() const { return now() - m_start; }

private:
    static double now() {
        timespec time{};
        clock_gettime(clockOfRun, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }
    double m_start = now();
};

inline bool allMet = true;

/// One row: what, value and unit, target, whether it is met; separated by tabs.
inline void report(const char* what, double value, double target, const char* unit) {
    const bool met = value < target;
    allMet = allMet && met;
    std::printf("%s\t%.*f %s\tless than %.4g %s\t%s\n", what, value < 10 ? 2 : 0, value, unit,
                target, unit, met ? "yes" : "NO");
    std::fflush(stdout);
}

/// A row without a target.
inline void tell(const char* what, double value, const char* unit) {
    std::printf("%s\t%.*f %s\t\t\n", what, value < 10 ? 2 : 0, value, unit);
    std::fflush(stdout);
}

} // namespace clipheave::bench
