// What operations wait for, as a relay counts it.
#pragma once

#include <ostream>

namespace depot::test {

// Opening a connection is a round trip, too.
struct Waits {
    int connections = 0;
    int roundTrips = 0;

    friend bool operator==(const Waits&, const Waits&) = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Waits& waits) {
    return stream << waits.connections << " connections, " << waits.roundTrips << " round trips";
}

}  // namespace depot::test
