#include "api/automation_text.h"

#include <cwchar>

namespace depot {

std::string NarrowText(const BSTR* text) {
    if (text == nullptr || *text == nullptr) return {};
    const int length = static_cast<int>(wcsnlen(*text, SysStringLen(*text)));
    if (length == 0) return {};
    const int bytes =
        WideCharToMultiByte(CP_THREAD_ACP, 0, *text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, *text, length, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

UniqueBstr NewBstr(const std::string& text) {
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), bytes, nullptr, 0);
    UniqueBstr wide(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (wide && length > 0) {
        MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), bytes, wide.get(), length);
    }
    return wide;
}

}  // namespace depot
