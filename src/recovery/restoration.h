// Storing a recovered file where it belongs.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "recovery/kept_target.h"
#include "recovery/kept_values.h"

namespace depot {

// How far it may go beyond a target that holds what the copy was made from.
struct RestoreRules {
    bool merges = false;    // the copy's changes are put into what the target holds
    bool replaces = false;  // whatever it holds is replaced; with `merges` what both changed
    bool makes = false;     // a target that is not there is made, also where it was there before
    MergeCharacters characters = MergeCharacters::kOfProcess;
};

// Why nothing is stored.
enum class RestoreObstacle : std::uint8_t {
    kGone,       // the target is not there any more
    kChanged,    // it is not what the copy was made from, or that is not known
    kNoBase,     // what the copy was made from is not known, so that nothing can be merged
    kNoProfile,  // one of the versions is no profile
    kConflicts,  // both changed the same values
};

// What is going to be stored, or why nothing is.
struct RestorePlan {
    std::optional<RestoreObstacle> obstacle;
    std::vector<MergeConflict> conflicts;  // the names are in UTF-8
    KeptBytes bytes;
    bool isStoredAlready = false;
    bool isMerged = false;
};

// A copy with its bytes.
struct ReadCopy {
    const KeptCopy& copy;
    const KeptBytes& bytes;
};

// Plans it. `present` is what the target holds.
RestorePlan PlanRestore(const KeptTarget& target, ReadCopy ours,
                        const std::optional<KeptBytes>& present, RestoreRules rules);

// How far the storing came that failed.
enum class StoreStep : std::uint8_t {
    kWrite,     // the target is as it was
    kReadBack,  // it was written and cannot be read
    kCompare,   // it was written and holds something else
    kDelete,    // it holds what was planned, but the copy is still there
};

struct StoreFailure {
    StoreStep step;
    Error why;
    TargetContents::Step reading = TargetContents::Step::kRead;  // where the read back failed
};

// Does what was planned without an obstacle. The copy is deleted when its bytes are seen where they
// belong, and not before. Returns nothing when it is done.
std::optional<StoreFailure> StorePlan(const KeptTarget& target, ReadCopy ours,
                                      const std::optional<KeptBytes>& present,
                                      const RestorePlan& plan);

}  // namespace depot
