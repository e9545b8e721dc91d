// What a new session tells the path macros of its process.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "macros/replacer_cache.h"
#include "macros/replacers.h"
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

TEST_F(SharedUserFolderTest, SessionOfTheSameUserLeavesTheBlockUnwritten) {
    const MacroCacheHolder cache(1, ReplacerBlockName());
    const DepotSession first;
    MacroValues& values = *cache.Data();
    for (MacroSlot* slot : {&values.organization, &values.userFolder, &values.languageCode}) {
        (*slot)[sizeof(*slot) - 1] = 'j';  // behind the text's end, where only a writer comes
    }
    const MacroValues before = values;
    for (int round = 0; round < 20; ++round) const DepotSession next;
    EXPECT_EQ(0, std::memcmp(&before, &values, sizeof(values)));
}

// Sessions of one user after another come and go while others expand.
TEST_F(SharedUserFolderTest, MillionExpansionsBesideSessionsAreAllRight) {
    constexpr int kReaders = 2;
    constexpr int kExpansions = 500'000;
    const DepotSession kept;
    std::atomic<int> reading = kReaders;
    std::array<int, kReaders> wrong = {};
    std::vector<std::thread> readers;
    for (int& count : wrong) {
        readers.emplace_back([&] {
            const MacroCacheHolder cache(1, ReplacerBlockName());
            for (int round = 0; round < kExpansions; ++round) {
                const MacroValues values = cache.Copy();
                std::string text = "$USERDIR$\\Profiles";
                ExpandReplacers(&values, text);
                if (text != "C:\\Users\\a\\Profiles" && text != "D:\\b\\Profiles") ++count;
            }
            --reading;
        });
    }
    int sessions = 0;
    for (; reading > 0; ++sessions) {
        product_.Text(kWharfside, "UserDir", sessions % 2 == 0 ? "D:\\b" : "C:\\Users\\a");
        const DepotSession session;
    }
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ((std::array<int, kReaders>{}), wrong);
    EXPECT_LT(100, sessions);
}

TEST_F(SharedUserFolderTest, DepotsOfTheSessionExpandToItsFolder) {
    product_.Text("Depots\\Team", "Path1", "$USERDIR$\\Profiles");
    DepotSession session;
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("C:\\Users\\a\\Profiles\\", session.Depots().At(0)->paths->GetActivePath());
}

}  // namespace
}  // namespace depot
