#include "support/child_process.h"

#include <gtest/gtest.h>

#include <map>

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
    if (argc < 3 || std::string(argv[1]) != kRoleSwitch) return false;
    const auto role = Roles().find(argv[2]);
    *exitCode = role == Roles().end() ? -1 : role->second(Arguments(argv + 3, argv + argc));
    return true;
}

ChildProcess::ChildProcess(const std::string& role, const Arguments& arguments) {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof(program));
    std::string command = "\"" + std::string(program) + "\" " + kRoleSwitch + " " + role;
    for (const std::string& argument : arguments) command += " \"" + argument + "\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION created = {};
    EXPECT_TRUE(CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &created));
    const UniqueHandle thread(created.hThread);
    process_.reset(created.hProcess);
    id_ = created.dwProcessId;
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
