// The widths of columns as one text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace depot {

std::string ColumnWidthsText(const std::vector<int>& widths);

// Returns the widths; empty unless the text holds exactly `count` numbers that a column can have.
std::vector<int> ParseColumnWidths(std::string_view text, std::size_t count);

}  // namespace depot
