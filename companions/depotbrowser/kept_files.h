// What the workers find out about kept copies, and do with them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "manager/depot_session.h"
#include "recovery/kept_values.h"
#include "recovery/restoration.h"

namespace depot {

// A kept copy whose entry one of the shown depots has.
struct KeptFile {
    KeptCopy copy;
    std::string entry;  // its display path, or its DN where it has none
};

// Returns those of all shown depots: recovered ones first, then what waits. Asks no server.
std::vector<KeptFile> FindKeptFiles(DepotSession& session);

// Whether any of the depots keeps its files in a directory: nothing is kept of others.
bool HasDirectory(const CDepots& depots);

enum class KeptOutcome : std::uint8_t {
    kFailed,       // for the reason
    kDone,         //
    kGone,         // the entry is not there any more
    kChangedNow,   // the entry or the copy was changed within the last moment
    kCannotMerge,  // the versions cannot be put together
    kConflicts,    // both changed the same values
    kCopyStays,    // the entry was stored, and the copy is still there for the reason
};

struct KeptResult {
    KeptOutcome outcome = KeptOutcome::kFailed;
    std::string reason;  // of a failure, where one is known
    std::vector<MergeConflict> conflicts;
};

// Stores a recovered file into its entry and deletes it then.
KeptResult RestoreKept(DepotSession& session, const KeptCopy& copy, RestoreRules rules);

// Writes the bytes to a file outside of the depots, over one that is there.
KeptResult ExportKept(const KeptCopy& copy, const std::string& path);

// Deletes a copy for good, unless it is another one by now.
KeptResult DiscardKept(const KeptCopy& copy);

// The values in which a copy, its entry and what it was made from differ.
struct KeptComparison {
    KeptOutcome outcome = KeptOutcome::kFailed;
    std::string reason;  // of a failure, and why the entry's values are missing
    std::optional<std::vector<KeptValue>> values;  // nothing where one of them is no profile
};
KeptComparison CompareKept(DepotSession& session, const KeptCopy& copy);

}  // namespace depot
