// Names of values in a depot's definition: which ones the component asks for, and what was meant by
// others.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/depot_values.h"

namespace depot::ctl {

// Returns the row of a value by its name without a location's number, in any letter case; null
// where there is none.
const DepotValue* FindValue(std::string_view base);

// What becomes of the depot when the value is missing or ignored, such as "389 is taken".
std::string UnreadText(const DepotValue& value);

// What becomes of a number that is there and cannot be used, such as "ignored: 389 is taken".
std::string UnreadableText(const DepotValue& value);

// What a value's name says: which value it is, and of which location.
struct ValueName {
    const DepotValue* known = nullptr;
    int location = 0;  // 0 for values of the depot
};

// Returns nothing for a name that the component never asks for. Display names are not among these.
std::optional<ValueName> ParseValueName(std::string_view name);

// Whether a value is the password of a location, which is never shown.
bool IsPassword(std::string_view name);

// What language's display name a value is, such as "eng"; nothing for other values.
std::optional<std::string> DisplayLanguage(std::string_view name);

// Returns the name that was probably meant; empty when none is near.
std::string NearestValueName(std::string_view name);

}  // namespace depot::ctl
