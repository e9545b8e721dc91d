// depotctl as its users run it: a process of its own, whose output is read through pipes.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "depotctl/failure.h"
#include "manager/depot_list.h"
#include "support/scratch.h"

namespace depot::ctl {

inline void PrintTo(ExitCode code, std::ostream* out) {
    *out << "exit code " << static_cast<int>(code);
}

}  // namespace depot::ctl

namespace depot::test {

using ctl::ExitCode;

// What one run left. Texts are in UTF-8.
struct ToolRun {
    ExitCode exitCode{-1};
    std::string output;
    std::string errors;

    // The output as JSON; a test failure when it is none.
    nlohmann::json Json() const;
};

// Runs the program beside this one with these arguments, in UTF-8, and `input` as what stands in
// its standard input.
ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input = {});

// The same with arguments that UTF-8 may not hold.
ToolRun RunToolWith(const std::vector<std::wstring>& arguments);

// The same with a command line that is passed on as it stands, the second time as what is typed at
// a prompt of the system.
ToolRun RunToolByLine(const std::string& line);
ToolRun RunToolAtPrompt(const std::string& line);

// The same of a program that stands somewhere else; its name is the line's first part.
ToolRun RunProgram(const std::string& line);

// The same with a file, or nothing, that takes the output.
ToolRun RunToolWithOutput(const std::vector<std::string>& arguments, HANDLE output);

// Starts the program, reads `bytes` of its output, closes the pipe and waits for its end.
ToolRun RunToolAndStopReading(const std::vector<std::string>& arguments, std::size_t bytes);

// The command line of a program and its arguments, quoted as programs take them apart.
std::wstring QuotedCommandLine(const std::vector<std::string>& arguments);

// The path of the program.
std::string ToolPath();

// While it lives, the program runs in the system's code page, as on a Windows that does not know
// the one that the program asks for.
class SystemCodePageScope {
public:
    SystemCodePageScope();
    ~SystemCodePageScope();
    SystemCodePageScope(const SystemCodePageScope&) = delete;
    SystemCodePageScope& operator=(const SystemCodePageScope&) = delete;
};

// A world with two depots in folders: "Work", named "Travail", and "Team".
class ToolTest : public testing::Test {
protected:
    ToolTest() {
        DefineFolder("Work", folder_.MakeFolder("work"));
        key_.Text("Work", "DisplayName.eng", "Travail");
        key_.Dword("Work", "OrderIndex", 1);
        DefineFolder("Team", folder_.MakeFolder("team"));
    }

    void DefineFolder(const std::string& name, const std::string& path) const {
        key_.Text(name, "Path1", path);
    }

    // Whether a file or folder is in the test's folder, and the bytes of a file there.
    bool Holds(const std::string& name) const { return Exists(folder_.At(name)); }
    std::string Bytes(const std::string& name) const { return FileBytes(folder_.At(name)); }

    ScratchKey key_{HKEY_CURRENT_USER, kDepotsKey};
    ScratchFolder folder_;
};

}  // namespace depot::test
