#include "depotbrowser/profile_summary.h"

#include <algorithm>

namespace depot {
namespace {

constexpr std::size_t kLongestShown = 100;

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view kBlanks = L" \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

wchar_t Lower(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

// The names that are looked for are in lower case.
bool IsCalled(std::wstring_view text, std::wstring_view name) {
    return std::equal(text.begin(), text.end(), name.begin(), name.end(),
                      [](wchar_t one, wchar_t other) { return Lower(one) == other; });
}

// No pair of units that are one character is cut.
std::size_t ShownLength(std::wstring_view text) {
    if (text.size() <= kLongestShown) return text.size();
    const wchar_t last = text[kLongestShown - 1];
    return last >= 0xD800 && last < 0xDC00 ? kLongestShown - 1 : kLongestShown;
}

std::wstring Value(std::wstring_view text) {
    const bool quoted = text.size() > 1 && text.front() == text.back() &&
                        (text.front() == L'"' || text.front() == L'\'');
    std::wstring value(quoted ? text.substr(1, text.size() - 2) : text);
    value.resize(ShownLength(value));
    return value;
}

void TakeLine(std::wstring_view section, std::wstring_view line, ProfileSummary& summary) {
    const std::size_t equals = line.find(L'=');
    if (equals == std::wstring_view::npos) return;
    const std::wstring_view key = Trimmed(line.substr(0, equals));
    const bool isTitle = IsCalled(section, L"profile") && IsCalled(key, L"title");
    const bool isHost = IsCalled(section, L"host") && IsCalled(key, L"name");
    if (!isTitle && !isHost) return;
    std::wstring& value = isTitle ? summary.title : summary.host;
    if (value.empty()) value = Value(Trimmed(line.substr(equals + 1)));
}

}  // namespace

ProfileSummary SummaryOf(std::wstring_view text) {
    ProfileSummary summary;
    std::wstring_view section;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(L'\n'), text.size());
        const std::wstring_view line = Trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(L'[') && line.ends_with(L']')) {
            section = Trimmed(line.substr(1, line.size() - 2));
        } else {
            TakeLine(section, line, summary);
        }
    }
    return summary;
}

}  // namespace depot
