// User-readable error messages: a lead text, the system's text for an error code, or both.
#pragma once

#include <cstddef>
#include <string>

#include "platform/win32.h"

namespace depot {

// The bytes of the longest message, its terminating NUL included; a longer one is cut.
inline constexpr std::size_t kErrorTextBytes = 1300;

// Builds the message for `error` (a Windows error code, 0 for none), led by `lead` when that is
// neither null nor empty, and stores it in `text`; without a `text` it shows the message in a box
// with the error icon, owned by `owner`, that may be null. A null `title` stands for "Error".
//
// A code that the system cannot describe adds nothing; neither lead nor code is "Unknown Error".
//
// Kept: an empty message is shown, too.
void FormatErrorText(DWORD error, const char* lead, const char* title, std::string* text,
                     HWND owner);

// The same without an owner window; a null `title` stands for "Quillon".
//
// Contract: nothing here calls it.
void ReportErrorText(DWORD error, const char* lead, const char* title, std::string* text);

}  // namespace depot
