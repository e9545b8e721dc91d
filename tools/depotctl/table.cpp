#include "table.h"

#include <algorithm>
#include <numeric>

#include "utf8_text.h"

namespace depot::ctl {
namespace {

constexpr std::size_t kGap = 2;
// A column with less room shows nothing useful.
constexpr std::size_t kNarrowest = 6;

std::vector<std::size_t> NaturalWidths(const std::vector<TableRow>& rows, std::size_t columns) {
    std::vector<std::size_t> widths(columns, 0);
    for (const TableRow& row : rows) {
        for (std::size_t column = 0; column < std::min(columns, row.size()); ++column) {
            widths[column] = std::max(widths[column], DisplayWidth(row[column]));
        }
    }
    return widths;
}

std::size_t LineWidth(const std::vector<std::size_t>& widths) {
    return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

void Fit(std::vector<std::size_t>& widths, std::size_t width) {
    while (LineWidth(widths) > width) {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest > kNarrowest || widths.size() == 1) {
            if (*widest == 0) return;
            --*widest;
        } else {
            widths.pop_back();
        }
    }
}

std::string Cell(const std::string& text, std::size_t width, Align align, bool isLast) {
    const std::string cut = CutToWidth(text, width);
    const std::string padding(width - std::min(width, DisplayWidth(cut)), ' ');
    if (align == Align::kRight) return padding + cut;
    return isLast ? cut : cut + padding;
}

std::string Line(const TableRow& row, const std::vector<std::size_t>& widths,
                 const std::vector<Align>& alignment) {
    std::string line;
    for (std::size_t column = 0; column < std::min(widths.size(), row.size()); ++column) {
        if (column > 0) line.append(kGap, ' ');
        line += Cell(row[column], widths[column], alignment[column], column + 1 == widths.size());
    }
    line.resize(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace

std::string LayoutTable(const std::vector<TableRow>& rows, const std::vector<Align>& alignment,
                        std::size_t width) {
    if (alignment.empty()) return {};
    std::vector<TableRow> printable = rows;
    for (TableRow& row : printable) {
        std::transform(row.begin(), row.end(), row.begin(), Printable);
    }
    std::vector<std::size_t> widths = NaturalWidths(printable, alignment.size());
    if (width > 0) Fit(widths, width);
    std::string text;
    for (const TableRow& row : printable) text += Line(row, widths, alignment);
    return text;
}

}  // namespace depot::ctl
