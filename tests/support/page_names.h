// Names for the code page that a test runs in, and files under names that it may not have.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::test {

// What is typical of a code page: bytes of one character that look like separators, forbidden
// characters and other letters' cases.
struct PageNames {
    std::wstring folder;
    std::wstring subfolder;
    std::vector<std::wstring> files;
    std::wstring depots[2];             // two names that look alike to whoever folds bytes
    std::vector<std::wstring> refused;  // which the code page does not hold
};

inline PageNames NamesOfThisPage() {
    const std::wstring loneSurrogate(L"\xD83D.kra", 5);
    switch (GetACP()) {
        case 932:
            return {L"\x4E88\x5B9A\x8868",
                    L"\x30BD\x30FC\x30B9",
                    {L"\x8868.kra", L"\x5341.kra", L"\x30BD.kra", L"\x30EC\x30DD\x30FC\x30C8.kra",
                     L"x\xFF3Cy.kra"},
                    {L"\x30A2", L"\x30C2"},
                    {L"\x0100.kra", L"a\x00A5x.kra", L"a\x2216x.kra", loneSurrogate}};
        case CP_UTF8:
            // A folder of 100 characters in 200 bytes, and names that no other page holds: letters
            // of many languages together, as long as a path of the folder may be, and some alone.
            return {std::wstring(100, L'\xE9'),
                    L"\x4E88\x5B9A\x8868",
                    {L"\x8868.kra", L"\x5341.kra", L"\x30BD.kra",
                     L"\xFC \xE7 \xF1 \xE8 \xE3 \x0416 \x8868.kra",
                     L"\x043E\x0442\x0447\x0451\x0442.kra", L"\xBCF4\xACE0\xC11C.kra",
                     L"\x62A5\x544A \x5831\x544A.kra", L"\xD83D\xDE00.kra", L"e\x0301.kra",
                     L"x\xFF3Cy.kra"},
                    {L"\x30A2", L"\x30C2"},
                    {loneSurrogate}};
        default:
            return {
                L"\xDC"
                L"berblick",
                L"Entw\xFCrfe",
                {L"\xC4.kra", L"\xE9.kra", L"\x20AC \xDF.kra"},
                {L"\xC4", L"\xC5"},
                {L"\x0100.kra", L"\x8868.kra", L"\xFF21.kra", L"a\xFF3Cx.kra", loneSurrogate}};
    }
}

// The name as narrow texts have it; empty when they cannot.
inline std::string Narrowed(std::wstring_view name) {
    return ExactAnsiFromWide(name).value_or(std::string());
}

inline void MakeWideFile(const std::wstring& path, std::string_view bytes) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

// The bytes of a file; "(missing)" when there is none.
inline std::string WideBytes(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return "(missing)";
    std::string bytes(4096, '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(file);
    bytes.resize(read);
    return bytes;
}

}  // namespace depot::test
