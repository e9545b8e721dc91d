// Listings of local folders that are to be published into a directory.
#pragma once

#include <string>

#include "directory/ldap_item.h"

namespace depot {

// Appends every folder below `folder`, each before the folders inside it.
void AddLocalFoldersBelow(const std::string& folder, LdapItemList& items);

enum class Subfolders { kLeaveOut, kTake };

// Appends what `folder` holds itself: its files and, when they are to be taken, its folders.
void AddLocalChildren(const std::string& folder, Subfolders subfolders, LdapItemList& items);

// Appends one path; it counts as a folder when the file system says so.
void AddLocalPath(const std::string& path, LdapItemList& items);

}  // namespace depot
