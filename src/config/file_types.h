// The kinds of profile files, known by their extensions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace depot {

// Codes that the rest of the component names; the table knows more.
enum FileType : std::int32_t {
    kUnknownFileType = 0,
    kSessionProfile = 1,
    kOtherSessionProfile = 19,
    kKickoffProfile = 62,
    kSkeinProfile = 64,
};

// Returns the extension of a code, dot included, or an empty text for a code without one.
std::string ExtensionForType(std::int32_t code);

// Returns the text from the last '.' on, dot included; a name without a '.' is returned whole.
std::string GetExtension(std::string_view name);

// Returns the code of the path's extension, or 0. Paths shorter than 5 characters are not
// recognised. `flag` has no effect.
//
// Kept: ".krc" and ".krk" have codes (59 and 60) but are not recognised.
// Relied on by: listings, which show such files without a type.
std::int32_t DetectFileType(std::string_view path, std::int32_t flag = 0);

// Whether "." followed by `extension` is one of the table's extensions.
bool IsProfileExtension(std::string_view extension);

}  // namespace depot
