// What a search shows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace depot {

// The words of a search. A name matches when every word occurs in it; a word with '*' or '?' has to
// fit the whole name. Both are compared as they are: letter cases are made equal before.
class SearchWords {
public:
    SearchWords() = default;
    explicit SearchWords(std::wstring_view text);

    bool IsEmpty() const { return words_.empty(); }
    bool Match(std::wstring_view name) const;

    bool operator==(const SearchWords& other) const = default;

private:
    std::vector<std::wstring> words_;
};

}  // namespace depot
