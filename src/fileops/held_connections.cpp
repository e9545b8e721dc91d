#include "fileops/held_connections.h"

#include <algorithm>

#include "fileops/file_place.h"

namespace depot {

bool HeldConnections::Hold(CDepot* depot, const std::string& path, std::string* errorText) {
    CLDAPItems* const directory = depot ? DirectoryOf(*depot, path) : nullptr;
    if (directory == nullptr) return true;
    auto found = std::find_if(held_.begin(), held_.end(),
                              [&](const Held& held) { return held.directory == directory; });
    if (found == held_.end()) {
        auto scope = std::make_unique<ConnectionScope>(*directory, errorText);
        found = held_.insert(held_.end(), Held{directory, std::move(scope)});
    }
    return static_cast<bool>(*found->scope);
}

}  // namespace depot
