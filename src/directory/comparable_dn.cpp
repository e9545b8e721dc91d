#include "directory/comparable_dn.h"

#include "platform/text.h"

namespace depot {

std::string ComparableDN(std::string_view dn) {
    constexpr std::string_view kEnds = ",=";
    const auto isEnd = [&](char c) { return kEnds.find(c) != std::string_view::npos; };
    std::string text;
    for (const char c : ToLower(dn)) {
        const bool afterBlank = text.ends_with(' ');
        if (c == ' ' && (text.empty() || afterBlank || isEnd(text.back()))) continue;
        if (isEnd(c) && afterBlank) text.pop_back();
        text.push_back(c);
    }
    if (text.ends_with(' ')) text.pop_back();
    return text;
}

}  // namespace depot
