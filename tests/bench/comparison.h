// Measuring an operation against a raw twin: the same system calls doing the same work, in the same
// process and interleaved with it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace depot::bench {

// How often each side of a comparison runs, and how often where one run takes seconds.
inline constexpr int kUsualRepetitions = 15;
inline constexpr int kFewRepetitions = 7;

// What a comparison found, in microseconds.
struct Minima {
    double own;
    double raw;
};

// Runs `measured` and `raw` in turns, first to warm up and then `repetitions` times each, and
// prints one row: the minimum and the median of both and the ratios. The goal is the highest ratio
// that counts as good. Returns the minima.
Minima Compare(const std::string& name, double goal, const std::function<void()>& measured,
               const std::function<void()>& raw, int repetitions = kUsualRepetitions);

// Prints how long an operation takes that has no raw twin.
void PrintTime(const std::string& name, const std::function<void()>& operation);

// Prints by what factor the time of each side grew from one comparison to a larger one.
void PrintGrowth(const std::string& name, const Minima& smaller, const Minima& larger);

void PrintHeader(const std::string& title);

// What an operation waits for over a slow line.
struct TripRow {
    std::string name;
    double goal;  // the most round trips that count as good
    int counted;
    std::vector<double> elapsed;  // the time in round trips, one for each length of a round trip
};
void PrintTripsHeader(const std::string& title);
void PrintTrips(const TripRow& row);

// Prints the ratios of every comparison and the round trips so far in one table, and how many miss
// their goals.
void PrintSummary();

// The bytes of all blocks that are allocated from this process's heaps, with what the heaps add to
// each.
std::size_t HeapBytes();

}  // namespace depot::bench
