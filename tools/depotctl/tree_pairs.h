// What two trees have in common, by the names in them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace depot::ctl {

// A file or folder by its path below the top of its tree, in the ANSI code page; that of the top is
// empty.
struct TreeName {
    std::string path;
    bool isFolder = false;
};

inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// What has one name in either tree or in both: the indexes there, kNowhere where it is not.
struct NamePair {
    std::size_t left = kNowhere;
    std::size_t right = kNowhere;
};

// Pairs what has the same path, letter case aside: all of the left tree in its order, then what
// only the right one has. Each item is in one pair; of several of a tree that are one name to
// another tree, only the first has a partner.
std::vector<NamePair> PairNames(const std::vector<TreeName>& left,
                                const std::vector<TreeName>& right);

}  // namespace depot::ctl
