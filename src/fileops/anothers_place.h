// Copies of entries that would take the places of local files and folders of other names.
#pragma once

#include <string>

#include "platform/result.h"

namespace depot {

// Fails with LDAP_NAMING_VIOLATION, and ERROR_INVALID_NAME as the system's last error, when the
// path is the short name of a local file or folder of another name.
Result RefuseAnothersPlace(const std::string& path);

// As above, for all places that a local file or tree would take in a local folder.
Result RefuseAnothersPlaces(const std::string& source, const std::string& folder);

}  // namespace depot
