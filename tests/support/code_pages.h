// The code pages that a process can run in, described by the system that the tests run on.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace depot::test {

inline constexpr std::array<unsigned, 7> kCodePages = {1252, 1254, 932, 936, 949, 950, 65001};

// The description of one of them, made once.
const CodePage& DescribedCodePage(unsigned number);

// Returns the text as the code page has it; empty when the page cannot hold it exactly.
std::string Encoded(unsigned number, std::u16string_view text);

// Narrow texts have the characters of a code page as long as this object lives.
class CodePageScope {
public:
    explicit CodePageScope(unsigned number) { InstallCodePage(DescribedCodePage(number)); }
    ~CodePageScope() { InstallCodePage(before_); }
    CodePageScope(const CodePageScope&) = delete;
    CodePageScope& operator=(const CodePageScope&) = delete;

private:
    CodePage before_ = InstalledCodePage();
};

}  // namespace depot::test
