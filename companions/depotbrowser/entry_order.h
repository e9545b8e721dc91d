// The rows of the list of files, and their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace depot {

// A file or folder as it was listed. Entries of a directory have neither a size nor a date.
struct BrowseEntry {
    std::string name;        // as paths spell it
    std::wstring shownName;  // the same for the screen
    bool isFolder = false;
    std::int32_t fileType = 0;
    bool hasDetails = false;  // whether size and date are known
    std::uint64_t size = 0;
    std::uint64_t date = 0;  // in the file system's units of 100 nanoseconds
    std::wstring typeName;
    std::wstring foldedName;  // the shown name in the letters in which searches compare
    // The relative folder of an entry that a search found in another one than the shown.
    std::optional<std::string> elsewhere;
    std::wstring shownFolder;
};

// The columns from the left, as clients number them.
enum class Column { kName, kType, kSize, kDate, kFolder };
inline constexpr int kColumns = 4;  // those that are always there

struct EntryOrder {
    Column column = Column::kName;
    bool descending = false;
};

// Compares two names as the user expects them ordered: negative, 0 or positive.
using CompareNames = std::function<int(const std::wstring& left, const std::wstring& right)>;

// Puts the rows, which are indexes into `entries`, in order: the shown folder's always before those
// of others, folders before files, then by
// the column, then by name. Only the column's own order is turned round by `descending`.
void SortRows(std::vector<std::size_t>& rows, const std::vector<BrowseEntry>& entries,
              EntryOrder order, const CompareNames& compareNames);

// The order after a click on a column's header: its own again turns it round, another one starts
// upwards.
EntryOrder OrderAfterClick(EntryOrder order, Column clicked);

// The column that a number stands for; a number without a column is the name's.
Column ColumnOf(long number);

}  // namespace depot
