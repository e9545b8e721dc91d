// The system handles that working with a directory leaves open.
#include "support/directory_fixture.h"
#include "support/leak_counts.h"

namespace depot {
namespace {

class HandlesTest : public test::DirectoryFixture {
protected:
    static constexpr std::size_t kRounds = 20;

    // How many handles more are open after so many calls, the first ones apart: they fill what the
    // system and the client keep for the life of the process.
    template <class Call>
    static std::size_t Leftover(const Call& call) {
        for (int round = 0; round < 3; ++round) call();
        const std::size_t before = test::CountOpenHandles();
        for (int round = 0; round < static_cast<int>(kRounds); ++round) call();
        const std::size_t after = test::CountOpenHandles();
        return after > before ? after - before : 0;
    }
};

TEST_F(HandlesTest, AnOpenConnectionIsSeenByTheCount) {
    const std::size_t before = test::CountOpenHandles();
    Connected();
    EXPECT_GT(test::CountOpenHandles(), before);
}

TEST_F(HandlesTest, ConnectingListingReadingAndClosingLeaveNoneOpen) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "text");
    CDepotPath location = server_.Location(base_);
    EXPECT_EQ(0u, Leftover([&] {
                  CLDAPItems items(&location);
                  EXPECT_EQ(1, items.ConnectLocation(nullptr));
                  LdapItemList children;
                  EXPECT_EQ(1, items.ListChildren(base_, children));
                  EXPECT_EQ(2u, children.Count());
                  FileBuffer buffer;
                  EXPECT_EQ(1, items.ReadFileContents("cn=a.krc," + base_, buffer));
                  EXPECT_EQ(4u, buffer.length);
                  EXPECT_EQ(1, items.Close());
              }));
}

TEST_F(HandlesTest, ObjectsThatAreNeverClosedLeaveNoneOpen) {
    CDepotPath location = server_.Location(base_);
    EXPECT_EQ(0u, Leftover([&] {
                  CLDAPItems items(&location);
                  EXPECT_EQ(1, items.ConnectLocation(nullptr));
                  FileBuffer buffer;
                  EXPECT_EQ(0, items.ReadFileContents("cn=missing," + base_, buffer));
              }));
}

// Every access to the server's shared block keeps one handle, and the object closes the last one
// only; nothing else may be left over.
TEST_F(HandlesTest, ReopeningOneObjectLeavesTheHandleOfEachAccessOnly) {
    constexpr std::size_t kAccesses = 1;  // the cleared error
    CDepotPath location = server_.Location(base_);
    CLDAPItems items(&location);
    EXPECT_EQ(kRounds * kAccesses, Leftover([&] {
                  EXPECT_EQ(1, items.ConnectLocation(nullptr));
                  EXPECT_EQ(1, items.Close());
              }));
}

TEST_F(HandlesTest, AnAbsentServerLeavesTheHandlesOfTheAccessesButTheLast) {
    constexpr std::size_t kAccesses = 4;  // no prompts, the error, its text, prompts wanted?
    CDepotPath location = server_.Location(base_);
    location.port = test::ClosedPort();
    location.authentication = kAnonymousAuthentication;
    const std::size_t leftover = Leftover([&] {
        CLDAPItems items(&location);
        EXPECT_EQ(0, items.ConnectLocation(nullptr));
    });
    // The message boxes may add a handle or two of their own, but none for each of them.
    EXPECT_GE(leftover, kRounds * (kAccesses - 1));
    EXPECT_LT(leftover, kRounds * kAccesses);
    test::ForgetServer(location.port);
}

}  // namespace
}  // namespace depot
