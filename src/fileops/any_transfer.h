// Copying, moving and making anywhere, as clients ask for it.
#pragma once

#include "fileops/any_place.h"

namespace depot {

struct TransferWish {
    // Whether a file may take the place of one that is there, and a copied folder may go into one.
    // Nothing takes the place of another kind of thing in any case.
    bool mayExist = false;
    TransferWatcher watcher{};
    // Whether a move that has to copy looks at the target once more before it removes the source.
    bool looksBeforeRemoving = false;
};

// Copies a file, or a folder with all it holds. A link to a folder, or a name that the target
// cannot hold, makes the copy fail after all else was copied.
Result CopyAnywhere(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish);

// Moves a file, or a folder with all it holds. What cannot be renamed is copied and then removed as
// far as it still is what was copied: a failure loses nothing. A root stays, and a folder replaces
// none.
Result MoveAnywhere(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish);

// Makes a folder and the folders above it.
Result MakeFolderAt(const AnyPlace& place, bool mayExist);

// Returns the place that something takes in a folder under its own name.
Result PlaceInFolder(CDepots& depots, const AnyPlace& from, const std::string& folder,
                     AnyPlace& place);

}  // namespace depot
