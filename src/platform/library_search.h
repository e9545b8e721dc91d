// Where the system looks for libraries that a program names without a folder.
#pragma once

namespace depot {

// Has the system look in its own folder and in the program's, neither in the current folder nor
// along the search path. For programs, which call it first; a library leaves its host's search
// alone and loads by full paths (platform/kept_library.h).
void RestrictLibrarySearch();

}  // namespace depot
