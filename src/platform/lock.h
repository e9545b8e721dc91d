// A lock that needs no memory, neither to be made nor to be used.
#pragma once

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// For std::lock_guard. What it guards is never waited for by the thread that holds it.
class Lock : NotCopied {
public:
    void lock() { AcquireSRWLockExclusive(&lock_); }
    void unlock() { ReleaseSRWLockExclusive(&lock_); }
    SRWLOCK* Native() { return &lock_; }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

}  // namespace depot
