#include "depotbrowser/entry_order.h"

#include <algorithm>

namespace depot {
namespace {

template <class T>
int Compare(T left, T right) {
    return left < right ? -1 : (right < left ? 1 : 0);
}

int CompareColumn(const BrowseEntry& left, const BrowseEntry& right, Column column,
                  const CompareNames& compareNames) {
    switch (column) {
        case Column::kType:
            return compareNames(left.typeName, right.typeName);
        case Column::kSize:
            return Compare(left.size, right.size);
        case Column::kDate:
            return Compare(left.date, right.date);
        case Column::kFolder:
            return compareNames(left.shownFolder, right.shownFolder);
        default:
            return compareNames(left.shownName, right.shownName);
    }
}

}  // namespace

void SortRows(std::vector<std::size_t>& rows, const std::vector<BrowseEntry>& entries,
              EntryOrder order, const CompareNames& compareNames) {
    std::stable_sort(rows.begin(), rows.end(), [&](std::size_t one, std::size_t other) {
        const BrowseEntry& left = entries[one];
        const BrowseEntry& right = entries[other];
        if (left.elsewhere.has_value() != right.elsewhere.has_value()) return !left.elsewhere;
        if (left.isFolder != right.isFolder) return left.isFolder;
        const int byColumn = CompareColumn(left, right, order.column, compareNames);
        if (byColumn != 0) return order.descending ? byColumn > 0 : byColumn < 0;
        return compareNames(left.shownName, right.shownName) < 0;
    });
}

EntryOrder OrderAfterClick(EntryOrder order, Column clicked) {
    return {clicked, clicked == order.column && !order.descending};
}

Column ColumnOf(long number) {
    return number > 0 && number <= static_cast<long>(Column::kFolder) ? static_cast<Column>(number)
                                                                      : Column::kName;
}

}  // namespace depot
