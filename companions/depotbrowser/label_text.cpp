#include "depotbrowser/label_text.h"

namespace depot {
namespace {

constexpr wchar_t kMark = L'&';

// Returns whether "(&X)" stands there.
bool IsBracketedKey(std::wstring_view label, std::size_t at) {
    constexpr std::size_t kLength = 4;
    return label.size() - at >= kLength && label[at] == L'(' && label[at + 1] == kMark &&
           label[at + 2] != kMark && label[at + 3] == L')';
}

}  // namespace

std::wstring WithoutAccessKey(std::wstring_view label) {
    std::wstring text;
    for (std::size_t at = 0; at < label.size(); ++at) {
        if (IsBracketedKey(label, at)) {
            at += 3;
            continue;
        }
        // Of two marks in a row the second one is shown.
        if (label[at] == kMark && ++at == label.size()) break;
        text += label[at];
    }
    return text;
}

std::wstring AsLabel(std::wstring_view text) {
    std::wstring label;
    for (const wchar_t c : text) label.append(c == kMark ? 2 : 1, c);
    return label;
}

}  // namespace depot
