// Converting between the texts of automation (BSTR) and the component's narrow texts.
#pragma once

#include <memory>
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

// Returns the text up to its first NUL in the ANSI code page of the calling thread. A null pointer
// and a null BSTR are empty texts.
std::string NarrowText(const BSTR* text);

// Returns a new BSTR of the whole text, embedded NULs included; null when memory is exhausted.
UniqueBstr NewBstr(const std::string& text);

}  // namespace depot
