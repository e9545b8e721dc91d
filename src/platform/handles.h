// Owners of kernel objects and modules: one type per kind of handle, with its release call.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/win32.h"

namespace depot {

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
// Owns an event, a mapping or an open file. Whoever opens a file or starts a search turns
// INVALID_HANDLE_VALUE into null.
using UniqueHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

// Owns what a call that opens a file returned; null when the call failed.
inline UniqueHandle OwnFile(HANDLE opened) {
    return UniqueHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

struct ModuleFreer {
    void operator()(HMODULE module) const { FreeLibrary(module); }
};
// Owns one reference to a loaded library.
using UniqueModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, ModuleFreer>;

}  // namespace depot
