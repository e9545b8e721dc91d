#include "config/profile_encoding.h"

#include <algorithm>

#include "platform/registry_key.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedUtf16Mark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// These units stand alone in no valid text: the lower halves of pairs.
constexpr wchar_t kByteUnits = 0xDC00;

bool IsByteUnit(wchar_t unit) {
    return unit >= kByteUnits && unit <= kByteUnits + 0xFF;
}

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0x80) == 0; });
}

bool IsExact(unsigned codePage, const std::optional<std::wstring>& wide, std::string_view bytes) {
    return wide && ExactFromWide(codePage, *wide) == bytes;
}

// Since the setting for UTF-8 only the registry holds the code page that the machine really has;
// without it the language's is the one.
unsigned CodePageOfMachine() {
    const auto key =
        RegistryKey::Open(HKEY_LOCAL_MACHINE, "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage");
    if (key && key->ReadString("ACP", 16) == "65001") return CP_UTF8;
    DWORD codePage = 0;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<wchar_t*>(&codePage), sizeof(codePage) / sizeof(wchar_t));
    // Languages without a code page of their own have that of UTF-8.
    return codePage > CP_THREAD_ACP ? codePage : CP_UTF8;
}

// How many bytes the next character takes that is text or can at least be stepped over.
std::size_t CharacterBytes(unsigned codePage, std::string_view bytes) {
    if (codePage == CP_UTF8) {
        for (std::size_t length = 1; length <= std::min<std::size_t>(bytes.size(), 4); ++length) {
            if (ExactWideFromCodePage(codePage, bytes.substr(0, length))) return length;
        }
        return 1;
    }
    const bool leads = IsDBCSLeadByteEx(codePage, static_cast<BYTE>(bytes.front())) != FALSE;
    // A character whose second half was cut ends at the end of its line.
    return leads && bytes.size() > 1 && static_cast<unsigned char>(bytes[1]) >= ' ' ? 2 : 1;
}

std::wstring TextByCharacters(unsigned codePage, std::string_view bytes) {
    std::wstring text;
    while (!bytes.empty()) {
        const std::string_view character = bytes.substr(0, CharacterBytes(codePage, bytes));
        const std::optional<std::wstring> wide = ExactWideFromCodePage(codePage, character);
        if (IsExact(codePage, wide, character)) {
            text += *wide;
        } else {
            for (const char byte : character) {
                text.push_back(static_cast<wchar_t>(kByteUnits + static_cast<BYTE>(byte)));
            }
        }
        bytes.remove_prefix(character.size());
    }
    return text;
}

// Returns how much of the text, which is not empty, comes before the next unit of a byte.
std::size_t LengthOfText(std::wstring_view text) {
    std::size_t at = 0;
    while (at < text.size() && !IsByteUnit(text[at])) {
        at += IS_HIGH_SURROGATE(text[at]) && at + 1 < text.size() ? 2 : 1;
    }
    return at;
}

std::string BytesOfUtf16(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

}  // namespace

unsigned SystemCodePage() {
    // On a system that does not know a manifest's code page, every program has the machine's.
    static const unsigned codePage = GetACP() != CP_UTF8 ? GetACP() : CodePageOfMachine();
    return codePage;
}

bool CanHoldProfiles(unsigned codePage) {
    CPINFO info = {};
    if (codePage == CP_UTF8) return true;
    if (codePage <= CP_THREAD_ACP || !GetCPInfo(codePage, &info) || info.MaxCharSize > 2) {
        return false;
    }
    constexpr std::string_view kSigns = "[Az09]=;\r\n";
    return WideFromCodePage(codePage, kSigns) == std::wstring(kSigns.begin(), kSigns.end());
}

std::optional<ProfileEncoding> EncodingOf(std::string_view bytes, unsigned codePage) {
    if (bytes.starts_with(kSwappedUtf16Mark)) return std::nullopt;
    if (bytes.starts_with(kUtf16Mark)) {
        if (bytes.size() % sizeof(wchar_t) != 0) return std::nullopt;
        return ProfileEncoding{kUtf16, kUtf16Mark.size()};
    }
    if (bytes.starts_with(kUtf8Mark)) return ProfileEncoding{CP_UTF8, kUtf8Mark.size()};
    if (codePage != 0) return ProfileEncoding{codePage, 0};
    const bool isUtf8 = !IsAscii(bytes) && ExactWideFromCodePage(CP_UTF8, bytes);
    return ProfileEncoding{isUtf8 ? CP_UTF8 : SystemCodePage(), 0};
}

std::wstring ProfileText(const ProfileEncoding& encoding, std::string_view bytes) {
    bytes.remove_prefix(encoding.markBytes);
    if (encoding.codePage == kUtf16) {
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(text.data()));
        return text;
    }
    std::optional<std::wstring> text = ExactWideFromCodePage(encoding.codePage, bytes);
    if (IsExact(encoding.codePage, text, bytes)) return *std::move(text);
    return TextByCharacters(encoding.codePage, bytes);
}

std::optional<std::string> ProfileBytes(const ProfileEncoding& encoding, std::wstring_view text) {
    if (encoding.codePage == kUtf16) return BytesOfUtf16(text);
    std::string bytes;
    while (!text.empty()) {
        const std::wstring_view part = text.substr(0, LengthOfText(text));
        const std::optional<std::string> narrow = ExactFromWide(encoding.codePage, part);
        if (!narrow) return std::nullopt;
        bytes += *narrow;
        text.remove_prefix(part.size());
        for (; !text.empty() && IsByteUnit(text.front()); text.remove_prefix(1)) {
            bytes.push_back(static_cast<char>(text.front() - kByteUnits));
        }
    }
    return bytes;
}

std::string ShownProfileText(const ProfileEncoding& encoding, std::wstring_view text) {
    if (encoding.codePage == kUtf16) return Utf8FromWide(text);
    const std::optional<std::string> bytes = ProfileBytes(encoding, text);
    return Utf8FromWide(bytes ? WideFromCodePage(encoding.codePage, *bytes) : std::wstring(text));
}

}  // namespace depot
