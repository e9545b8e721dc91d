// The text in which several chosen files are returned.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace depot {

// Returns the folder of the first path, without the backslash that ends it, and then the file names
// of all paths; each part is followed by a NUL, and one more NUL ends the text. A path without a
// backslash is a file name without a folder. Without paths the text is empty.
//
// `size` bounds the folder and the names with their NULs: the first name that would reach it ends
// the list, unwritten.
//
// Kept: the length is counted in 16 bits and wraps.
std::string ChosenFileList(const std::vector<std::string>& paths, std::int16_t size);

}  // namespace depot
