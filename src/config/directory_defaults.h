// What counts for directories whose definitions do not say it, and what counts whatever they say.
#pragma once

#include <cstdint>
#include <optional>

#include "config/depot_values.h"

namespace depot {

// The key of these settings, in both hives; policies win over it.
inline constexpr char kDefaultsKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotIntr";

// 0 switches `Offline` off, also where a definition asks for it: nothing is kept, nothing waits.
inline constexpr char kOfflineAllowed[] = "OfflineAllowed";

struct DirectoryDefaults {
    std::optional<std::uint32_t> offline, offlineSize, keepConnection;
    bool isOfflineAllowed = true;

    bool AreNone() const { return isOfflineAllowed && !offline && !offlineSize && !keepConnection; }
};

// Puts the defaults into what was read of a directory location, in the place of what `source` does
// not say of it.
void ApplyDefaults(const DirectoryDefaults& defaults, const ValueSource& source, int location,
                   LocationSettings& settings);

// Reads them from the registry.
DirectoryDefaults ReadDirectoryDefaults();

}  // namespace depot
