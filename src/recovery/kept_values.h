// The values of kept copies and of what they were made from, and putting them together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/profile_merge.h"
#include "recovery/kept_copies.h"

namespace depot {

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

// Finds the values in which the versions that are known differ, in the order of ours. `values` is
// nothing when one of them is no profile. Fails where no temporary file can be written.
Result DifferentValues(const KeptVersions& versions, std::optional<std::vector<KeptValue>>& values);

// In which code page narrow profiles are merged.
enum class MergeCharacters : std::uint8_t {
    kOfProcess,   // its ANSI code page, as the component merges
    kOfProfiles,  // that in which applications write profiles, while it lasts for the whole
                  // process: no other thread may look into texts meanwhile
};

// Puts ours into the entry's version, as MergeProfiles does; the names of conflicts are in UTF-8.
// Nothing without a base or an entry, and where one of them is no profile.
std::optional<ProfileMerge> MergeKept(const KeptVersions& versions, MergeWinner winner,
                                      MergeCharacters characters);

}  // namespace depot
