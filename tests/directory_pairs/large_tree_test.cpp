// A tree of many files and folders, on its way through every kind of store.
#include "directory_pairs/pairs_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr int kDepth = 30;
constexpr int kFiles = 2'000;

using LargeTreeTest = PairWorldTest;

TEST_F(LargeTreeTest, TwoThousandFilesThirtyFoldersDeepArriveWhole) {
    std::string folder = "from\\tree";
    for (int number = 0; number < kFiles; ++number) {
        if (number % (kFiles / kDepth) == 0 && number / (kFiles / kDepth) < kDepth) {
            folder += "\\d";
            folder_.MakeFolder(folder);
        }
        folder_.MakeFile(folder + "\\f" + std::to_string(number) + ".kra",
                         "[S]\r\nK=" + std::to_string(number) + "\r\n");
    }
    const StoreContents tree = folder_.Contents("from\\tree");
    ASSERT_EQ(static_cast<std::size_t>(kFiles + kDepth), tree.size());
    EXPECT_THAT(OnList(FO_COPY, {"<Home>\\from\\tree"}, "<Work>\\to\\"), IsDone());
    EXPECT_THAT(
        MoveFile(world_.work, "<Work>\\to\\tree", "<Work>\\from\\tree", nullptr, nullptr, &error_),
        IsDone());
    EXPECT_FALSE(directory_.Holds("to\\tree"));
    EXPECT_THAT(OnList(FO_MOVE, {"<Work>\\from\\tree"}, plain_.Path("to\\")), IsDone());
    EXPECT_FALSE(directory_.Holds("from\\tree"));
    EXPECT_EQ(tree, plain_.Contents("to\\tree"));
}

}  // namespace
}  // namespace depot::test
