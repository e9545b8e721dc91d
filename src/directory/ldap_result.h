// The directory's codes as results.
#pragma once

#include <cstdint>

#include "platform/result.h"

namespace depot {

// The directory's code for a change whose condition does not hold.
inline constexpr std::uint32_t kContentsChanged = 122;

// Returns what a caller decides by when an operation ended with this code.
// REQUIRES: the code is not LDAP_SUCCESS.
Reason ReasonOf(std::uint32_t code);

// Whether other credentials may help after a log-on that ended with this code: the server has
// looked at those that it got.
bool CredentialsMayHelp(std::uint32_t code);

// Returns the directory's code of a result, LDAP_SUCCESS for one that is done.
inline std::uint32_t CodeOf(const Result& result) {
    return result ? 0 : result.Why().code;
}

}  // namespace depot
