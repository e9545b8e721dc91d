#include "depotctl/encoding.h"

#include "depotctl/failure.h"
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

}  // namespace depot::ctl
