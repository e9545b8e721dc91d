#include "platform/impersonation.h"

#include "platform/handles.h"

namespace depot {

bool IsImpersonating() {
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token)) {
        const UniqueHandle owner(token);
        return true;
    }
    return GetLastError() != ERROR_NO_TOKEN;
}

}  // namespace depot
