// What the parts of the fault layer share: whose calls fail, which of them, and what is held.
#pragma once

#include "faults/fault_layer.h"
#include "platform/compiler.h"

namespace depot::test {

// Whether this is the thread whose calls fail and count.
bool IsWatched();

// Counts a call of the watched thread. Returns whether it is one that fails.
bool FailsNow(FaultKind kind);

// Ends the process where the call that is to fail is to be its last; for calls that do a part of
// their work before.
void EndIfLast();
// As FailsNow, which ends the process at once where the call is to be its last.
bool FailsMidway(FaultKind kind);

void Note(Holding holding, std::ptrdiff_t change);

// While it lives, calls of the layer's own neither fail nor count.
class FaultPause {
public:
    FaultPause();
    ~FaultPause();
    FaultPause(const FaultPause&) = delete;
    FaultPause& operator=(const FaultPause&) = delete;

private:
    const bool wasArmed_;
    const Holdings before_;
};

// Where a function really is that one of the functions below stands in for.
template <auto Function>
inline decltype(Function) real = nullptr;

template <auto Function>
FARPROC StandIn(FARPROC genuine, decltype(Function) replacement) {
    real<Function> = FunctionCast<decltype(Function)>(genuine);
    return FunctionCast<FARPROC>(replacement);
}

#define DEPOT_STAND_IN(function, replacement) \
    if (std::strcmp(name, #function) == 0) return StandIn<&::function>(genuine, &replacement);

// Each returns what stands in for an imported function, or null.
FARPROC MemoryStandIn(const char* name, FARPROC genuine);
FARPROC FileStandIn(const char* name, FARPROC genuine);
FARPROC ObjectStandIn(const char* name, FARPROC genuine);

// How many of the handles of servers' blocks, which stay on purpose, are open.
std::size_t OpenServerHandles();

// A number that the system hands out is that of no handle which is open: what closed the former one
// of the number was not watched.
void ForgetServerHandle(HANDLE handle);

// Closes all of them but one, and their views.
void CloseServerHandles();

}  // namespace depot::test
