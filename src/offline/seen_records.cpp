#include "offline/seen_records.h"

#include <mutex>

#include "platform/lock.h"

namespace depot {
namespace {

struct Sighting {
    Digest path;
    Digest contents;
    std::uint64_t size;
    std::uint64_t time;
};

constexpr std::size_t kPlaces = 64;

// Each file has one place in it, from which a later one of the same place drives it. Few places:
// they take room in the library's file.
Sighting places[kPlaces];
constinit Lock lock;

// Of a digest any byte is as good as any other.
Sighting& PlaceOf(const Digest& path) {
    return places[path[0] % kPlaces];
}

}  // namespace

bool WasSeen(const std::string& path, const FileState& state, const Digest& contents) {
    const Digest name = DigestOf(path.data(), path.size());
    const std::lock_guard guard(lock);
    const Sighting& seen = PlaceOf(name);
    return seen.path == name && FileState{seen.size, seen.time} == state &&
           seen.contents == contents;
}

void NoteSeen(const std::string& path, const FileState& state, const Digest& contents) {
    const Digest name = DigestOf(path.data(), path.size());
    const std::lock_guard guard(lock);
    PlaceOf(name) = {name, contents, state.size, state.time};
}

}  // namespace depot
