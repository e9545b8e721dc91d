#include "depotctl/encoding.h"

#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "platform/error_text.h"
#include "platform/text.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::ctl {

std::string Utf8FromAnsi(std::string_view text) {
    return Utf8FromWide(WideFromAnsi(text));
}

std::string ToAnsi(std::string_view text) {
    std::optional<std::string> narrow = ExactAnsiFromUtf8(text);
    if (narrow) return *std::move(narrow);
    Refuse("\"" + std::string(text) + "\" has characters that code page " +
           std::to_string(GetACP()) + ", in which profiles are named, does not have");
}

bool IsSameName(std::string_view left, std::string_view right) {
    const auto narrowLeft = ExactAnsiFromUtf8(left), narrowRight = ExactAnsiFromUtf8(right);
    if (!narrowLeft || !narrowRight) return left == right;
    return EqualsNoCase(*narrowLeft, *narrowRight);
}

std::string SystemWords(std::uint32_t error) {
    std::string text;
    FormatErrorText(error, nullptr, nullptr, &text, nullptr);
    return OneLine(Utf8FromAnsi(text));
}

std::string KeyArgument(std::string key) {
    if (!key.starts_with('<')) return key;
    if (EndsInAscii(key, '\\')) key.pop_back();
    if (EndsInAscii(key, '>')) return key.substr(1, key.size() - 2);
    return key;
}

bool SameKey(const std::string& left, const std::string& right) {
    return CompareStringOrdinal(WideFromUtf8(left).c_str(), -1, WideFromUtf8(right).c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

}  // namespace depot::ctl
