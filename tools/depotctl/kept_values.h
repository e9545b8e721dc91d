// The values of kept copies and of what they were made from, and putting them together.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/profile_merge.h"
#include "depotctl/kept_copies.h"

namespace depot::ctl {

// The three versions of a profile. Nothing for one that is not known, or is not there.
struct KeptVersions {
    std::optional<KeptBytes> base, entry;
    KeptBytes ours;
};

// A value in which not all versions agree, in UTF-8.
struct KeptValue {
    std::string section, key;
    std::optional<std::string> base, entry, ours;
};

// Returns the values in which the versions that are known differ, in the order of ours. Nothing
// when one of them is no profile.
std::optional<std::vector<KeptValue>> DifferentValues(const KeptVersions& versions);

// Puts ours into the entry's version, as MergeProfiles does, in the code page in which applications
// write profiles; the names of conflicts are in UTF-8. With `oursFirst` ours has the values that
// both changed. Nothing without a base or an entry, and where one of them is no profile.
std::optional<ProfileMerge> MergeKept(const KeptVersions& versions, bool oursFirst);

// Returns the name of a value that both changed, such as "[Session] Title".
std::string ShownConflict(const MergeConflict& conflict);

}  // namespace depot::ctl
