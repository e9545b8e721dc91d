// The way of edits that waited for a server into its entries.
#pragma once

#include "directory/ldap_items.h"
#include "offline/offline_folder.h"

namespace depot {

// Stores the edits that wait, in their order, each while its entry holds what it was made from, or
// into what it holds where the location merges conflicts. One that cannot be stored so is kept
// among the recovered files, and one message box names those. Where the server cannot be reached
// any more the rest waits on, and so does all while another process is about it. An edit that was
// stored before, by a process that ended then, is not stored twice. Returns false where the server
// was lost before all were tried.
bool StoreWaitingEdits(CLDAPItems& directory, OfflineFolder& folder);

}  // namespace depot
