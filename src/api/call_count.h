// How many interface calls are at work in the DLL.
#pragma once

#include <atomic>

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// One call, for as long as it lives. A call that shows a message lets the client's windows work on,
// and they may release the last object and ask for the DLL to be unloaded.
class CallScope : NotCopied {
public:
    CallScope() { ++count_; }
    ~CallScope() { --count_; }

    // The calls at work on all threads.
    static LONG Count() { return count_; }

private:
    static inline std::atomic<LONG> count_ = 0;
};

}  // namespace depot
