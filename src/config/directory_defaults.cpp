#include "config/directory_defaults.h"

#include <string>

#include "platform/text.h"

namespace depot {

void ApplyDefaults(const DirectoryDefaults& defaults, const ValueSource& source, int location,
                   LocationSettings& settings) {
    const std::string suffix = NumberText(static_cast<std::uint32_t>(location));
    const auto apply = [&](const char* name, const std::optional<std::uint32_t>& standard,
                           std::uint32_t& setting) {
        const NumberReading reading = {ValueScope::kDirectory, setting, std::nullopt};
        if (standard && !source.Number(name + suffix, reading)) setting = *standard;
    };
    apply("Offline", defaults.offline, settings.offline);
    apply("OfflineSize", defaults.offlineSize, settings.offlineSize);
    apply("KeepConnection", defaults.keepConnection, settings.keepConnection);
    if (!defaults.isOfflineAllowed) settings.offline = 0;
}

}  // namespace depot
