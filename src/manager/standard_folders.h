// The product's own folders, as the directory-service library knows them.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace depot {

// Folder paths that are looked up on first use and then kept; each ends in a backslash. An empty
// answer stays empty and is asked for again at the next use.
class StandardFolders {
public:
    // The folder of the user's profile files.
    const std::string& UserFolder() { return Slot(0, 18, 0); }

    // The folder of the component's resource files.
    const std::string& ResourceFolder() { return Slot(2, 1, 3); }

private:
    const std::string& Slot(std::size_t slot, int category, int item);

    // The second and the fourth slot are never filled.
    std::array<std::string, 4> slots_;
};

}  // namespace depot
