// How operations of given signatures report what they came to.
#pragma once

#include <string>

#include "fileops/copy.h"
#include "store/store.h"

namespace depot {

// Returns 1, or 0 after making the failure the store's last one; its text goes into `errorText`,
// which may be null.
int Report(Store& store, const Result& result, std::string* errorText);

// The failure of a copy in the codes that callers know, as the last one of the source's store, or
// of the target's where only that has codes of its own.
Result ReportedCopy(const CopyRequest& request, const CopyOutcome& outcome);

}  // namespace depot
