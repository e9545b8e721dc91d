// Storing an edit over nothing but what it was made from, or into what others have stored since.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/profile_merge.h"
#include "directory/entry_store.h"
#include "platform/digest.h"

namespace depot {

// An edit of one entry. Borrows all that it is made of.
struct GuardedEdit {
    EntryStore& entries;
    const std::string& dn;
    std::span<const std::uint8_t> bytes;   // what the entry is to hold
    const std::optional<Digest>& fetched;  // what it was made from; nothing is never stored
    std::optional<std::span<const std::uint8_t>> base;  // the same, whole; nothing merges nothing
};

// What became of an edit that met another one.
struct GuardedMerge {
    // What the entry holds now instead of the edit's own bytes.
    std::optional<std::vector<std::uint8_t>> stored;
    // What could not be put in, where both sides changed a value.
    std::optional<ProfileMerge> unmerged;
};

// Stores the edit while the entry holds what it was made from, else fails with kContentsChanged and
// leaves the entry. With a base it is put into what the entry holds then, value by value, and
// `merge` says so; where that left something out the result is the failure too. REQUIRES: a
// connection.
Result StoreGuarded(const GuardedEdit& edit, GuardedMerge& merge);

// Returns `theirs` with what `ours` changed of `base`; nothing where that is not possible, or both
// changed a value.
std::optional<std::vector<std::uint8_t>> MergedBytes(std::span<const std::uint8_t> base,
                                                     std::span<const std::uint8_t> theirs,
                                                     std::span<const std::uint8_t> ours);

// Returns the values that both sides changed, one a line, such as "[Session] Title". Long lists and
// names are cut.
std::string ConflictList(const ProfileMerge& merge);

}  // namespace depot
