// What a new session tells the path macros of its process.
#include <gtest/gtest.h>

#include "macros/replacer_cache.h"
#include "manager/depot_session.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kProductKey[] = "Software\\Quillon\\Farrow";
constexpr char kWharfside[] = "13.00\\Wharfside";

class SharedUserFolderTest : public testing::Test {
protected:
    SharedUserFolderTest() { product_.Text(kWharfside, "UserDir", "C:\\Users\\a"); }

    test::ScratchKey product_{HKEY_CURRENT_USER, kProductKey};
};

std::string Bytes(const MacroSlot& slot) {
    return std::string(slot, sizeof(slot));
}

TEST_F(SharedUserFolderTest, NewSessionStoresItsUserFolderAndZeroes) {
    const MacroCacheHolder cache(1, ReplacerBlockName());
    FillSlot(cache.Data()->userFolder, std::string(519, 'j'));
    const DepotSession session;
    EXPECT_EQ("C:\\Users\\a\\" + std::string(509, '\0'), Bytes(cache.Data()->userFolder));
    EXPECT_STREQ("", cache.Data()->profileFolder);
}

TEST_F(SharedUserFolderTest, LaterSessionReplacesTheEarlierOnesFolder) {
    const DepotSession first;
    product_.Text(kWharfside, "UserDir", "C:\\Users\\b");
    DepotSession second;
    EXPECT_STREQ("C:\\Users\\b\\", second.Depots().GetReplacers()->Data()->userFolder);
}

TEST_F(SharedUserFolderTest, DepotsOfTheSessionExpandToItsFolder) {
    product_.Text("Depots\\Team", "Path1", "$USERDIR$\\Profiles");
    DepotSession session;
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("C:\\Users\\a\\Profiles\\", session.Depots().At(0)->paths->GetActivePath());
}

}  // namespace
}  // namespace depot
