// A pointer that each thread has of its own.
#pragma once

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// A slot of the system's: unlike a variable of the thread it needs no memory when it is first used.
template <class T>
class ThreadSlot : NotCopied {
public:
    ThreadSlot() : index_(TlsAlloc()) {}
    ~ThreadSlot() {
        if (index_ != TLS_OUT_OF_INDEXES) TlsFree(index_);
    }

    // Null where nothing was set, and where the system had no slot left.
    T* Get() const {
        // The system's call clears the last error.
        const DWORD error = GetLastError();
        void* const value = index_ == TLS_OUT_OF_INDEXES ? nullptr : TlsGetValue(index_);
        SetLastError(error);
        return static_cast<T*>(value);
    }
    void Set(T* value) const {
        if (index_ != TLS_OUT_OF_INDEXES) TlsSetValue(index_, value);
    }

private:
    const DWORD index_;
};

}  // namespace depot
