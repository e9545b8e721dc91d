// Objects that live until the process or the DLL ends, without running code at its exit.
#pragma once

#include <utility>

#include "platform/not_copied.h"

namespace depot {

// Holds one object that is never destroyed by the runtime. When a process ends, other threads have
// been stopped wherever they were and other libraries may be gone: destructors must not run then.
template <class T>
class NoDestructor : NotCopied {
public:
    template <class... Arguments>
    constexpr explicit NoDestructor(Arguments&&... arguments)
        : object_(std::forward<Arguments>(arguments)...) {}
    // Leaves the object alone.
    ~NoDestructor() {}

    T* get() { return &object_; }
    T& operator*() { return object_; }
    T* operator->() { return &object_; }

private:
    union {
        T object_;
    };
};

}  // namespace depot
