// The test program started again, to see what another process sees.
#pragma once

#include <string>
#include <vector>

#include "platform/handles.h"

namespace depot::test {

using Arguments = std::vector<std::string>;

// What a second process does instead of running tests; its result is the exit code.
using Role = int (*)(const Arguments& arguments);

// Makes a role known under a name; one static object per role.
class RoleRegistration {
public:
    RoleRegistration(const char* name, Role role);
};

// Runs the role that the command line asks for. Returns false when it asks for none.
bool RunRequestedRole(int argc, char** argv, int* exitCode);

// A second process of this test program. It is ended with the object at the latest.
class ChildProcess {
public:
    // Starts the program in that role. No argument may hold a quote or end in a backslash.
    explicit ChildProcess(const std::string& role, const Arguments& arguments = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Waits until the process ends and returns its exit code, or kStillRunning after a while.
    int ExitCode(DWORD milliseconds = kPatience) const;

    // Ends the process at once, as a crash would.
    void Kill() const;

    DWORD Id() const { return id_; }

    static constexpr DWORD kPatience = 30000;
    static constexpr int kStillRunning = -1000;

private:
    UniqueHandle process_;
    DWORD id_ = 0;
};

// A named event between a test and its child processes, created unsignalled.
class Signal {
public:
    explicit Signal(const std::string& name)
        : event_(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}
    void Set() const { SetEvent(event_.get()); }
    bool Wait(DWORD milliseconds = ChildProcess::kPatience) const {
        return WaitForSingleObject(event_.get(), milliseconds) == WAIT_OBJECT_0;
    }
    // Returns false where the process ended without setting it.
    bool WaitUnlessEnded(HANDLE process) const {
        const HANDLE either[] = {event_.get(), process};
        return WaitForMultipleObjects(2, either, FALSE, ChildProcess::kPatience) == WAIT_OBJECT_0;
    }

private:
    UniqueHandle event_;
};

}  // namespace depot::test
