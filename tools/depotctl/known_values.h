// The values of a depot's definition that the component knows.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace depot::ctl {

// Whose value it is: the depot's, any location's, or a directory location's only.
enum class ValueScope { kDepot, kLocation, kDirectory };

struct KnownValue {
    const char* name;  // without a location's number
    ValueScope scope;
    bool isNumber;
    std::uint32_t lowest, highest;  // of a number
    const char* absent;             // what is taken when the value is not there
    const char* outside;            // what another number counts as

    bool IsNumbered() const { return scope != ValueScope::kDepot; }
};

std::span<const KnownValue> KnownValues();

// What a value's name says: which value it is, and of which location.
struct ValueName {
    const KnownValue* known = nullptr;
    int location = 0;  // 0 for values of the depot
};

// Returns nothing for a name that the component never asks for. Display names are not among these.
std::optional<ValueName> ParseValueName(std::string_view name);

// What language's display name a value is, such as "eng"; nothing for other values.
std::optional<std::string> DisplayLanguage(std::string_view name);

// Returns the name that was probably meant; empty when none is near.
std::string NearestValueName(std::string_view name);

}  // namespace depot::ctl
