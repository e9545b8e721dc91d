#include "platform/managed_key.h"

namespace depot {
namespace {

constexpr std::string_view kSoftware = "Software\\";

std::optional<RegistryKey> OpenPlace(HKEY hive, const std::string& key) {
    return RegistryKey::Open(hive, key, KEY_QUERY_VALUE);
}

}  // namespace

std::string PolicyKeyOf(std::string_view key) {
    return std::string("Software\\Policies\\").append(key.substr(kSoftware.size()));
}

ManagedKey::ManagedKey(const std::string& key, Part part) {
    const std::string policies = PolicyKeyOf(key);
    places_[0] = OpenPlace(HKEY_LOCAL_MACHINE, policies);
    places_[1] = OpenPlace(HKEY_CURRENT_USER, policies);
    if (part == Part::kPoliciesOnly) return;
    places_[2] = OpenPlace(HKEY_CURRENT_USER, key);
    places_[3] = OpenPlace(HKEY_LOCAL_MACHINE, key);
}

bool ManagedKey::IsEmpty() const {
    for (const auto& place : places_) {
        if (place) return false;
    }
    return true;
}

std::optional<PlacedSetting<std::string>> ManagedKey::Text(const std::string& name) const {
    for (std::size_t at = 0; at < places_.size(); ++at) {
        auto text = places_[at] ? places_[at]->ReadString(name) : std::nullopt;
        if (text) return PlacedSetting<std::string>{*std::move(text), SettingPlace(at)};
    }
    return std::nullopt;
}

std::optional<PlacedSetting<std::uint32_t>> ManagedKey::Number(const std::string& name,
                                                               SettingRange range) const {
    for (std::size_t at = 0; at < places_.size(); ++at) {
        const auto number = places_[at] ? places_[at]->ReadDword(name) : std::nullopt;
        if (!number || *number < range.lowest || *number > range.highest) continue;
        return PlacedSetting<std::uint32_t>{*number, SettingPlace(at)};
    }
    return std::nullopt;
}

}  // namespace depot
