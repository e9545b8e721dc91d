// How operations of given signatures report what they came to.
#pragma once

#include "fileops/copy.h"
#include "store/store.h"

namespace depot {

// The result, whose failure becomes the store's last one.
Result Reported(Store& store, Result result);

// The failure of a copy in the codes that callers know, as the last one of the source's store, or
// of the target's where only that has codes of its own.
Result ReportedCopy(const CopyRequest& request, const CopyOutcome& outcome);

// The same of a move within a store.
Result ReportedMove(Store& store, Result moved);

}  // namespace depot
