#include "platform/wide_text.h"

#include <algorithm>

#include "platform/win32.h"
#include "platform/wipe.h"

namespace depot {
namespace {

// Any text may be a password: what is only on the way is wiped.

std::wstring Widen(UINT codePage, std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::optional<std::wstring> ExactWiden(UINT codePage, std::string_view text) {
    if (text.empty()) return std::wstring();
    std::optional<std::wstring> exact(std::in_place, text.size(), L'\0');
    std::wstring& wide = *exact;
    const int bytes = static_cast<int>(text.size());
    const int length =
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), bytes, wide.data(), bytes);
    if (length == 0) return std::nullopt;
    wide.resize(static_cast<std::size_t>(length));
    return exact;
}

std::string Narrow(UINT codePage, std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

}  // namespace

std::wstring WideFromUtf8(std::string_view text) {
    return Widen(CP_UTF8, text);
}

std::string Utf8FromWide(std::wstring_view text) {
    return Narrow(CP_UTF8, text);
}

std::wstring WideFromAnsi(std::string_view text) {
    return Widen(CP_ACP, text);
}

std::string AnsiFromWide(std::wstring_view text) {
    return Narrow(CP_ACP, text);
}

std::wstring WideFromCodePage(unsigned codePage, std::string_view text) {
    return Widen(codePage, text);
}

std::optional<std::string> ExactAnsiFromWide(std::wstring_view text) {
    return ExactFromWide(GetACP(), text);
}

std::optional<std::string> ExactFromWide(unsigned codePage, std::wstring_view text) {
    // ASCII is the same in every code page.
    const auto isAscii = [](wchar_t unit) { return unit < 0x80; };
    if (std::all_of(text.begin(), text.end(), isAscii)) {
        return std::optional<std::string>(std::in_place, text.begin(), text.end());
    }
    // A code page of several bytes has at most this many for one UTF-16 unit.
    constexpr std::size_t kMostBytes = 4;
    std::optional<std::string> exact(std::in_place, text.size() * kMostBytes, '\0');
    std::string& narrow = *exact;
    // With UTF-8 the system takes no flags, and does not report what it replaced.
    const bool reports = codePage != CP_UTF8;
    BOOL replaced = FALSE;
    const int bytes = WideCharToMultiByte(
        codePage, reports ? WC_NO_BEST_FIT_CHARS : 0, text.data(), static_cast<int>(text.size()),
        narrow.data(), static_cast<int>(narrow.size()), nullptr, reports ? &replaced : nullptr);
    narrow.resize(static_cast<std::size_t>(bytes));
    // Some pages hold two characters in one place without reporting it: the yen sign is 0x5C.
    std::wstring widened = Widen(codePage, narrow);
    const WipeAtEnd wiped(widened);
    if (!replaced && widened == text) return exact;
    Wipe(narrow);
    return std::nullopt;
}

std::optional<std::wstring> ExactWideFromAnsi(std::string_view text) {
    return ExactWiden(CP_ACP, text);
}

std::optional<std::wstring> ExactWideFromCodePage(unsigned codePage, std::string_view text) {
    return ExactWiden(codePage, text);
}

std::optional<std::string> ExactAnsiFromUtf8(std::string_view text) {
    std::optional<std::wstring> wide = ExactWiden(CP_UTF8, text);
    if (!wide) return std::nullopt;
    const WipeAtEnd wiped(*wide);
    return ExactAnsiFromWide(*wide);
}

std::optional<std::string> ExactUtf8FromAnsi(std::string_view text) {
    const std::optional<std::wstring> wide = ExactWiden(CP_ACP, text);
    return wide ? std::optional(Utf8FromWide(*wide)) : std::nullopt;
}

}  // namespace depot
