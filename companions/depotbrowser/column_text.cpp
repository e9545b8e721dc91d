#include "depotbrowser/column_text.h"

#include <algorithm>
#include <cwctype>

namespace depot {

std::wstring FillIn(std::wstring_view format, std::wstring_view text) {
    constexpr std::wstring_view kPlace = L"%s";
    std::wstring filled(format);
    const std::size_t place = filled.find(kPlace);
    if (place != std::wstring::npos) filled.replace(place, kPlace.size(), text);
    return filled;
}

std::uint64_t Kilobytes(std::uint64_t bytes) {
    constexpr std::uint64_t kKilobyte = 1024;
    return bytes / kKilobyte + (bytes % kKilobyte != 0 ? 1 : 0);
}

std::wstring GroupedNumber(std::uint64_t number, std::wstring_view separator) {
    constexpr std::size_t kGroup = 3;
    const std::wstring digits = std::to_wstring(number);
    std::wstring text;
    for (std::size_t index = 0; index < digits.size(); ++index) {
        if (index != 0 && (digits.size() - index) % kGroup == 0) text += separator;
        text += digits[index];
    }
    return text;
}

std::wstring ExtensionLabel(std::wstring_view name) {
    const std::size_t dot = name.rfind(L'.');
    if (dot == std::wstring_view::npos) return {};
    std::wstring label(name.substr(dot + 1));
    std::transform(label.begin(), label.end(), label.begin(), [](wchar_t c) {
        return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
    });
    return label;
}

std::size_t StemLength(std::wstring_view name) {
    const std::size_t dot = name.rfind(L'.');
    return dot == 0 || dot == std::wstring_view::npos ? name.size() : dot;
}

}  // namespace depot
