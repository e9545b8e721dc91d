#include "support/child_process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>

#include "platform/wide_text.h"
#include "support/program_start.h"

namespace depot::test {
namespace {

constexpr char kRoleSwitch[] = "--role";

std::map<std::string, Role>& Roles() {
    static std::map<std::string, Role> roles;
    return roles;
}

}  // namespace

RoleRegistration::RoleRegistration(const char* name, Role role) {
    Roles()[name] = role;
}

bool RunRequestedRole(int argc, char** argv, int* exitCode) {
    if (argc < 4 || std::string(argv[1]) != kRoleSwitch) return false;
    Signal(argv[3]).Set();
    const auto role = Roles().find(argv[2]);
    *exitCode = role == Roles().end() ? -1 : role->second(Arguments(argv + 4, argv + argc));
    return true;
}

ChildProcess::ChildProcess(const std::string& role, const Arguments& arguments) {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof(program));
    static std::atomic<int> number = 0;
    const std::string loadedName = "depotintr-test-child-" + std::to_string(GetCurrentProcessId()) +
                                   "-" + std::to_string(++number);
    std::string command =
        "\"" + std::string(program) + "\" " + kRoleSwitch + " " + role + " " + loadedName;
    for (const std::string& argument : arguments) command += " \"" + argument + "\"";
    const Signal loaded(loadedName);
    for (int attempt = 0; attempt < kStarts; ++attempt) {
        StartedProgram started = StartProgram({.command = WideFromAnsi(command)});
        process_ = std::move(started.process);
        id_ = started.id;
        if (loaded.WaitUnlessEnded(process_.get())) return;
        if (ExitCode(0) != static_cast<int>(kNotLoaded)) return;
    }
}

ChildProcess::~ChildProcess() {
    if (ExitCode(0) == kStillRunning) Kill();
}

int ChildProcess::ExitCode(DWORD milliseconds) const {
    if (WaitForSingleObject(process_.get(), milliseconds) != WAIT_OBJECT_0) return kStillRunning;
    DWORD code = 0;
    GetExitCodeProcess(process_.get(), &code);
    return static_cast<int>(code);
}

void ChildProcess::Kill() const {
    TerminateProcess(process_.get(), 99);
    WaitForSingleObject(process_.get(), kPatience);
}

}  // namespace depot::test
