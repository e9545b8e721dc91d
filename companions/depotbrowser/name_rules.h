// What may be a name, which names a type shows, and how relative folders are spelled.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace depot {

// The longest name of a file or folder, in bytes of the code page, as paths are limited.
inline constexpr std::size_t kLongestName = 255;

// Returns whether a file or folder can have this name: it is not empty, not too long, consists of
// more than dots, ends in neither a blank nor a dot, and holds none of the characters that separate
// paths or stand for others.
bool IsValidName(std::string_view name);

// Returns whether the text is a pattern such as "*.kra".
bool IsPattern(std::string_view text);

// Returns whether the name matches a pattern in any letter case: '*' stands for any characters, '?'
// for one. "*.*" matches every name.
bool MatchesPattern(std::string_view name, std::string_view pattern);

// Returns the name under which a file is saved: the name itself when it has the extension of a
// profile, when it ends in a dot (which is dropped), or when there is no extension to add; else the
// name with `extension`, dot included, appended.
std::string WithDefaultExtension(std::string_view name, std::string_view extension);

// The pattern of a file type, such as "*.kra"; "*.*" for a type without an extension.
std::string PatternOfType(std::int32_t fileType);

// Relative folders are empty for a depot's root and end in a backslash otherwise.

// Returns the folder above; the root is above itself.
std::string FolderAbove(std::string_view folder);

// Returns the names of the folders on the way to a folder.
std::vector<std::string> FolderNames(std::string_view folder);

// Where a relative path that was typed leads from a folder.
struct RelativeTarget {
    std::string folder;
    std::string name;  // the last part; empty when the path names the folder itself
};

// Follows a relative path: "." and ".." are understood, a leading backslash starts at the root, and
// nothing leads above it.
RelativeTarget FollowPath(std::string_view folder, std::string_view path);

}  // namespace depot
