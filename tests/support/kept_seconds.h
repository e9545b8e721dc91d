// Runs of suites in which sessions keep their connections.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace depot::test {

// For how long the locations that tests define have sessions keep a connection, in seconds: 0 but
// where DEPOTINTR_TEST_KEEP says otherwise.
inline std::uint32_t KeptSeconds() {
    const char* const seconds = std::getenv("DEPOTINTR_TEST_KEEP");
    return seconds == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(seconds, nullptr, 10));
}

}  // namespace depot::test
