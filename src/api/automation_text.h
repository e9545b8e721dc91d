// Converting between the texts of automation (BSTR) and the component's narrow texts.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "com/automation.h"

namespace depot {

// Convert what stands in files: sections, keys and values. The code page is that of the calling
// thread, or UTF-8 in a process whose ANSI code page that is. What it cannot hold is replaced.
//
// The first returns the text up to its first NUL; a null pointer and a null BSTR are empty texts.
// The second returns a new BSTR of the whole text, embedded NULs included; null when memory is
// exhausted.
std::string NarrowText(const BSTR* text);
UniqueBstr NewBstr(const std::string& text);

// Converts what names a file, a folder or a depot, with the code page of the file system's calls;
// NewNameBstr is the way back.
//
// Returns nothing for a name that the code page cannot hold exactly, that has a surrogate
// without its pair, or a NUL with more text behind it: another file could bear the name that is
// left of it. NULs at the end only fill the BSTR up.
std::optional<std::string> ExactName(const BSTR* text);

// Is thrown for such a name, for which the method that was given it fails.
class RefusedName : public std::invalid_argument {
public:
    RefusedName() : std::invalid_argument("name") {}
};

// Returns the exact name, or throws RefusedName.
std::string NameText(const BSTR* text);

}  // namespace depot
