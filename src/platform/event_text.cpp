#include "platform/event_text.h"

namespace depot {
namespace {

constexpr wchar_t kEllipsis[] = L"...";

bool IsControl(wchar_t character) {
    return character < L' ' || (character >= 0x7F && character < 0xA0);
}

bool IsFirstOfPair(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

// "%1" stands for a value, "%%1" for another message.
bool IsReplacedBehindPercent(wchar_t character) {
    return character == L'%' || (character >= L'0' && character <= L'9');
}

// REQUIRES: the text is longer than the limit.
std::wstring_view Cut(std::wstring_view text) {
    text.remove_suffix(text.size() - kEventTextLimit);
    if (IsFirstOfPair(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace

std::wstring EventText(std::wstring_view text) {
    text = text.substr(0, text.find(L'\0'));
    const bool isCut = text.size() > kEventTextLimit;
    std::wstring written;
    for (const wchar_t character : isCut ? Cut(text) : text) {
        const bool followsPercent = !written.empty() && written.back() == L'%';
        if (followsPercent && IsReplacedBehindPercent(character)) written += L' ';
        written += IsControl(character) ? L' ' : character;
    }
    return isCut ? written + kEllipsis : written;
}

}  // namespace depot
