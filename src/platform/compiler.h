// The few places where compilers differ.
#pragma once

#if defined(_MSC_VER)
// An exported entry point keeps its plain name through the module definition file.
#define DEPOT_ENTRY_POINT extern "C"
#else
#define DEPOT_ENTRY_POINT extern "C" __attribute__((used))
#endif

// As a default argument: the name of the function that calls, without its class.
#define DEPOT_CALLER_NAME __builtin_FUNCTION()

namespace depot {

// Converts a looked-up entry point to its real type. Function pointers of unrelated types may not
// be cast into each other directly without a warning.
template <class Function, class Pointer>
Function FunctionCast(Pointer entryPoint) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(entryPoint));
}

}  // namespace depot
