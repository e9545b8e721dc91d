#include "offline/seen_records.h"

#include <mutex>

#include "platform/lock.h"

namespace depot {
namespace {

struct Sighting {
    Digest path = {};
    FileState state = {};
    Digest contents = {};
};

// Each file has one place in it, from which a later one of the same place drives it.
struct Sightings {
    static constexpr std::size_t kPlaces = 256;
    Lock lock;
    Sighting places[kPlaces] = {};

    // Of a digest any byte is as good as any other.
    Sighting& Of(const Digest& path) { return places[path[0]]; }
};

constinit Sightings sightings;

}  // namespace

bool WasSeen(const std::string& path, const FileState& state, const Digest& contents) {
    const Digest name = DigestOf(path.data(), path.size());
    const std::lock_guard guard(sightings.lock);
    const Sighting& seen = sightings.Of(name);
    return seen.path == name && seen.state == state && seen.contents == contents;
}

void NoteSeen(const std::string& path, const FileState& state, const Digest& contents) {
    const Digest name = DigestOf(path.data(), path.size());
    const std::lock_guard guard(sightings.lock);
    sightings.Of(name) = {name, state, contents};
}

}  // namespace depot
