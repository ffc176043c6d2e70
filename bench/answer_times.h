// Measuring programs in turn: each does the work that it is told, when it is told.
#pragma once

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "measure.h"

struct NamedWork {
    std::string name;
    std::function<void()> work;
};

inline const NamedWork* FindWork(const std::vector<NamedWork>& works, const std::string& name) {
    for (const NamedWork& work : works) {
        if (work.name == name) {
            return &work;
        }
    }
    return nullptr;
}

// Answers each name on standard input with the time of that work in microseconds: the least of a few runs,
// which is the one that nothing came between.
inline int AnswerTimes(const std::vector<NamedWork>& works) {
    constexpr int kRunsInTurn = 7;
    for (std::string name; std::getline(std::cin, name);) {
        const NamedWork* const work = FindWork(works, name);
        if (work == nullptr) {
            std::fprintf(stderr, "no work is called %s\n", name.c_str());
            return 1;
        }
        double least = Measure(1, work->work);
        for (int run = 1; run < kRunsInTurn; ++run) {
            least = std::min(least, Measure(1, work->work));
        }
        std::printf("%.3f\n", least);
        std::fflush(stdout);
    }
    return 0;
}
