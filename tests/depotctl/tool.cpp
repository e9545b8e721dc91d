#include "depotctl/tool.h"

#include <thread>

#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "support/program_start.h"

namespace depot::test {
namespace {

constexpr DWORD kPatience = 60000;
constexpr char kProgram[] = "depotctl.exe";

const char* programName = kProgram;

// A pipe; the end that a child is to have is inherited.
struct Pipe {
    enum class ChildEnd { kRead, kWrite };

    explicit Pipe(ChildEnd childEnd) {
        SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
        HANDLE readEnd = nullptr, writeEnd = nullptr;
        EXPECT_TRUE(CreatePipe(&readEnd, &writeEnd, &inherited, 0));
        const HANDLE own = childEnd == ChildEnd::kRead ? writeEnd : readEnd;
        SetHandleInformation(own, HANDLE_FLAG_INHERIT, 0);
        read.reset(readEnd);
        write.reset(writeEnd);
    }

    std::string ReadAll(std::size_t limit = SIZE_MAX) const {
        std::string text;
        char buffer[4096];
        while (text.size() < limit) {
            const auto room = static_cast<DWORD>(std::min(sizeof(buffer), limit - text.size()));
            DWORD bytes = 0;
            if (!ReadFile(read.get(), buffer, room, &bytes, nullptr) || bytes == 0) break;
            text.append(buffer, bytes);
        }
        return text;
    }

    UniqueHandle read, write;
};

std::wstring Quoted(const std::wstring& argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted.push_back(c);
    }
    return quoted.append(backslashes, L'\\') + L"\"";
}

// The program with all its streams redirected.
class RunningTool {
public:
    explicit RunningTool(const std::wstring& arguments)
        : RunningTool(Program() + L" " + arguments, nullptr) {}

    static std::wstring Program() { return L"\"" + WideFromAnsi(ToolPath()) + L"\""; }

    // With another output than the pipe, unless it is the null pointer.
    RunningTool(std::wstring command, const HANDLE* otherOutput) {
        ProgramStart start = {.command = std::move(command), .inheritsHandles = true};
        start.startup.dwFlags = STARTF_USESTDHANDLES;
        start.startup.hStdInput = input.read.get();
        start.startup.hStdOutput = otherOutput ? *otherOutput : output.write.get();
        start.startup.hStdError = errors.write.get();
        process_ = StartProgram(start).process;
        input.read.reset();
        output.write.reset();
        errors.write.reset();
    }

    ctl::ExitCode ExitCode() const {
        DWORD code = 0;
        if (WaitForSingleObject(process_.get(), kPatience) != WAIT_OBJECT_0) {
            ADD_FAILURE() << "depotctl does not end";
            TerminateProcess(process_.get(), 99);
        }
        GetExitCodeProcess(process_.get(), &code);
        return ctl::ExitCode{static_cast<int>(code)};
    }

    Pipe input{Pipe::ChildEnd::kRead};
    Pipe output{Pipe::ChildEnd::kWrite};
    Pipe errors{Pipe::ChildEnd::kWrite};

private:
    UniqueHandle process_;
};

ToolRun Finish(RunningTool& tool, std::size_t outputLimit) {
    ToolRun run;
    std::thread errorReader([&] { run.errors = tool.errors.ReadAll(); });
    run.output = tool.output.ReadAll(outputLimit);
    tool.output.read.reset();
    errorReader.join();
    run.exitCode = tool.ExitCode();
    return run;
}

}  // namespace

nlohmann::json ToolRun::Json() const {
    const nlohmann::json parsed = nlohmann::json::parse(output, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded()) << output << errors;
    return parsed;
}

std::wstring QuotedCommandLine(const std::vector<std::string>& arguments) {
    std::wstring line;
    for (const std::string& argument : arguments) line += Quoted(WideFromUtf8(argument)) + L" ";
    return line;
}

std::string ToolPath() {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof(program));
    return FolderPrefix(program) + programName;
}

SystemCodePageScope::SystemCodePageScope() {
    programName = "depotctl_ansi.exe";
}

SystemCodePageScope::~SystemCodePageScope() {
    programName = kProgram;
}

ToolRun RunToolWith(const std::vector<std::wstring>& arguments) {
    std::wstring line;
    for (const std::wstring& argument : arguments) line += Quoted(argument) + L" ";
    RunningTool tool(line);
    tool.input.write.reset();
    return Finish(tool, SIZE_MAX);
}

ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input) {
    for (int attempt = 1;; ++attempt) {
        RunningTool tool(QuotedCommandLine(arguments));
        DWORD written = 0;
        WriteFile(tool.input.write.get(), input.data(), static_cast<DWORD>(input.size()), &written,
                  nullptr);
        tool.input.write.reset();
        ToolRun run = Finish(tool, SIZE_MAX);
        if (run.exitCode != ctl::ExitCode{static_cast<int>(kNotLoaded)} || attempt == kStarts)
            return run;
    }
}

ToolRun RunToolByLine(const std::string& line) {
    RunningTool tool(WideFromUtf8(line));
    tool.input.write.reset();
    return Finish(tool, SIZE_MAX);
}

ToolRun RunProgram(const std::string& line) {
    RunningTool tool(WideFromUtf8(line), nullptr);
    tool.input.write.reset();
    return Finish(tool, SIZE_MAX);
}

ToolRun RunToolAtPrompt(const std::string& line) {
    // The prompt takes the outer quotes away.
    RunningTool tool(
        L"cmd.exe /s /c \"" + RunningTool::Program() + L" " + WideFromUtf8(line) + L"\"", nullptr);
    tool.input.write.reset();
    return Finish(tool, SIZE_MAX);
}

ToolRun RunToolWithOutput(const std::vector<std::string>& arguments, HANDLE output) {
    SetHandleInformation(output, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    RunningTool tool(RunningTool::Program() + L" " + QuotedCommandLine(arguments), &output);
    tool.input.write.reset();
    return Finish(tool, SIZE_MAX);
}

ToolRun RunToolAndStopReading(const std::vector<std::string>& arguments, std::size_t bytes) {
    RunningTool tool(QuotedCommandLine(arguments));
    tool.input.write.reset();
    return Finish(tool, bytes);
}

}  // namespace depot::test
