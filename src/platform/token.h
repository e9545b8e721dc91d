// The access tokens by which the system knows for whom a thread and its process work.
#pragma once

#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {

// Returns the token of the user for whom the calling thread works instead of its process; null with
// ERROR_NO_TOKEN where it works for no other one.
UniqueHandle TokenOfThread();

// Null when it cannot be opened.
UniqueHandle TokenOfProcess();

// Whether the calling thread works for another user than its process: it may then be refused, or
// see, what other threads are not.
bool IsImpersonating();

// What a token says of itself, with room for one identifier of a user, a group or a level.
template <class Record>
class TokenRecord {
public:
    TokenRecord(const UniqueHandle& token, TOKEN_INFORMATION_CLASS kind) {
        DWORD size = sizeof(bytes_);
        isRead_ = GetTokenInformation(token.get(), kind, bytes_, size, &size) != FALSE;
    }

    explicit operator bool() const { return isRead_; }
    // REQUIRES: it was read.
    const Record* operator->() const { return reinterpret_cast<const Record*>(bytes_); }

private:
    alignas(void*) BYTE bytes_[sizeof(Record) + SECURITY_MAX_SID_SIZE] = {};
    bool isRead_ = false;
};

}  // namespace depot
