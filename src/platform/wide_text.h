// Conversion between UTF-8 and UTF-16, for the few places where names must survive whole.
#pragma once

#include <string>
#include <string_view>

namespace depot {

std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromWide(std::wstring_view text);

}  // namespace depot
