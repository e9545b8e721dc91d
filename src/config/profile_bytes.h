// Writing a value into the bytes of a profile, for profiles that the system's functions would not
// write as they were. Nothing here asks the system.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/profile_lines.h"

namespace depot {

// A value as the profile is to hold it, in the profile's own bytes; no value removes its line.
struct ProfileLineEdit {
    std::string section;
    std::string key;
    std::optional<std::string> value;
};

// Returns the profile with the value in it. Every byte of every other line stays.
//
// The line is the one that the system reads: the first of that key in the first section of that
// name. A new one comes behind the section's last line, in a new section at the end if need be.
std::string WithProfileLine(std::string_view profile, const ProfileLineEdit& edit,
                            LetterCase letters);

}  // namespace depot
