// The two client applications and their file types.
#pragma once

#include <optional>

#include "DepotIntr.h"
#include "config/file_types.h"

namespace depot {

// Returns the type of the application's own profiles, or nothing for an unknown application.
inline std::optional<FileType> FileTypeOf(APP_TYPE application) {
    switch (application) {
        case APP_SKEIN:
            return kSkeinProfile;
        case APP_KICKOFF:
            return kKickoffProfile;
        default:
            return std::nullopt;
    }
}

}  // namespace depot
