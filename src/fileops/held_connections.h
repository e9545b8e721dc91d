// The connections of an operation on several files.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "directory/connection_scope.h"
#include "model/depot.h"

namespace depot {

// Keeps every directory that an operation works on connected until it ends: each is bound once,
// however many files there are.
class HeldConnections {
public:
    // Connects to the directory in which the depot keeps the path; a path of the file system needs
    // none. Returns false when that fails, which is not tried a second time.
    bool Hold(CDepot* depot, const std::string& path, std::string* errorText);

private:
    struct Held {
        CLDAPItems* directory;
        std::unique_ptr<ConnectionScope> scope;
    };
    std::vector<Held> held_;
};

}  // namespace depot
