#include "depotbrowser/name_search.h"

#include <algorithm>

namespace depot {
namespace {

constexpr std::wstring_view kBlanks = L" \t\x3000";

bool FitsPattern(std::wstring_view name, std::wstring_view pattern) {
    // The last '*' takes one character more each time the rest does not fit.
    std::size_t star = std::wstring_view::npos, resume = 0, at = 0, p = 0;
    while (at < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            resume = at;
        } else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == name[at])) {
            ++p;
            ++at;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            at = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == std::wstring_view::npos;
}

bool MatchesWord(std::wstring_view name, std::wstring_view word) {
    if (word.find_first_of(L"*?") != std::wstring_view::npos) return FitsPattern(name, word);
    return name.find(word) != std::wstring_view::npos;
}

}  // namespace

SearchWords::SearchWords(std::wstring_view text) {
    for (std::size_t at = 0; (at = text.find_first_not_of(kBlanks, at)) < text.size();) {
        const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
        words_.emplace_back(text.substr(at, end - at));
        at = end;
    }
}

bool SearchWords::Match(std::wstring_view name) const {
    return std::all_of(words_.begin(), words_.end(),
                       [&](const std::wstring& word) { return MatchesWord(name, word); });
}

}  // namespace depot
