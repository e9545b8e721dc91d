#include "bench/comparison.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace depot::bench {
namespace {

constexpr int kWarmUps = 2;

double MicrosecondsOf(const std::function<void()>& operation) {
    const auto start = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double, std::micro> elapsed =
        std::chrono::steady_clock::now() - start;
    return elapsed.count();
}

struct Summary {
    double minimum;
    double median;
};

Summary Summarise(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return {times.front(), times[times.size() / 2]};
}

}  // namespace

void PrintHeader(const std::string& title) {
    std::printf("\n%s\n%-44s %10s %10s %10s %10s %7s %7s %6s\n", title.c_str(), "operation",
                "raw min", "raw med", "own min", "own med", "min x", "med x", "goal");
}

Minima Compare(const std::string& name, double goal, const std::function<void()>& measured,
               const std::function<void()>& raw, int repetitions) {
    std::vector<double> rawTimes, ownTimes;
    for (int repetition = -kWarmUps; repetition < repetitions; ++repetition) {
        // Neither side always finds what the other has just warmed up or left behind.
        const bool rawFirst = repetition % 2 == 0;
        const double first = MicrosecondsOf(rawFirst ? raw : measured);
        const double second = MicrosecondsOf(rawFirst ? measured : raw);
        const double rawTime = rawFirst ? first : second, ownTime = rawFirst ? second : first;
        if (repetition < 0) continue;
        rawTimes.push_back(rawTime);
        ownTimes.push_back(ownTime);
    }
    const Summary rawSummary = Summarise(rawTimes), own = Summarise(ownTimes);
    std::printf("%-44s %8.0fus %8.0fus %8.0fus %8.0fus %6.2fx %6.2fx %5.2fx\n", name.c_str(),
                rawSummary.minimum, rawSummary.median, own.minimum, own.median,
                own.minimum / rawSummary.minimum, own.median / rawSummary.median, goal);
    std::fflush(stdout);
    return {own.minimum, rawSummary.minimum};
}

void PrintGrowth(const std::string& name, const Minima& smaller, const Minima& larger) {
    std::printf("%-44s raw %.1fx, own %.1fx\n", name.c_str(), larger.raw / smaller.raw,
                larger.own / smaller.own);
    std::fflush(stdout);
}

}  // namespace depot::bench
