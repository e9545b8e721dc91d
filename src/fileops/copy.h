// Copying and moving files and trees, from any store to any other.
#pragma once

#include "fileops/copied_source.h"
#include "fileops/overlap.h"
#include "fileops/transfer_progress.h"
#include "store/store.h"

namespace depot {

struct CopyRequest {
    StorePath from;
    StorePath to;
    ExistingEntries existing = ExistingEntries::kReplace;
    SourceFate fate = SourceFate::kStays;
    TransferWatcher watcher{};
    // Receives what of the source has arrived, by which RemoveCopied removes it; may be null.
    CopiedSource* copied = nullptr;
    // The bytes of a source that was found to be a file, and whole where it goes; may be null.
    const FileBuffer* known = nullptr;
    // A folder is refused with kInvalid.
    bool filesOnly = false;
};

// At what a copy ended.
enum class CopyStage : std::uint8_t {
    kOpening,  // a store
    kSource,   // finding out what the source is
    kTree,     // reading what it holds
    kTarget,   // writing
};

struct CopyOutcome {
    Result result{};
    CopyStage stage = CopyStage::kOpening;
    bool isFile = true;  // the source is one file
};

// Copies a file, or a folder with all that it holds. Whatever has to be left out of a tree, links
// and names, makes the copy fail with kIncomplete: all else is copied before, but nothing when the
// source is to go. A copy onto or into itself is refused with kInvalid, by whatever stores the
// two are named.
//
// Within a store that copies files by its own means the source is one file. A tree between two
// stores that the system does not reach passes through a temporary local folder, which is gone
// afterwards. A failure leaves what was copied until then.
CopyOutcome Copy(const CopyRequest& request);

// The same where the source may be a folder also within a store that copies files by its own means.
CopyOutcome CopyWhole(const CopyRequest& request);

// Gives a file or folder another name in its store, or another folder above it. Where the store
// does not rename folders that hold others the tree is copied, and then removed as far as it still
// holds what was copied. A folder is moved neither into itself nor onto a folder above it.
Result Move(Store& store, PathPair paths, const TransferWatcher& watcher);

}  // namespace depot
