#include "depotbrowser/column_widths.h"

#include <charconv>

namespace depot {
namespace {

constexpr int kLeast = 8;
constexpr int kMost = 4000;

}  // namespace

std::string ColumnWidthsText(const std::vector<int>& widths) {
    std::string text;
    for (const int width : widths) text += (text.empty() ? "" : " ") + std::to_string(width);
    return text;
}

std::vector<int> ParseColumnWidths(std::string_view text, std::size_t count) {
    std::vector<int> widths;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && widths.size() <= count) {
        int width = 0;
        const auto [next, error] = std::from_chars(at, end, width);
        if (error != std::errc() || width < kLeast || width > kMost) return {};
        widths.push_back(width);
        at = next != end && *next == ' ' ? next + 1 : next;
    }
    return widths.size() == count ? widths : std::vector<int>();
}

}  // namespace depot
