#include "depotctl/console.h"

#include "depotctl/tool.h"
#include "platform/wide_text.h"
#include "support/program_start.h"

namespace depot::test {
namespace {

constexpr SHORT kRows = 25;
constexpr SHORT kBufferRows = 500;
constexpr DWORD kPatience = 60000;

UniqueHandle OpenInherited(const char* name) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return OwnFile(CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0,
                               nullptr));
}

// What is pressed in the console reaches the test, too.
BOOL WINAPI Survive(DWORD event) {
    return event == CTRL_C_EVENT ? TRUE : FALSE;
}

}  // namespace

TestConsole::TestConsole(int columns) : columns_(columns) {
    FreeConsole();
    EXPECT_TRUE(AllocConsole());
    SetConsoleCtrlHandler(&Survive, TRUE);
    input_ = OpenInherited("CONIN$");
    screen_ = OpenInherited("CONOUT$");
    const auto width = static_cast<SHORT>(columns);
    const SMALL_RECT smallest = {0, 0, 0, 0};
    const SMALL_RECT window = {0, 0, static_cast<SHORT>(width - 1), kRows - 1};
    SetConsoleWindowInfo(screen_.get(), TRUE, &smallest);
    EXPECT_TRUE(SetConsoleScreenBufferSize(screen_.get(), {width, kBufferRows}));
    EXPECT_TRUE(SetConsoleWindowInfo(screen_.get(), TRUE, &window));
}

TestConsole::~TestConsole() {
    if (process_ && WaitForSingleObject(process_.get(), 0) != WAIT_OBJECT_0) {
        TerminateProcess(process_.get(), 99);
    }
    SetConsoleCtrlHandler(&Survive, FALSE);
    FreeConsole();
}

void TestConsole::Start(const std::vector<std::string>& arguments, HANDLE output) {
    ProgramStart start = {
        .command = L"\"" + WideFromUtf8(ToolPath()) + L"\" " + QuotedCommandLine(arguments),
        .inheritsHandles = true};
    start.startup.dwFlags = STARTF_USESTDHANDLES;
    start.startup.hStdInput = input_.get();
    start.startup.hStdOutput = output == nullptr ? screen_.get() : output;
    start.startup.hStdError = screen_.get();
    process_ = StartProgram(start).process;
}

ctl::ExitCode TestConsole::Finish() const {
    DWORD code = 0;
    if (WaitForSingleObject(process_.get(), kPatience) != WAIT_OBJECT_0) {
        ADD_FAILURE() << "depotctl does not end:\n" << Screen();
        TerminateProcess(process_.get(), 99);
    }
    GetExitCodeProcess(process_.get(), &code);
    return ctl::ExitCode{static_cast<int>(code)};
}

std::vector<std::string> TestConsole::Lines() const {
    const auto columns = static_cast<std::size_t>(columns_);
    std::wstring all(columns * kBufferRows, L' ');
    DWORD read = 0;
    ReadConsoleOutputCharacterW(screen_.get(), all.data(), static_cast<DWORD>(all.size()), {0, 0},
                                &read);
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < all.size(); at += columns) {
        std::wstring line = all.substr(at, columns);
        line.resize(line.find_last_not_of(L' ') + 1);
        lines.push_back(Utf8FromWide(line));
    }
    while (!lines.empty() && lines.back().empty()) lines.pop_back();
    return lines;
}

std::string TestConsole::Screen() const {
    std::string text;
    for (const std::string& line : Lines()) text += line + "\n";
    return text;
}

WORD TestConsole::AttributesAt(SHORT line) const {
    WORD attributes = 0;
    DWORD read = 0;
    EXPECT_TRUE(ReadConsoleOutputAttribute(screen_.get(), &attributes, 1, {0, line}, &read));
    return attributes;
}

bool TestConsole::WaitFor(const std::string& text) const {
    for (int attempt = 0; attempt < 2000; ++attempt) {
        if (Screen().find(text) != std::string::npos) return true;
        Sleep(5);
    }
    return false;
}

void TestConsole::Type(const std::wstring& text) const {
    for (const wchar_t c : text) {
        INPUT_RECORD records[2] = {};
        for (INPUT_RECORD& record : records) {
            record.EventType = KEY_EVENT;
            record.Event.KeyEvent.wRepeatCount = 1;
            record.Event.KeyEvent.uChar.UnicodeChar = c;
            if (c == L'\r') record.Event.KeyEvent.wVirtualKeyCode = VK_RETURN;
        }
        records[0].Event.KeyEvent.bKeyDown = TRUE;
        DWORD written = 0;
        EXPECT_TRUE(WriteConsoleInputW(input_.get(), records, 2, &written));
    }
}

void TestConsole::PressCtrlC() {
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
}

}  // namespace depot::test
