#include "depotctl/tree_pairs.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/code_pages.h"

namespace depot::ctl {
namespace {

using Indexes = std::vector<std::pair<std::size_t, std::size_t>>;

Indexes Paired(const std::vector<std::string>& left, const std::vector<std::string>& right) {
    std::vector<TreeName> leftNames, rightNames;
    for (const std::string& name : left) leftNames.push_back({name});
    for (const std::string& name : right) rightNames.push_back({name});
    Indexes indexes;
    for (const NamePair& pair : PairNames(leftNames, rightNames)) {
        indexes.emplace_back(pair.left, pair.right);
    }
    return indexes;
}

TEST(TreePairsTest, NamesArePairedWithoutRegardToLetterCaseInTheOrderOfTheLeft) {
    EXPECT_EQ((Indexes{{0, 0}, {1, 2}, {2, kNowhere}, {kNowhere, 1}}),
              Paired({"", "b", "c"}, {"", "a", "B"}));
}

TEST(TreePairsTest, EachItemHasOnePartner) {
    EXPECT_EQ((Indexes{{0, 0}, {1, kNowhere}}), Paired({"a", "A"}, {"a"}));
    EXPECT_EQ((Indexes{{0, 0}, {kNowhere, 1}}), Paired({"a"}, {"A", "a"}));
    EXPECT_EQ(Indexes{}, Paired({}, {}));
}

TEST(TreePairsTest, SecondBytesOfCharactersAreNoLetters) {
    const test::CodePageScope scope(932);
    // Their second bytes are "A" and "a".
    EXPECT_EQ((Indexes{{0, kNowhere}, {kNowhere, 0}}), Paired({"\x83\x41"}, {"\x83\x61"}));
}

}  // namespace
}  // namespace depot::ctl
