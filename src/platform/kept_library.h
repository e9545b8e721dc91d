// Libraries that are loaded at first use and then kept.
#pragma once

#include <atomic>
#include <string>

#include "platform/handles.h"
#include "platform/not_copied.h"

namespace depot {

// Keeps the system from reporting a damaged library in a box of its own while it lives.
class QuietLoadScope : NotCopied {
public:
    QuietLoadScope() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &previous_); }
    ~QuietLoadScope() { SetThreadErrorMode(previous_, nullptr); }

private:
    DWORD previous_ = 0;
};

// Loads the library at a full path, without a box when that fails. What the library needs in turn
// is taken from its own folder and from the system's, and from nowhere else: neither the program's
// folder nor the current one nor the search path counts. Null when it does not load, and for a path
// that is not a full one.
UniqueModule LoadLibraryAlone(const std::string& path);

// One reference to a library for all threads of the process. It is not given back by itself: while
// a process ends, the library may be gone before this object.
class KeptLibrary : NotCopied {
public:
    // The library, or null when none is kept.
    HMODULE Get() const { return library_; }

    // Keeps `library`, that may be null, unless another thread was first; its library then stays
    // and this one is freed. Returns the one that is kept.
    HMODULE Keep(UniqueModule library);

    // Gives the reference back. REQUIRES: nothing uses the library any more.
    void Free();

private:
    std::atomic<HMODULE> library_ = nullptr;
};

}  // namespace depot
