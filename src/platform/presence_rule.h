// Whether a process may wait for a person at its windows: the decision, without a look at the
// system.
#pragma once

#include <cstdint>
#include <optional>

namespace depot {

// What is known of how a process shows windows.
struct HostFacts {
    // Those of its window station; absent when they cannot be read.
    std::optional<std::uint32_t> stationFlags;
    // The number that the machine's administrator gave the program.
    std::optional<std::uint32_t> quietHost;
};

inline constexpr std::uint32_t kVisibleStation = 1;
inline constexpr std::uint32_t kQuietHost = 1;

// A station whose flags cannot be read counts as seen: there a message that is not shown would be
// missed, and a box that cannot be opened does not wait.
constexpr bool MayAPersonSee(const HostFacts& facts) {
    return facts.quietHost != kQuietHost &&
           (facts.stationFlags.value_or(kVisibleStation) & kVisibleStation) != 0;
}

}  // namespace depot
