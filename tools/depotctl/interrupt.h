// Ctrl+C during work that must not be cut in the middle of a file.
#pragma once

namespace depot::ctl {

// While one of these lives, Ctrl+C and Ctrl+Break are noted and do not end the program.
class InterruptScope {
public:
    InterruptScope();
    ~InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

    // Whether the user pressed one of them meanwhile.
    static bool WasInterrupted();
};

}  // namespace depot::ctl
