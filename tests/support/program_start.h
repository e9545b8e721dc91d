// Programs that tests start. Of some thousand processes the emulator does not come to start one, or
// to load the system's libraries into it: nothing of such a program has run, and it is started
// again.
#pragma once

#include <string>

#include "platform/handles.h"

namespace depot::test {

// What CreateProcess is asked for.
struct ProgramStart {
    std::wstring command = {};
    STARTUPINFOW startup = {};  // StartProgram fills in the size
    bool inheritsHandles = false;
    const wchar_t* folder = nullptr;  // null: the folder that is current
};

// What a program whose libraries were not loaded ends with.
constexpr DWORD kNotLoaded = STATUS_DLL_INIT_FAILED;
// How often a program is started at most.
constexpr int kStarts = 4;

struct StartedProgram {
    UniqueHandle process;
    DWORD id = 0;
};

// Starts a program without waiting for it; a failure of the test when the system does not.
StartedProgram StartProgram(const ProgramStart& start);

// Runs a program to its end and returns its exit code. One that takes longer is ended, as a failure
// of the test.
DWORD RunProgram(const ProgramStart& start, DWORD milliseconds = 60000);

}  // namespace depot::test
