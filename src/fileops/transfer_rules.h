// How a transfer goes about its work, whichever way it goes.
#pragma once

#include "fileops/copied_source.h"
#include "fileops/directory_transfer.h"
#include "fileops/transfer_plan.h"

namespace depot {

// How a transfer goes about its work.
struct TransferRules {
    ExistingEntries existing;
    SourceFate fate;
    const TransferWatcher& watcher;
    // Receives what is copied of a source that is to be removed; may be null.
    CopiedSource* copied = nullptr;
    // Whether a file that shows no bytes ends the transfer. On its way through a local folder it
    // would look like an empty one, which may replace others.
    bool refusesUnseenBytes = false;

    // Starts the list of what is copied of a tree.
    void NoteTree(const TransferPlan& plan, std::string TransferStep::*nameOf) const {
        if (copied != nullptr) *copied = SourceOf(plan, nameOf);
    }
    // Notes the bytes that were copied of a file of that plan.
    void NoteFile(const TransferPlan& plan, const TransferStep& step, const void* bytes,
                  std::size_t length) const {
        if (copied == nullptr) return;
        const auto index = static_cast<std::size_t>(&step - plan.steps.data());
        copied->items[index].contents = DigestOf(bytes, length);
    }
    // Notes a source that is one file.
    void NoteSource(const std::string& name, const void* bytes, std::size_t length) const {
        if (copied != nullptr) copied->SetFile(name, bytes, length);
    }
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
