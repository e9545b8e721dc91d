// How a transfer goes about its work, whichever way it goes.
#pragma once

#include "fileops/directory_transfer.h"
#include "fileops/transfer_plan.h"

namespace depot {

// How a transfer goes about its work.
struct TransferRules {
    ExistingEntries existing;
    SourceFate fate;
    const TransferWatcher& watcher;
    // Whether a file that shows no bytes ends the transfer. On its way through a local folder it
    // would look like an empty one, which may replace others.
    bool refusesUnseenBytes = false;
};

// The code, within this layer, of a tree with entries that would become one local file; it is
// reported as LDAP_NAMING_VIOLATION. Outside of the directory's codes.
inline constexpr std::uint32_t kSharedLocalNames = 0x10000;

// Tells of a transfer that was of one file alone. There is nothing left to stop.
inline void NoteSingleFile(const TransferWatcher& watcher, std::uint64_t bytes) {
    if (watcher) watcher({1, 1, bytes});
}

// Runs the steps of a plan up to the first failure, telling the watcher after each file.
template <class DoFolder, class DoFile>
std::uint32_t RunPlan(const TransferPlan& plan, const TransferWatcher& watcher,
                      const DoFolder& doFolder, const DoFile& doFile) {
    TransferProgress progress;
    progress.filesInAll = plan.files;
    for (const TransferStep& step : plan.steps) {
        const std::uint32_t code = step.isFolder ? doFolder(step) : doFile(step, progress);
        if (code != LDAP_SUCCESS) return code;
        if (step.isFolder) continue;
        ++progress.filesDone;
        const bool more = progress.filesDone < progress.filesInAll;
        if (watcher && !watcher(progress) && more) return LDAP_USER_CANCELLED;
    }
    return LDAP_SUCCESS;
}

}  // namespace depot
