// A list of folder depots that a test puts together without the registry.
#pragma once

#include <memory>
#include <string>

#include "model/depots.h"
#include "support/scratch.h"

namespace depot::test {

// Depots whose roots are folders of one scratch folder.
class DepotWorld {
public:
    DepotWorld() { depots.ownsItems = true; }

    // Appends a depot whose root is the folder `root` of the scratch folder, which is created. The
    // first depot becomes the default one.
    CDepot& Add(const std::string& name, const std::string& displayName, const std::string& root) {
        folder.MakeFolder(root);
        return AddAt(name, displayName, folder.At(root));
    }

    // The same with a root anywhere, of any type, that need not exist.
    CDepot& AddAt(const std::string& name, const std::string& displayName, const std::string& path,
                  LocationType type = kFolderLocation) {
        auto depot = std::make_unique<CDepot>(&depots);
        depot->name = name;
        depot->displayName = displayName;
        auto location = std::make_unique<CDepotPath>(depot->paths.get());
        location->path = path;
        location->type = type;
        depot->paths->Append(std::move(location));
        CDepot& added = *depot;
        depots.Add(depot.release(), false);
        if (depots.defaultDepot == nullptr) depots.defaultDepot = &added;
        return added;
    }

    ScratchFolder folder;
    CDepots depots;
};

}  // namespace depot::test
