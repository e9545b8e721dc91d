#include "platform/system_code_page.h"

#include <string>

#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

std::u16string MapLetters(DWORD mapping, const std::u16string& letters) {
    std::wstring mapped(letters.size(), L'\0');
    const auto length = static_cast<int>(letters.size());
    const std::wstring given(letters.begin(), letters.end());
    // The same rule in every user's language: under a Turkish one I and i stay one letter, too.
    const int units = LCMapStringEx(LOCALE_NAME_INVARIANT, mapping, given.data(), length,
                                    mapped.data(), length, nullptr, nullptr, 0);
    if (units != length) return letters;
    return {mapped.begin(), mapped.end()};
}

std::u16string LowerLetters(const std::u16string& letters) {
    return MapLetters(LCMAP_LOWERCASE, letters);
}

std::u16string UpperLetters(const std::u16string& letters) {
    return MapLetters(LCMAP_UPPERCASE, letters);
}

LeadBytes LeadBytesOf(UINT codePage) {
    LeadBytes leads{};
    for (std::size_t byte = 0; byte < leads.size(); ++byte) {
        leads[byte] = IsDBCSLeadByteEx(codePage, static_cast<BYTE>(byte)) != FALSE;
    }
    return leads;
}

CodePageKind KindOf(UINT codePage) {
    if (codePage == CP_UTF8) return CodePageKind::kUtf8;
    CPINFO info = {};
    const bool doubleByte = GetCPInfo(codePage, &info) && info.MaxCharSize > 1;
    return doubleByte ? CodePageKind::kDoubleByte : CodePageKind::kSingleByte;
}

// Asking about all letters that there are takes longer than all else while a module loads.
std::u16string LettersOfSingleBytes(UINT codePage) {
    std::string bytes;
    for (int byte = 0x80; byte < 0x100; ++byte) bytes.push_back(static_cast<char>(byte));
    const std::wstring wide = WideFromCodePage(codePage, bytes);
    return {wide.begin(), wide.end()};
}

}  // namespace

CodePage DescribeSystemCodePage(unsigned codePage) {
    const CodePageKind kind = KindOf(codePage);
    SystemLetters system = {
        kind == CodePageKind::kSingleByte ? LettersOfSingleBytes(codePage) : AllLetters(),
        LowerLetters, UpperLetters, [codePage](char16_t letter) {
            const auto wide = static_cast<wchar_t>(letter);
            return ExactFromWide(codePage, {&wide, 1}).value_or(std::string());
        }};
    return DescribeCodePage(kind, LeadBytesOf(codePage), system);
}

void InstallSystemCodePage() {
    InstallCodePage(DescribeSystemCodePage(GetACP()));
}

}  // namespace depot
