// Operations on items and on lists of items, which may come from any depots.
#pragma once

#include <string>

#include "fileops/shell_operation.h"
#include "fileops/transfer_progress.h"
#include "model/depot_items.h"

namespace depot {

// Copies an item to the target's path in the target's depot. 0 when the source has no depot or
// there is no target.
int CopyItem(const CDepotItem& source, const CDepotItem* target, bool failIfExists,
             std::string* errorText, const TransferWatcher& watcher = {});

// Deletes an item; 0 when it has no depot.
int DeleteItem(const CDepotItem& item);

// Has the shell do one operation on all items of the list. An empty list succeeds. Items and
// targets in directories are refused. The root of a depot is neither deleted nor moved nor renamed.
// Items of one name are not moved together where the shell would not ask before it replaces the
// first by the second. A deletion pays no regard to a target.
int ShellOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                   FILEOP_FLAGS flags, HWND window, std::string* errorText);

// Copies (FO_COPY), deletes (FO_DELETE) or moves (FO_MOVE) one item between any two stores. An
// existing file is a failure, an existing entry of a directory gets the new contents; any other
// operation is refused. A source is deleted only when everything it holds was copied, and only as
// far as it still holds what was copied: what others changed or added meanwhile stays, is counted
// in the error text, and fails the move.
//
// Kept: a move whose copy succeeded counts as done even when the system or the directory refuses to
// delete the source, and a failed copy leaves the error text alone.
int ItemOperation(const CDepotItem& item, const CDepotItem* target, UINT operation, HWND window,
                  std::string* errorText, const TransferWatcher& watcher = {});

// Does one operation on a list of items of any stores. With a target in a directory the items are
// done one by one, up to the first failure. Otherwise the shell does them all at once; what comes
// from a directory reaches it as a copy in a temporary folder, which is gone afterwards, and the
// watcher hears of these copies. A list that is stopped fails between two files. A moved entry is
// deleted as in ItemOperation, and a deletion takes no notice of the target. An entry whose name,
// or one below it, no local file can have is deleted without a copy, and neither copied nor moved;
// so are, with LDAP_NAMING_VIOLATION, items of one name where one is an entry and the shell would
// not ask.
int ListOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                  FILEOP_FLAGS flags, HWND window, std::string* errorText,
                  const TransferWatcher& watcher = {});

}  // namespace depot
