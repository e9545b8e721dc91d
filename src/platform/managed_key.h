// Settings that administrators, users and the machine may give: which of them counts.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/registry_key.h"

namespace depot {

// Where a setting stands, the first that has it counts. What stands in a policy key is written by
// administrators only, also in the user's hive.
enum class SettingPlace : std::uint8_t { kMachinePolicy, kUserPolicy, kUser, kMachine };

template <class Value>
struct PlacedSetting {
    Value value;
    SettingPlace place;

    bool IsPolicy() const { return place <= SettingPlace::kUserPolicy; }
};

// Returns where policies stand for what stands in `key`, a path that begins with "Software\".
std::string PolicyKeyOf(std::string_view key);

// Everything that policies of this maker stand in.
inline constexpr char kPoliciesKey[] = "Software\\Policies\\Quillon";

struct SettingRange {
    std::uint32_t lowest = 0, highest = 0xFFFFFFFF;
};

// A key of settings in both hives, with the policies that win over it, as they are when it is made.
class ManagedKey {
public:
    enum class Part : std::uint8_t { kAll, kPoliciesOnly };
    explicit ManagedKey(const std::string& key, Part part = Part::kAll);

    // Whether nothing is there, as on most machines.
    bool IsEmpty() const;

    // Returns the setting of that name. A text that is too long, and a number of another type or
    // out of range, counts as absent: the next place is asked.
    std::optional<PlacedSetting<std::string>> Text(const std::string& name) const;
    std::optional<PlacedSetting<std::uint32_t>> Number(const std::string& name,
                                                       SettingRange range = {}) const;

private:
    std::array<std::optional<RegistryKey>, 4> places_;
};

}  // namespace depot
