// The texts of the dialogs: the one place that knows where they come from.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot {

// Returns the text with this number in the user's language; empty when there is none.
std::wstring PromptText(UINT id);

}  // namespace depot
