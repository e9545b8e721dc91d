#include "depotctl/encoding.h"

#include "depotctl/failure.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::ctl {
namespace {

std::wstring WideFromAnsi(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::string AnsiFromWide(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

}  // namespace

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
