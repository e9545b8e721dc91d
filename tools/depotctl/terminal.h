// The program's streams: terminals, pipes and files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/secret_text.h"
#include "platform/win32.h"

namespace depot::ctl {

// How a text stands out on a terminal.
enum class Emphasis { kNone, kHeading, kError };

// Standard output or standard error. A terminal is given characters, anything else UTF-8.
class OutputStream {
public:
    // `standardHandle` is STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit OutputStream(DWORD standardHandle);

    bool IsTerminal() const { return isTerminal_; }

    // The columns of the terminal's window; 0 for anything else.
    std::size_t Columns() const;

    // Keeps what is written from now on in `bytes`, which lives as long as the stream.
    void CollectIn(std::string& bytes);

    // Writes a text in colour to a terminal, unless the environment has NO_COLOR, and as it is to
    // anything else.
    void Write(std::string_view text, Emphasis emphasis) const;

    // Writes a text in UTF-8. Throws OutputClosed when the output has no reader any more, and ends
    // the command when it cannot be written, as on a full disk.
    void Write(std::string_view text) const;

    // Writes bytes as they are, also to a terminal.
    void WriteBytes(const void* bytes, std::size_t length) const;

private:
    HANDLE handle_;
    bool isTerminal_;
    std::string* collected_ = nullptr;  // in place of the handle
};

// Reads a line from the terminal without showing what is typed; nothing without a terminal or when
// the user gives up. The prompt is written to the terminal, whatever the output is redirected to.
std::optional<SecretText> AskHidden(const std::string& prompt);

// The same, shown while it is typed.
std::optional<std::string> AskVisible(const std::string& prompt);

// Whether there is a terminal to ask a user at.
bool CanAsk();

// Reads the first line of redirected input; nothing when the input is a terminal or empty.
std::optional<SecretText> ReadRedirectedLine();

}  // namespace depot::ctl
