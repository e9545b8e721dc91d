// Texts of labels and buttons, in which an ampersand stands before the access key.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// Returns a label as it is read out: without its access key's mark, also where the key stands in
// brackets behind the text, as it does in languages that have no letters for keys.
std::wstring WithoutAccessKey(std::wstring_view label);

// Returns a label that shows the text as it is.
std::wstring AsLabel(std::wstring_view text);

}  // namespace depot
