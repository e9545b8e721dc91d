// Noticing that keys of the registry change.
#pragma once

#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/registry_key.h"

namespace depot {

// Watches keys from when they are added until the first change. The system reports a change by an
// event before the call that made it returns, in whatever process, so that asking for it costs one
// wait that does not wait.
class RegistryWatch {
public:
    // Watches root\path with everything below it, and every key on the way to it for being removed,
    // renamed and made anew; of a path that does not exist, what there is of it. Returns whether no
    // change can come unnoticed. What is read is to be read afterwards.
    bool Add(HKEY root, const std::string& path);

    // Whether anything has changed since it was added. A watch of nothing says so, too.
    bool HasChanged() const;

private:
    struct Watched {
        HKEY root;
        std::string path;
        UniqueHandle event;  // outlives the key
        UniqueHkey key;
    };
    enum class Outcome { kWatched, kMissing, kRefused };
    Outcome Watch(HKEY root, const std::string& path, bool everythingBelow);
    bool IsWatched(HKEY root, const std::string& path) const;

    // Each key has an event of its own: whoever asks for a report resets the event for it, also one
    // that has just been signalled for another key.
    std::vector<Watched> keys_;
    std::vector<HANDLE> events_;
};

// Tells one redirection of a hive from another: where RegOverridePredefKey leads elsewhere, another
// key was written last at another time.
struct HiveMark {
    FILETIME written = {};
    // Whether the hive could be asked.
    bool isKnown = false;

    friend bool operator==(const HiveMark& left, const HiveMark& right) {
        return left.isKnown && right.isKnown && CompareFileTime(&left.written, &right.written) == 0;
    }
};
HiveMark MarkOf(HKEY hive);

}  // namespace depot
