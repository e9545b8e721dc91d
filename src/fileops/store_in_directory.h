// Storing files and trees in a directory that is connected. All return the directory's code.
#pragma once

#include <functional>
#include <string>

#include "fileops/transfer_rules.h"

namespace depot {

// Adds the file with the folders above it, or replaces what an entry of its name holds.
std::uint32_t StoreContents(CLDAPItems& directory, const std::string& dn, const void* bytes,
                            std::uint32_t length, ExistingEntries existing);

// Is called with the bytes of a local file once they were read.
using NoteBytes = std::function<void(const void* bytes, std::size_t length)>;

// Stores the local file of a step.
std::uint32_t StoreFile(CLDAPItems& directory, const TransferStep& step, ExistingEntries existing,
                        const NoteBytes& note);

// Returns what tells a user of what cannot be stored; empty for nothing.
std::string LeftOutText(const LeftOut& left);

// Stores a local folder with its tree as the entry. What has to be left out is counted; all else is
// stored before the tree counts as failed, but nothing when it would be removed afterwards.
std::uint32_t StoreTree(CLDAPItems& directory, const std::string& folder, const std::string& dn,
                        const TransferRules& rules, LeftOut& left);

}  // namespace depot
