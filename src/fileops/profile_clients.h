// The files that a Skein profile depends on.
#pragma once

#include <cstdint>
#include <string>

#include "manager/depot_session.h"

namespace depot {

// One entry of a profile's list.
struct ProfileClient {
    std::string key;
    std::string entry;        // a resource's without its mark
    std::string source;       // where the file is
    bool isResource = false;  // a file of the component's resource folder
};

// How many clients the session's current file lists; at most 10,000 are looked at.
std::int32_t ClientCount(const DepotFileContext& file);

// Returns the client with that number, from 1 on. REQUIRES: the session has a current file.
ProfileClient ClientOf(DepotSession& session, std::int32_t number);

// The folder of a profile's path, with one backslash; a path without any has none.
std::string FolderOfProfile(const std::string& path);

}  // namespace depot
