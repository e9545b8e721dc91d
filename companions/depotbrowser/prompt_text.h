// The texts of the dialogs: the one place that knows where they come from.
#pragma once

#include <optional>
#include <string>

#include "platform/win32.h"

namespace depot {

// Returns the text with this number in the user's language; empty when there is none.
std::wstring PromptText(UINT id);

// The same in the ANSI code page; nothing for a text that the code page cannot hold, because names
// of files are made from some of them.
std::optional<std::string> PromptTextForNames(unsigned id);

// Releases the library of the user's language. REQUIRES: no text is asked for any more.
void FreePromptTexts();

}  // namespace depot
