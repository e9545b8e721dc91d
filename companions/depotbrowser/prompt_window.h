// The window in which the user types the credentials for a server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/secret_text.h"
#include "platform/win32.h"

namespace depot {

struct PromptFields {
    std::wstring serverName;
    std::wstring userName;
    WideSecret password;
    // Whoever asks can use only what the ANSI code page holds; other texts are refused in place.
    bool onlyAnsi = false;
    // The directory's code with which the log-on before failed; 0 for none.
    std::uint32_t failure = 0;
    // Whether they are sent over a secured connection; nothing is said where that is not known.
    std::optional<bool> isSecured = {};
    bool offersStoring = false;
    bool isToBeStored = false;  // what the user wants
    // A user name in the form that the server wants; empty where that is not known.
    std::wstring userNameExample = {};
};

enum class PromptOutcome { kConfirmed, kCancelled, kNotShown };

// The characters that can be typed into one field: as many as are kept of a user name or password
// for the next prompt.
inline constexpr int kPromptFieldLimit = 259;

// Shows the fields modally and waits for the user. The owner, if any, is disabled meanwhile; it may
// be closed while the window is open, which cancels. `fields` change only when the user confirms.
PromptOutcome ShowPromptWindow(HWND owner, PromptFields& fields);

}  // namespace depot
