#include "config/directory_defaults.h"
#include "platform/managed_key.h"

namespace depot {
namespace {

// The row of the value that the default is for says what it may be; the table itself stays out of
// the component.
consteval SettingRange RangeOf(std::string_view name) {
    for (const DepotValue& value : kDepotValues) {
        if (value.name == name) return {value.form.lowest, value.form.highest};
    }
    throw "no such value";
}

std::optional<std::uint32_t> NumberIn(const ManagedKey& key, const char* name, SettingRange range) {
    const auto found = key.Number(name, range);
    return found ? std::optional(found->value) : std::nullopt;
}

}  // namespace

DirectoryDefaults ReadDirectoryDefaults() {
    const ManagedKey key(kDefaultsKey);
    if (key.IsEmpty()) return {};
    DirectoryDefaults defaults;
    defaults.offline = NumberIn(key, "Offline", RangeOf("Offline"));
    defaults.offlineSize = NumberIn(key, "OfflineSize", RangeOf("OfflineSize"));
    defaults.keepConnection = NumberIn(key, "KeepConnection", RangeOf("KeepConnection"));
    defaults.isOfflineAllowed = NumberIn(key, kOfflineAllowed, {0, 1}).value_or(1) == 1;
    return defaults;
}

}  // namespace depot
