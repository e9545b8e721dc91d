#include "depotbrowser/file_name_field.h"

namespace depot {
namespace {

constexpr wchar_t kQuote = L'"';

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view kBlanks = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::vector<TypedName> ParseFileNames(std::wstring_view field) {
    std::vector<TypedName> names;
    bool quoted = false;
    while (true) {
        // Every quote ends one name and begins the next, in quotes and out of them by turns.
        const std::size_t end = field.find(kQuote);
        const std::wstring_view name = Trimmed(field.substr(0, end));
        if (!name.empty()) names.push_back({std::wstring(name), quoted});
        if (end == std::wstring_view::npos) return names;
        field.remove_prefix(end + 1);
        quoted = !quoted;
    }
}

std::wstring JoinFileNames(const std::vector<std::wstring>& names) {
    if (names.size() == 1) return names.front();
    std::wstring field;
    for (const std::wstring& name : names) {
        if (!field.empty()) field += L' ';
        field += kQuote + name + kQuote;
    }
    return field;
}

}  // namespace depot
