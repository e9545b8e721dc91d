// How a value must be quoted in an INI file to be read back exactly.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// The profile reader strips the blanks and tabs around a value and then one pair of enclosing
// quotes. Returns the text to store for `value` so that the reader gives `value` again: in single
// quotes when it begins or ends with a blank or tab or is enclosed in single quotes, in double
// quotes when it is enclosed in double quotes, else as it is.
std::string QuoteProfileValue(std::string_view value);

}  // namespace depot
