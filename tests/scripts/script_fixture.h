// Client scripts, run as their users run them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/compiler.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"
#include "support/program_start.h"
#include "support/scratch.h"

namespace depot::test {

inline constexpr DWORD kLongestRunMilliseconds = 60000;

inline constexpr char kOffice[] =
    "; kept by the office\r\n[PROFILE]\r\nTitle=Office\r\n\r\n[Host]\r\nName=\"host.example\"\r\n"
    "Port=23\r\n\r\n[Screen]\r\nFont='Courier New'\r\n";

// Registers the component and defines one depot on a folder of sample profiles.
class ScriptTest : public testing::Test {
protected:
    ScriptTest() {
        Register();
        product_.Text("", "UserDir", folder_.MakeFolder("User"));
        depots_.Text("Work", "Path1", folder_.MakeFolder("Work"));
        depots_.Text("Work", "DisplayName.eng", "My Depot of Work");
        folder_.MakeFolder("Work\\Sessions");
        folder_.MakeFile("Work\\Sessions\\office.kre", kOffice);
    }

    static void Register() { RegisterLibrary("DepotIntr.dll"); }
    static void RegisterLibrary(const std::string& name) {
        const UniqueModule library(LoadLibraryA((OwnModuleFolder() + name).c_str()));
        ASSERT_TRUE(library);
        const auto entry =
            FunctionCast<HRESULT(WINAPI*)()>(GetProcAddress(library.get(), "DllRegisterServer"));
        ASSERT_EQ(S_OK, entry());
    }

    // Runs a script to its end and returns the lines that it printed, errors included.
    std::vector<std::string> Run(const std::string& script) {
        const std::string output = folder_.At("output.txt");
        EXPECT_EQ(0u, RunInto(output, script));
        std::vector<std::string> lines;
        std::string line;
        for (const char c : FileBytes(output)) {
            if (c == '\n')
                lines.push_back(std::exchange(line, {}));
            else if (c != '\r')
                line.push_back(c);
        }
        if (!line.empty()) lines.push_back(line);
        return lines;
    }

    DWORD RunInto(const std::string& output, const std::string& script) {
        return RunCommandInto(
            output, "cscript.exe //nologo \"" + OwnModuleFolder() + "clients\\" + script + "\"");
    }

    DWORD RunCommandInto(const std::string& output, const std::string& command) {
        SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
        const HANDLE opened = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                          &inherited, CREATE_ALWAYS, 0, nullptr);
        EXPECT_NE(INVALID_HANDLE_VALUE, opened);
        const UniqueHandle file(opened);
        ProgramStart start = {.command = WideFromAnsi(command), .inheritsHandles = true};
        start.startup.dwFlags = STARTF_USESTDHANDLES;
        start.startup.hStdOutput = opened;
        start.startup.hStdError = opened;
        return RunProgram(start, kLongestRunMilliseconds);
    }

    using Lines = std::vector<std::string>;

    ScratchFolder folder_;
    ScratchKey product_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\Wharfside"};
    ScratchKey depots_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots"};
};

}  // namespace depot::test
