// The entry points of an in-process server, which are the same in each DLL, and the part in them
// that each DLL defines itself.
#pragma once

#include <optional>

#include "com/com_module.h"
#include "platform/no_destructor.h"

namespace depot {

// The module of this DLL while it is attached to its process, else empty. `Class` is CComModule or
// derived from it.
template <class Class>
std::optional<Class>& AttachedModule() {
    static NoDestructor<std::optional<Class>> module;
    return *module;
}

// Makes the module and what else the DLL needs; returns whether the DLL may be used. When it may
// not, the system detaches it at once and takes it out of the process again.
bool AttachServer() noexcept;

// Releases everything while the system takes the DLL out of the process. Not called while a process
// ends: nothing may be touched then that other libraries may already have given up.
void DetachServer();

// Returns whether the DLL can be unloaded.
bool CanUnloadServer() noexcept;

}  // namespace depot
