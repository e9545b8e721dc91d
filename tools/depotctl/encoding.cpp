#include "depotctl/encoding.h"

#include "depotctl/failure.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::ctl {

std::string Utf8FromAnsi(std::string_view text) {
    return Utf8FromWide(WideFromAnsi(text));
}

std::optional<std::string> AnsiFromUtf8(std::string_view text) {
    const std::wstring wide = WideFromUtf8(text);
    std::string narrow = AnsiFromWide(wide);
    // Whatever the code page replaced does not come back; asking it for losses does not work where
    // it is UTF-8 itself.
    if (WideFromAnsi(narrow) != wide) return std::nullopt;
    return narrow;
}

std::string ToAnsi(std::string_view text) {
    std::optional<std::string> narrow = AnsiFromUtf8(text);
    if (narrow) return *std::move(narrow);
    Refuse("\"" + std::string(text) + "\" has characters that code page " +
           std::to_string(GetACP()) + ", in which profiles are named, does not have");
}

}  // namespace depot::ctl
