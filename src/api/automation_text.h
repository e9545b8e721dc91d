// Converting between the texts of automation (BSTR) and the component's narrow texts.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "platform/win32.h"
// After the Windows headers.
#include <oleauto.h>

namespace depot {

struct BstrFreer {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using UniqueBstr = std::unique_ptr<std::remove_pointer_t<BSTR>, BstrFreer>;

// Convert what stands in files: sections, keys and values. The code page is that of the calling
// thread, or UTF-8 in a process whose ANSI code page that is. What it cannot hold is replaced.
//
// The first returns the text up to its first NUL; a null pointer and a null BSTR are empty texts.
// The second returns a new BSTR of the whole text, embedded NULs included; null when memory is
// exhausted.
std::string NarrowText(const BSTR* text);
UniqueBstr NewBstr(const std::string& text);

// Convert what names a file, a folder or a depot, with the code page of the file system's calls.
//
// The first returns nothing for a name that the code page cannot hold exactly, that has a surrogate
// without its pair, or a NUL with more text behind it: another file could bear the name that is
// left of it. NULs at the end only fill the BSTR up.
std::optional<std::string> ExactName(const BSTR* text);
UniqueBstr NewNameBstr(const std::string& name);

// Is thrown for such a name, for which the method that was given it fails.
class RefusedName : public std::invalid_argument {
public:
    RefusedName() : std::invalid_argument("name") {}
};

// Returns the exact name, or throws RefusedName.
std::string NameText(const BSTR* text);

}  // namespace depot
