// What a session stored, to be looked at once more: a server's replicas may take two edits at once,
// and keep one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace depot {

// The edits that were stored in the entries of one location. Used by one thread at a time.
class StoredEdits {
public:
    using Bytes = std::vector<std::uint8_t>;

    // `hasReplicas`: whether others may store in another server of the same entries.
    explicit StoredEdits(bool hasReplicas) : hasReplicas_(hasReplicas) {}

    // Notes that `stored` took the place of `base` in an entry. The oldest edits are forgotten
    // where they are many or long, and all where memory runs out.
    void Note(const std::string& dn, std::span<const std::uint8_t> base,
              std::span<const std::uint8_t> stored) noexcept;

    // Returns the bytes that were stored in the entry where `present`, which it holds now, lacks
    // something of the edit, and forgets the edit. Nothing comes back
    // - while the entry holds what was stored, or what it held before: a replica may be late;
    // - where the edited values are there;
    // - where they were changed once more, and there is one server: it let that happen to who knew
    //   this edit alone. With replicas an edit that was made at once looks like that, too;
    // - where one of the three is no profile.
    std::optional<Bytes> TakeLost(const std::string& dn, std::span<const std::uint8_t> present);

private:
    struct Edit {
        std::string name;  // the entry's
        Bytes base;
        Bytes stored;
    };

    void Forget(const std::string& name);

    bool hasReplicas_;
    std::vector<Edit> edits_;  // the oldest first
};

}  // namespace depot
