// The way to a folder, a name at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace depot {

// Where a way to a folder begins to be shown: its end always is, and as much before it as there is
// room for. Where a part is left out, `moreWidth` is needed for what stands in its place.
std::size_t FirstShownCrumb(const std::vector<int>& widths, int room, int moreWidth);

// Returns the relative folder that the first `count` names below a depot lead to.
std::string LeadingFolder(std::string_view relative, std::size_t count);

}  // namespace depot
