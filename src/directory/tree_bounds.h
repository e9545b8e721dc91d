// Bounds on what is looked at of a server's tree: one that makes its tree up as it is asked would
// hold a call for ever.
#pragma once

#include <chrono>
#include <cstdint>

namespace depot {

// How much of a tree one operation looks at. No depot comes near these.
struct TreeBounds {
    std::uint64_t entries = 1'000'000;
    std::uint64_t nameBytes =
        std::uint64_t{256} * 1024 * 1024;  // the names of all entries together
    std::size_t longestName = std::size_t{64} * 1024;
    std::uint32_t depth = 1'000;  // levels below the uppermost folder
    // What the listings alone may take together, however long the work on the entries takes.
    std::chrono::steady_clock::duration listingTime = std::chrono::minutes(10);
};

// What the listings of one operation on a tree came to so far. Borrows the bounds.
class TreeBudget {
public:
    explicit TreeBudget(const TreeBounds& bounds) : bounds_(bounds) {}

    // What one listing came to.
    struct Listing {
        std::uint32_t depth = 0;  // of the folder, below the uppermost one
        std::size_t entries = 0;
        std::uint64_t nameBytes = 0;
        std::size_t firstName = 0;  // the length of the first name
        std::chrono::steady_clock::duration time{};
    };

    // Adds a listing. Returns LDAP_SUCCESS, or the code of the bound that was passed.
    std::uint32_t Add(const Listing& listing);

private:
    const TreeBounds& bounds_;
    std::uint64_t entries_ = 0;
    std::uint64_t nameBytes_ = 0;
    std::chrono::steady_clock::duration time_{};
};

}  // namespace depot
