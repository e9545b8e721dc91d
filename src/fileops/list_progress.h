// The progress of a list of transfers as that of one.
#pragma once

#include "fileops/transfer_progress.h"

namespace depot {

// Adds up what the transfers of a list tell. Borrows the watcher.
class ListProgress {
public:
    ListProgress(const TransferWatcher& watcher, std::size_t items)
        : watcher_(watcher), itemsLeft_(static_cast<std::uint32_t>(items)) {}

    // Returns the watcher for the next transfer; it must not outlive this object.
    TransferWatcher Next() {
        done_ = {done_.filesDone + current_.filesDone, done_.filesInAll + current_.filesInAll,
                 done_.bytesDone + current_.bytesDone};
        current_ = {};
        --itemsLeft_;
        if (!watcher_) return {};
        return [this](const TransferProgress& progress) { return Note(progress); };
    }

    // Whether the list is to end before its next transfer.
    bool IsStopped() const { return stopped_; }

private:
    bool Note(const TransferProgress& progress) {
        current_ = progress;
        stopped_ = !watcher_({done_.filesDone + current_.filesDone,
                              done_.filesInAll + current_.filesInAll + itemsLeft_,
                              done_.bytesDone + current_.bytesDone});
        return !stopped_;
    }

    const TransferWatcher& watcher_;
    std::uint32_t itemsLeft_;
    TransferProgress done_, current_;
    bool stopped_ = false;
};

}  // namespace depot
