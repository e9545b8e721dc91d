#include "platform/wide_text.h"

#include "platform/win32.h"

namespace depot {

std::wstring WideFromUtf8(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::string Utf8FromWide(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

}  // namespace depot
