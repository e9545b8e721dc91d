// What of a text is written to the event log, and how often a process writes there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace depot {

// Counts UTF-16 units.
inline constexpr std::size_t kEventTextLimit = 4000;

// Returns the text, up to its first NUL, as a value for a message of the log: cut to the limit, in
// one line, and without the percent signs that viewers of the log replace by something else: a
// blank stands behind them.
std::wstring EventText(std::wstring_view text);

// Keeps a program that fails again and again from pushing the entries of others out of the log.
// Not safe for several threads by itself.
class EntryBudget {
public:
    static constexpr int kEntries = 60;
    static constexpr std::uint64_t kMilliseconds = 60000;

    // Whether another entry may be written at `now`, which counts milliseconds.
    bool Take(std::uint64_t now) {
        if (now - begin_ >= kMilliseconds) {
            begin_ = now;
            taken_ = 0;
        }
        if (taken_ == kEntries) return false;
        ++taken_;
        return true;
    }

private:
    std::uint64_t begin_ = 0;
    int taken_ = 0;
};

}  // namespace depot
