// Texts between the tool, which speaks UTF-8, and the component, which works in the ANSI code page.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace depot::ctl {

std::string Utf8FromAnsi(std::string_view text);

// Ends the command for what a user typed and the code page cannot hold as it stands.
std::string ToAnsi(std::string_view text);

// Returns whether two texts in UTF-8 are one name to the component, which compares without regard
// to letter case by the characters of the ANSI code page. What that cannot hold names nothing.
bool IsSameName(std::string_view left, std::string_view right);

// Returns what the system says of an error of its own, in UTF-8 and on one line.
std::string SystemWords(std::uint32_t error);

// Takes the angle brackets and a backslash off a depot's key, as "<Work>\" has them.
std::string KeyArgument(std::string key);

// Returns whether two keys name the same subkey: letter case does not count.
bool SameKey(const std::string& left, const std::string& right);

}  // namespace depot::ctl
