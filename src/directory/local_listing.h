// Listings of local folders that are to be published into a directory.
#pragma once

#include <cstdint>
#include <string>

#include "directory/ldap_item.h"

namespace depot {

// Contract: nothing here calls these; trees are walked through their store.

// Appends every folder below `folder`, each before the folders inside it. Links are left out, and
// what has a name that the code page cannot hold.
void AddLocalFoldersBelow(const std::string& folder, LdapItemList& items);

inline constexpr std::uint32_t kNotListed = 0xFFFFFFFF;

enum class Subfolders { kLeaveOut, kTake };

// Appends what `folder` holds itself: its files and, when they are to be taken, its folders.
// Returns how many of its children were left out, or kNotListed when not all of the folder could be
// listed: links to folders, and whatever has a name that the code page cannot hold. The latter are
// also stored in `unsafeNames`.
std::uint32_t AddLocalChildren(const std::string& folder, Subfolders subfolders,
                               LdapItemList& items, std::uint32_t* unsafeNames = nullptr);

// Appends one path; it counts as a folder when the file system says so.
void AddLocalPath(const std::string& path, LdapItemList& items);

}  // namespace depot
