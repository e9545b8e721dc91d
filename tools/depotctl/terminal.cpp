#include "depotctl/terminal.h"

#include <algorithm>

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "platform/handles.h"
#include "platform/not_copied.h"
#include "platform/wide_text.h"
#include "platform/wipe.h"

namespace depot::ctl {
namespace {

// The console takes no more than some 64 KB in one call.
constexpr std::size_t kConsoleChunk = 8000;
constexpr DWORD kLongestAnswer = 256;

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return handle != nullptr && GetConsoleMode(handle, &mode) != FALSE;
}

UniqueHandle OpenConsole(const char* name) {
    return OwnFile(CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                               nullptr));
}

// Changes a console's input mode and puts it back at the end, whatever happens between.
class InputMode : NotCopied {
public:
    InputMode(HANDLE input, bool echo) : input_(input) {
        GetConsoleMode(input_, &previous_);
        const DWORD lines = ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
        SetConsoleMode(input_, echo ? lines | ENABLE_ECHO_INPUT : lines);
    }
    ~InputMode() { SetConsoleMode(input_, previous_); }

private:
    HANDLE input_;
    DWORD previous_ = 0;
};

// A reader that closed its pipe has what it wanted; anything else has lost what was to be written.
[[noreturn]] void EndOutput(DWORD error) {
    if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA) throw OutputClosed();
    throw CommandFailure(ExitCode::kRefused, "cannot write the output: " + SystemWords(error));
}

// By convention any value but an empty one turns colours off.
bool MayColour() {
    wchar_t first = 0;
    return GetEnvironmentVariableW(L"NO_COLOR", &first, 1) == 0;
}

WORD Coloured(WORD attributes, Emphasis emphasis) {
    constexpr WORD kForeground = FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE;
    const WORD others = attributes & static_cast<WORD>(~kForeground);
    const WORD colour = emphasis == Emphasis::kError ? WORD{FOREGROUND_RED}
                                                     : WORD{FOREGROUND_GREEN | FOREGROUND_BLUE};
    return static_cast<WORD>(others | colour | FOREGROUND_INTENSITY);
}

// While it lives, a console writes in a colour.
class ColourScope : NotCopied {
public:
    ColourScope(HANDLE console, Emphasis emphasis) : console_(console) {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (!GetConsoleScreenBufferInfo(console, &info)) return;
        before_ = info.wAttributes;
        isSet_ = SetConsoleTextAttribute(console, Coloured(before_, emphasis)) != FALSE;
    }
    ~ColourScope() {
        if (isSet_) SetConsoleTextAttribute(console_, before_);
    }

private:
    HANDLE console_;
    WORD before_ = 0;
    bool isSet_ = false;
};

void WriteWide(HANDLE console, const std::wstring& text) {
    for (std::size_t at = 0; at < text.size(); at += kConsoleChunk) {
        const auto length = static_cast<DWORD>(std::min(kConsoleChunk, text.size() - at));
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data() + at, length, &written, nullptr)) {
            EndOutput(GetLastError());
        }
    }
}

std::optional<SecretText> Ask(const std::string& prompt, bool echo) {
    const UniqueHandle input = OpenConsole("CONIN$");
    const UniqueHandle output = OpenConsole("CONOUT$");
    if (!IsConsole(input.get()) || !IsConsole(output.get())) return std::nullopt;
    WriteWide(output.get(), WideFromUtf8(prompt));
    wchar_t typed[kLongestAnswer] = {};
    DWORD length = 0;
    {
        const InputMode mode(input.get(), echo);
        if (!ReadConsoleW(input.get(), typed, kLongestAnswer, &length, nullptr)) length = 0;
    }
    if (!echo) WriteWide(output.get(), L"\n");
    if (length == 0) return std::nullopt;
    const std::wstring_view line(typed, length);
    SecretText answer = Utf8FromWide(line.substr(0, line.find_first_of(L"\r\n")));
    SecureZeroMemory(typed, sizeof(typed));
    return answer;
}

}  // namespace

OutputStream::OutputStream(DWORD standardHandle)
    : handle_(GetStdHandle(standardHandle)), isTerminal_(IsConsole(handle_)) {}

std::size_t OutputStream::Columns() const {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!isTerminal_ || !GetConsoleScreenBufferInfo(handle_, &info)) return 0;
    return static_cast<std::size_t>(std::max(info.srWindow.Right - info.srWindow.Left + 1, 1));
}

void OutputStream::CollectIn(std::string& bytes) {
    collected_ = &bytes;
    isTerminal_ = false;
}

void OutputStream::Write(std::string_view text, Emphasis emphasis) const {
    if (!isTerminal_ || emphasis == Emphasis::kNone || !MayColour()) return Write(text);
    const ColourScope scope(handle_, emphasis);
    Write(text);
}

void OutputStream::Write(std::string_view text) const {
    if (isTerminal_) {
        WriteWide(handle_, WideFromUtf8(text));
    } else {
        WriteBytes(text.data(), text.size());
    }
}

void OutputStream::WriteBytes(const void* bytes, std::size_t length) const {
    if (collected_ != nullptr) {
        collected_->append(static_cast<const char*>(bytes), length);
        return;
    }
    // A program that was started without an output has nobody who reads it.
    if (handle_ == nullptr || handle_ == INVALID_HANDLE_VALUE) return;
    const auto* const data = static_cast<const char*>(bytes);
    for (std::size_t at = 0; at < length;) {
        DWORD written = 0;
        const auto chunk = static_cast<DWORD>(std::min<std::size_t>(length - at, 1u << 20));
        if (!WriteFile(handle_, data + at, chunk, &written, nullptr)) EndOutput(GetLastError());
        // Nothing written without an error is what some file systems make of no room.
        if (written == 0) EndOutput(ERROR_DISK_FULL);
        at += written;
    }
}

std::optional<SecretText> AskHidden(const std::string& prompt) {
    return Ask(prompt, false);
}

std::optional<std::string> AskVisible(const std::string& prompt) {
    const std::optional<SecretText> answer = Ask(prompt, true);
    return answer ? std::optional(answer->Plain()) : std::nullopt;
}

bool CanAsk() {
    return IsConsole(GetStdHandle(STD_INPUT_HANDLE)) && IsConsole(OpenConsole("CONIN$").get());
}

std::optional<SecretText> ReadRedirectedLine() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (IsConsole(input)) return std::nullopt;
    std::string line;
    const WipeAtEnd wiped(line);
    line.reserve(kLongestAnswer);  // growing would leave copies behind
    char next = 0;
    DWORD read = 0;
    while (line.size() < kLongestAnswer && ReadFile(input, &next, 1, &read, nullptr) && read == 1 &&
           next != '\n') {
        line.push_back(next);
    }
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) return std::nullopt;
    return SecretText(line);
}

}  // namespace depot::ctl
