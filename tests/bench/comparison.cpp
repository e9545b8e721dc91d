#include "bench/comparison.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "platform/win32.h"

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

struct Row {
    std::string group;
    std::string name;
    double minimaRatio;
    double mediansRatio;
    double goal;
};

std::string& CurrentGroup() {
    static std::string group;
    return group;
}

std::vector<Row>& Rows() {
    static std::vector<Row> rows;
    return rows;
}

Summary Summarise(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return {times.front(), times[times.size() / 2]};
}

}  // namespace

void PrintHeader(const std::string& title) {
    CurrentGroup() = title.substr(0, title.find_first_of(":,"));
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
    Rows().push_back({CurrentGroup(), name, own.minimum / rawSummary.minimum,
                      own.median / rawSummary.median, goal});
    return {own.minimum, rawSummary.minimum};
}

void PrintTime(const std::string& name, const std::function<void()>& operation) {
    std::vector<double> times;
    for (int repetition = 0; repetition < kUsualRepetitions; ++repetition) {
        times.push_back(MicrosecondsOf(operation));
    }
    const Summary summary = Summarise(times);
    std::printf("%-44s %8.0fus least, %8.0fus median\n", name.c_str(), summary.minimum,
                summary.median);
    std::fflush(stdout);
}

void PrintGrowth(const std::string& name, const Minima& smaller, const Minima& larger) {
    std::printf("%-44s raw %.1fx, own %.1fx\n", name.c_str(), larger.raw / smaller.raw,
                larger.own / smaller.own);
    std::fflush(stdout);
}

void PrintTripsHeader(const std::string& title) {
    CurrentGroup() = title.substr(0, title.find(':'));
    std::printf("\n%s\n%-44s %8s %8s %8s %8s %6s\n", title.c_str(), "operation", "counted",
                "0.5 ms", "10 ms", "50 ms", "goal");
}

void PrintTrips(const TripRow& row) {
    std::printf("%-44s %8d", row.name.c_str(), row.counted);
    for (const double trips : row.elapsed) std::printf(" %8.1f", trips);
    std::printf(" %6.0f\n", row.goal);
    std::fflush(stdout);
    // Nothing but the line counts at the longest round trip.
    Rows().push_back(
        {CurrentGroup(), row.name, static_cast<double>(row.counted), row.elapsed.back(), row.goal});
}

void PrintSummary() {
    std::printf("\nAll ratios\n%-18s %-44s %7s %7s %6s\n", "group", "operation", "min x", "med x",
                "goal");
    std::size_t missed = 0;
    for (const Row& row : Rows()) {
        const bool misses = row.minimaRatio > row.goal;
        if (misses) ++missed;
        std::printf("%-18s %-44s %6.2fx %6.2fx %5.2fx%s\n", row.group.c_str(), row.name.c_str(),
                    row.minimaRatio, row.mediansRatio, row.goal, misses ? "  above" : "");
    }
    std::printf("%zu of %zu ratios of the minima are above their goals\n", missed, Rows().size());
}

std::size_t HeapBytes() {
    HANDLE heaps[64] = {};
    const DWORD count = std::min(GetProcessHeaps(64, heaps), DWORD{64});
    std::size_t bytes = 0;
    for (DWORD index = 0; index < count; ++index) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[index], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData + entry.cbOverhead;
        }
    }
    return bytes;
}

}  // namespace depot::bench
