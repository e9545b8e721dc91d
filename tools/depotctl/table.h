// Tables in plain text.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace depot::ctl {

enum class Align { kLeft, kRight };

using TableRow = std::vector<std::string>;

// Lays the rows out in columns, two blanks apart, a line each; the first row is the heading. With a
// `width` other than 0 no line is wider: the widest columns are cut first, and where even narrow
// columns have no room the last ones are left out. Cells are made printable.
std::string LayoutTable(const std::vector<TableRow>& rows, const std::vector<Align>& alignment,
                        std::size_t width);

}  // namespace depot::ctl
