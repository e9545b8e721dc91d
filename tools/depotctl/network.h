// Whether a server takes connections, found out within a time limit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace depot::ctl {

// Returns how many seconds a connection is waited for where a location's own limit is `seconds`, 0
// for none: never more than ten.
std::uint32_t ConnectLimit(std::uint32_t seconds);

// Tries to connect to each of the hosts, which blanks separate and each of which may name its own
// port behind a colon. Returns nothing as soon as one answers, else, in plain words, why the last
// one did not. Waits for each as long as ConnectLimit says.
std::optional<std::string> WhyNobodyAnswers(const std::string& hosts, std::uint32_t port,
                                            std::uint32_t seconds);

}  // namespace depot::ctl
