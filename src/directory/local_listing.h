// Listings of local folders that are to be published into a directory.
#pragma once

#include <cstdint>
#include <string>

#include "directory/ldap_item.h"

namespace depot {

// Appends every folder below `folder`, each before the folders inside it.
void AddLocalFoldersBelow(const std::string& folder, LdapItemList& items);

inline constexpr std::uint32_t kNotListed = 0xFFFFFFFF;

enum class Subfolders { kLeaveOut, kTake };

// Appends what `folder` holds itself: its files and, when they are to be taken, its folders.
// Returns how many links to folders were left out, or kNotListed when not all of the folder could
// be listed.
std::uint32_t AddLocalChildren(const std::string& folder, Subfolders subfolders,
                               LdapItemList& items);

// Appends one path; it counts as a folder when the file system says so.
void AddLocalPath(const std::string& path, LdapItemList& items);

}  // namespace depot
