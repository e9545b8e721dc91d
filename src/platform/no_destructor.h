// Objects that live until the process or the DLL goes, without running code at its exit.
#pragma once

#include <memory>
#include <utility>

namespace depot {

// Holds one object that is never destroyed by the runtime. When a process ends, other threads have
// been stopped wherever they were and other libraries may be gone: destructors must not run then.
template <class T>
class NoDestructor {
public:
    template <class... Arguments>
    explicit NoDestructor(Arguments&&... arguments) {
        std::construct_at(get(), std::forward<Arguments>(arguments)...);
    }

    T* get() { return reinterpret_cast<T*>(storage_); }
    T& operator*() { return *get(); }
    T* operator->() { return get(); }

private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace depot
