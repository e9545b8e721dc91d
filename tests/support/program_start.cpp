#include "support/program_start.h"

#include <gtest/gtest.h>

namespace depot::test {

StartedProgram StartProgram(const ProgramStart& start) {
    STARTUPINFOW startup = start.startup;
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION created = {};
    for (int attempt = 1;; ++attempt) {
        std::wstring command = start.command;
        if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, start.inheritsHandles, 0,
                           nullptr, start.folder, &startup, &created)) {
            break;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_INTERNAL_ERROR || attempt == kStarts) {
            ADD_FAILURE() << testing::PrintToString(start.command) << ": error " << error;
            return {};
        }
        Sleep(200);
    }
    const UniqueHandle thread(created.hThread);
    return {UniqueHandle(created.hProcess), created.dwProcessId};
}

DWORD RunProgram(const ProgramStart& start, DWORD milliseconds) {
    DWORD code = kNotLoaded;
    for (int attempt = 0; attempt < kStarts && code == kNotLoaded; ++attempt) {
        const StartedProgram program = StartProgram(start);
        if (!program.process) break;
        if (WaitForSingleObject(program.process.get(), milliseconds) != WAIT_OBJECT_0) {
            ADD_FAILURE() << testing::PrintToString(start.command) << " does not end";
            TerminateProcess(program.process.get(), 99);
            return 99;
        }
        GetExitCodeProcess(program.process.get(), &code);
    }
    return code;
}

}  // namespace depot::test
