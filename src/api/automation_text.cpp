#include "api/automation_text.h"

#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// The system's profile functions use the ANSI code page. Where that is UTF-8 no thread's language
// has it.
UINT ContentsCodePage() {
    return GetACP() == CP_UTF8 ? CP_UTF8 : CP_THREAD_ACP;
}

std::wstring_view WholeText(const BSTR* text) {
    return text != nullptr ? WideText(*text) : std::wstring_view();
}

}  // namespace

std::string NarrowText(const BSTR* text) {
    if (text == nullptr || *text == nullptr) return {};
    const int length = static_cast<int>(wcsnlen(*text, SysStringLen(*text)));
    if (length == 0) return {};
    const UINT page = ContentsCodePage();
    const int bytes = WideCharToMultiByte(page, 0, *text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(page, 0, *text, length, narrow.data(), bytes, nullptr, nullptr);
    return narrow;
}

UniqueBstr NewBstr(const std::string& text) {
    const UINT page = ContentsCodePage();
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(page, 0, text.data(), bytes, nullptr, 0);
    UniqueBstr wide(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (wide && length > 0) {
        MultiByteToWideChar(page, 0, text.data(), bytes, wide.get(), length);
    }
    return wide;
}

std::optional<std::string> ExactName(const BSTR* text) {
    std::wstring_view name = WholeText(text);
    while (name.ends_with(L'\0')) name.remove_suffix(1);
    if (name.find(L'\0') != std::wstring_view::npos) return std::nullopt;
    std::optional<std::string> exact = ExactAnsiFromWide(name);
    if (exact && HasBrokenCharacters(*exact)) return std::nullopt;
    return exact;
}

std::string NameText(const BSTR* text) {
    std::optional<std::string> name = ExactName(text);
    if (!name) throw RefusedName();
    return *std::move(name);
}

}  // namespace depot
