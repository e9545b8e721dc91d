// The order of the rows in the list of files.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "depotbrowser/browse_entry.h"

namespace depot {

// The columns from the left, as clients number them.
enum class Column { kName, kType, kSize, kDate };
inline constexpr int kColumns = 4;

struct EntryOrder {
    Column column = Column::kName;
    bool descending = false;
};

// Compares two names as the user expects them ordered: negative, 0 or positive.
using CompareNames = std::function<int(const std::wstring& left, const std::wstring& right)>;

// Puts the rows, which are indexes into `entries`, in order: folders always before files, then by
// the column, then by name. Only the column's own order is turned round by `descending`.
void SortRows(std::vector<std::size_t>& rows, const std::vector<BrowseEntry>& entries,
              EntryOrder order, const CompareNames& compareNames);

// The order after a click on a column's header: its own again turns it round, another one starts
// upwards.
EntryOrder OrderAfterClick(EntryOrder order, Column clicked);

// The column that a number stands for; a number without a column is the name's.
Column ColumnOf(long number);

}  // namespace depot
