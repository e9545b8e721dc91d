#include "depotbrowser/ansi_text.h"

#include "platform/win32.h"

namespace depot {

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
