// The process's cache of macro values: its names and the lock around its creation.
#pragma once

#include <memory>
#include <string>

#include "platform/handles.h"
#include "platform/macro_cache.h"
#include "platform/not_copied.h"

namespace depot {

// The name of the event that serialises the creation of caches in all processes of the session.
inline constexpr char kReplacerEventName[] = "Quillon - Depot - Replacers";

// How long a caller waits for the others. What the lock guards takes microseconds; only a process
// that died while it held the event makes anyone wait that long, and then no process can signal it.
inline constexpr DWORD kReplacerWaitMilliseconds = 5000;

// Holds the event while it lives: whoever creates it continues, whoever finds it existing waits
// until it is signalled. Without an event, with one that somebody else made, and when the wait
// takes too long, it continues unlocked. Signals the event at the end.
class ReplacerLock : NotCopied {
public:
    ReplacerLock();
    ~ReplacerLock();

private:
    UniqueHandle event_;
};

// The name of the block of this process.
std::string ReplacerBlockName();

// Opens or creates the cache of this process and, unless somebody has stored a user folder there,
// stores the organization and `userDir`. An empty language code is replaced by `languageCode`; what
// else is in the cache stays as other modules of the process left it.
// REQUIRES: the caller holds a ReplacerLock.
std::unique_ptr<MacroCacheHolder> OpenReplacerCache(const std::string& userDir,
                                                    const std::string& languageCode);

}  // namespace depot
