// Putting the edits of two people who changed the same profile together, value by value. Nothing
// here asks the system.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace depot {

// A value that both sides changed, each in another way. Without a key it stands for what a section
// holds beside values: comments, and lines that are no values.
struct MergeConflict {
    std::string section;
    std::string key;
    friend bool operator==(const MergeConflict&, const MergeConflict&) = default;
};

struct ProfileMerge {
    std::string bytes;
    std::vector<MergeConflict> conflicts;
    bool namesAreUtf8 = false;  // of the conflicts; else they are in the profile's own code page
};

// The three versions of a profile: what both sides started from, and what either made of it.
struct ProfileVersions {
    std::string_view base;
    std::string_view theirs;
    std::string_view ours;
};

// Whose value a value has that both sides changed.
enum class MergeWinner : std::uint8_t { kTheirs, kOurs };

// Returns theirs with what ours changed since the base. Sections and keys are compared as the
// profile functions do: without regard to letter case, the first of several of one name being the
// one that is read; the n-th of one name is compared with the n-th. The order, the comments and the
// spelling of theirs stay. What ours added stands behind what it stands behind in ours.
//
// A value that both sides changed, to different texts, stays as theirs has it and is a conflict,
// and so is a comment that ours changed in a section that theirs has, too. Where one side changed
// nothing the result is the other side, byte for byte.
//
// Where ours wins such a value is as ours has it, and the comments that ours added stand beside
// those of theirs: all of them stay. The conflicts are named all the same.
//
// Nothing comes back where both sides changed something and one of the three is no profile: a
// profile has a section's header before its first value, holds no NUL, and is encoded as the other
// two, as narrow text or as UTF-16 with a byte order mark. In UTF-16 only the letters of ASCII are
// compared without case.
std::optional<ProfileMerge> MergeProfiles(const ProfileVersions& versions,
                                          MergeWinner winner = MergeWinner::kTheirs);

}  // namespace depot
