// The values of a profile wherever it is, as the profile functions return them.
#pragma once

#include <string>
#include <vector>

#include "depotctl/places.h"
#include "depotctl/profile_copy.h"

namespace depot::ctl {

// A value of two profiles that is not the same in both; nothing where one has none.
struct ValueDifference {
    std::string section, key;
    std::optional<std::string> first, second;
};

// Returns all values of a profile. Ends the command when it cannot be read, or is no profile.
std::vector<ProfileRow> ValuesOf(const Place& place);

// Compares values by their sections and keys, in which letter case does not count, in the order of
// the first profile; what only the second one has comes last.
std::vector<ValueDifference> CompareValues(const std::vector<ProfileRow>& first,
                                           const std::vector<ProfileRow>& second);

}  // namespace depot::ctl
