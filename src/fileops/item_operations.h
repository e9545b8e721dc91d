// Operations on items and on lists of items, which may come from any depots.
#pragma once

#include <string>

#include "fileops/shell_operation.h"
#include "model/depot_items.h"

namespace depot {

// Copies an item to the target's path in the target's depot. 0 when the source has no depot or
// there is no target.
int CopyItem(const CDepotItem& source, const CDepotItem* target, bool failIfExists,
             std::string* errorText);

// Deletes an item; 0 when it has no depot.
int DeleteItem(const CDepotItem& item);

// Has the shell do one operation on all items of the list. An empty list succeeds.
int ShellOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                   FILEOP_FLAGS flags, HWND window, std::string* errorText);

// Copies (FO_COPY), deletes (FO_DELETE) or moves (FO_MOVE) one item between any two stores; an
// existing target is a failure, any other operation is refused.
//
// Kept: a move whose copy succeeded counts as done even when the source could not be deleted, and a
// failed copy leaves the error text alone.
// Relied on by: existing clients, which look at the target only.
int ItemOperation(const CDepotItem& item, const CDepotItem* target, UINT operation, HWND window,
                  std::string* errorText);

// Does one operation on a list of items of any stores. With a target in a directory the items are
// done one by one, up to the first failure. Otherwise the shell does them all at once; what comes
// from a directory reaches it as a copy in a temporary folder, which is gone afterwards.
int ListOperation(const CDepotItems& items, const CDepotItem* target, UINT operation,
                  FILEOP_FLAGS flags, HWND window, std::string* errorText);

}  // namespace depot
