#include "platform/token.h"

namespace depot {

UniqueHandle TokenOfThread() {
    HANDLE token = nullptr;
    OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token);
    return UniqueHandle(token);
}

UniqueHandle TokenOfProcess() {
    HANDLE token = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    return UniqueHandle(token);
}

bool IsImpersonating() {
    return TokenOfThread() || GetLastError() != ERROR_NO_TOKEN;
}

}  // namespace depot
