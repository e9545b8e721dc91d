// The control by which a change is made only while an entry is as it is believed to be: server and
// client do the test and the change in one request.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace depot {

// The control's name, among what a server says it offers and in requests.
inline constexpr char kAssertionControl[] = "1.3.6.1.1.12";

// Returns the value of the control, an encoded filter, that asserts that the attribute holds
// exactly these bytes.
std::vector<std::uint8_t> AssertEquals(std::string_view attribute, std::string_view bytes);

// The same for an entry that does not have the attribute.
std::vector<std::uint8_t> AssertAbsent(std::string_view attribute);

}  // namespace depot
