// What stands in the file name field: one name, or several in quotes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace depot {

// A name that was typed. In quotes it is taken as it stands, without an extension being added.
struct TypedName {
    std::wstring text;
    bool quoted = false;
};

// Takes the field apart: names in quotes, and what stands between them, are names of their own. A
// text without quotes is a single name. Blanks around names are not theirs; empty names are left
// out.
std::vector<TypedName> ParseFileNames(std::wstring_view field);

// Returns the field for these names: one as it stands, several each in quotes.
std::wstring JoinFileNames(const std::vector<std::wstring>& names);

}  // namespace depot
