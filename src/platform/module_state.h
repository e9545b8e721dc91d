// The DLL's own module: its handle, its folder and the activation context of its manifest.
#pragma once

#include <string>

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// The library or program that this code is linked into.
HMODULE OwnModule();

// The same with a reference that keeps a library loaded: for a thread of its own, which ends with
// FreeLibraryAndExitThread. Null when it cannot be had.
HMODULE KeepOwnModule();

// The full path of the library or program that this code is linked into.
std::wstring OwnModulePath();

// Its folder in the ANSI code page, with a trailing backslash; empty when the path is too long.
std::string OwnModuleFolder();

// Makes the DLL's own activation context (its manifest, resource 2) current on this thread for as
// long as the object lives, and then the caller's again, on every way out. Without a usable
// manifest it changes nothing.
class ModuleStateScope : NotCopied {
public:
    ModuleStateScope();
    ~ModuleStateScope();

private:
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

}  // namespace depot
