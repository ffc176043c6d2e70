// Times, and their table.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int kRuns = 31;
constexpr int kPaints = 200;

inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline double Since(Clock::time_point start) {
    return Microseconds(Clock::now() - start).count();
}

// The median time of `work`, in microseconds.
inline double Measure(int runs, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto start = Clock::now();
        work();
        times.push_back(Since(start));
    }
    return Median(times);
}

inline double gBase = 1;

// What the last column compares with.
inline void SetBase(double microseconds) {
    gBase = microseconds;
}

inline void Report(const char* what, double microseconds) {
    std::printf("%-58s %10.1f us   %8.4f\n", what, microseconds, microseconds / gBase);
}
