// What the workers do with files that were dragged onto a folder of a depot.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "depotbrowser/depot_place.h"
#include "manager/depot_session.h"

namespace depot {

// What is to be put where.
struct DropOrder {
    std::vector<std::string> sources;  // display paths, or paths of the file system
    FolderRef target;
    bool moves = false;
    std::string pattern;  // that files have to match; empty where any may be put
};

// What keeps an item from being put into the folder.
enum class DropObstacle {
    kNone,
    kFileExists,  // a file is in the place of a file: it is replaced only if the user agrees
    kExists,      // anything else is in its place, itself included
    kInside,      // it would lie in itself
    kBadName,
    kOtherType,  // it does not match the pattern
    kFailed,     // for a reason of the system or of the directory
};

struct DroppedItem {
    std::string source;
    std::string name;
    DropObstacle obstacle = DropObstacle::kNone;
    std::string reason;  // where one is known
    bool isFolder = false;
};

// Looks at every item and at its place. Nothing is changed.
struct DropExamination {
    bool succeeded = false;
    std::vector<DroppedItem> items;
};
DropExamination ExamineDrop(DepotSession& session, const DropOrder& order);

// Set by the window to end what is at work between two files.
using StopSign = std::shared_ptr<std::atomic<bool>>;

// Copies or moves the items that were examined. A file replaces another one where that was found
// and nowhere else; what appeared meanwhile stays, and the item fails. A failure of one does not
// hold up the others. What is moved to another place of storage is removed only after it was seen
// there. The items come back with what kept them.
struct DropOutcome {
    bool succeeded = false;  // that there is an outcome
    std::vector<DroppedItem> items;
};
DropOutcome PutDropped(DepotSession& session, const DropOrder& order,
                       const std::vector<DroppedItem>& items, const StopSign& stop);

}  // namespace depot
