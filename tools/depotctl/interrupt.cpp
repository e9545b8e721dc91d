#include "depotctl/interrupt.h"

#include <atomic>

#include "platform/win32.h"

namespace depot::ctl {
namespace {

// Set by the system's own thread.
std::atomic<bool> interrupted = false;

BOOL WINAPI Note(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    interrupted = true;
    return TRUE;
}

}  // namespace

InterruptScope::InterruptScope() {
    interrupted = false;
    SetConsoleCtrlHandler(&Note, TRUE);
}

InterruptScope::~InterruptScope() {
    SetConsoleCtrlHandler(&Note, FALSE);
}

bool InterruptScope::WasInterrupted() {
    return interrupted;
}

}  // namespace depot::ctl
