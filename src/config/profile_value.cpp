#include "config/profile_value.h"

namespace depot {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string Enclose(std::string_view value, char quote) {
    std::string enclosed(1, quote);
    enclosed.append(value);
    enclosed.push_back(quote);
    return enclosed;
}

}  // namespace

std::string QuoteProfileValue(std::string_view value) {
    if (value.empty()) return {};
    const char first = value.front();
    const char last = value.back();
    if (IsBlank(first) || IsBlank(last)) return Enclose(value, '\'');
    if (first == last && (first == '\'' || first == '"')) return Enclose(value, first);
    return std::string(value);
}

}  // namespace depot
