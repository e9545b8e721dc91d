// Whether a place can be written, found by trying.
#pragma once

#include <string>

#include "directory/ldap_items.h"
#include "model/depot.h"

namespace depot {

// Tests one place and returns 1 when it can be written, else 0 with the reason, led by `shownName`
// or the path, in `errorText`. A folder is tested by a probe file inside it, any other path by
// opening it; what the test created is removed again, what was there stays. An entry of a directory
// is writable when it exists or can be created; created entries are removed again, parents
// included.
//
// Contract: nothing here calls it.
int TestWritable(std::uint32_t storeType, const std::string& storagePath, CLDAPItems* connection,
                 std::string* errorText, const std::string& shownName = {});

// Tests the place that a display path names, each time anew.
int TestPathWritable(CDepot& depot, const std::string& path, std::string* errorText);

// Tests the depot's active location. The first answer holds for the life of the location; later
// failures give "access denied" as the reason.
//
// Contract: nothing here calls it.
int TestDepotWritable(CDepot& depot, const std::string& shownName, std::string* errorText);

}  // namespace depot
