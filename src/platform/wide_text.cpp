#include "platform/wide_text.h"

#include "platform/win32.h"

namespace depot {
namespace {

std::wstring Widen(UINT codePage, std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), length);
    return wide;
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

std::optional<std::string> ExactAnsiFromWide(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    // A code page of several bytes has at most this many for one character.
    constexpr std::size_t kMostBytes = 4;
    std::string narrow(text.size() * kMostBytes, '\0');
    BOOL lossy = FALSE;
    const int bytes =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), length, narrow.data(),
                            static_cast<int>(narrow.size()), nullptr, &lossy);
    if (lossy || (bytes == 0 && !text.empty())) return std::nullopt;
    narrow.resize(static_cast<std::size_t>(bytes));
    return narrow;
}

}  // namespace depot
