// Edits that several make, and lost servers, while a depot is used without its server.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "directory_depots/offline_fixture.h"
#include "support/relay.h"

namespace depot {
namespace {

using test::OfflineTest;
using test::RecoveredFiles;
using test::WaitingEdits;
using testing::IsEmpty;

TEST_F(OfflineTest, TwoProcessesThatEditOneFileApartMeetInTheQueue) {
    Restart(2);
    Value();
    Away();
    auto first = Load();
    auto second = Load();
    first->WriteString("S", "K", "first");
    second->WriteString("S", "L", "second");
    EXPECT_TRUE(first->Release());
    EXPECT_TRUE(second->Release());
    Back();
    Restart(2);
    Value();
    EXPECT_EQ("[S]\r\nK=first\r\nL=second\r\n", Entry());
}

TEST_F(OfflineTest, SessionsOfSeveralThreadsMeetInTheQueue) {
    constexpr int kThreads = 4;
    constexpr int kEditsOfEach = 5;
    Restart(2);
    Value();
    Away();
    std::atomic<int> refused = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([number, &refused] {
            for (int edit = 0; edit < kEditsOfEach; ++edit) {
                CDepots depots(kKey);
                DepotFileContext file("<Work>\\a.kra", depots);
                file.WriteString("S", "T" + std::to_string(number), std::to_string(edit));
                if (!file.Release()) ++refused;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, refused);
    ASSERT_EQ(1u, WaitingEdits().size());
    Back();
    Restart(2);
    for (int number = 0; number < kThreads; ++number) {
        EXPECT_EQ(std::to_string(kEditsOfEach - 1), Value("T" + std::to_string(number)));
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(OfflineTest, AServerThatIsLostBetweenLoadAndStoreHasTheEditWait) {
    const auto file = Load();
    file->WriteString("S", "K", "new");
    Away();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(1u, WaitingEdits().size());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    Back();
    EXPECT_EQ("new", Value());
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Entry());
}

TEST_F(OfflineTest, AServerThatIsLostBeforeItAnswersHasTheKeptFileRead) {
    test::Relay relay(own_.Port());
    Define(relay.Port(), test::kSuffix);
    EXPECT_EQ("old", Value());
    for (const int request : {1, 2}) {
        SCOPED_TRACE(request);
        relay.Disturb({.dropBeforeRequest = request});
        const auto file = Load();
        EXPECT_EQ(0u, file->FetchCode());
        EXPECT_EQ("old", file->ReadString("S", "K", "(none)", 100));
    }
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

// Whatever the session does next, its own edit that waits is stored before it.
TEST_F(OfflineTest, EditThatIsLostOnItsWayAgainIsNotOvertakenByTheNext) {
    test::Relay relay(own_.Port());
    for (const DWORD detects : {0u, 1u, 2u}) {
        SCOPED_TRACE(detects);
        const std::string mine = "mine" + std::to_string(detects);
        key_.Dword("Work", "DetectConflicts1", detects);
        Define(relay.Port(), test::kSuffix);
        StoreByOthers(test::kOld);
        {
            const auto file = Load();
            file->WriteString("S", "K", mine);
            Away();
            EXPECT_TRUE(file->Release());
            Back();
        }
        // The log-on comes through, and the edit does not.
        relay.Disturb({.dropBeforeRequest = 2});
        const auto file = Load();
        EXPECT_EQ(mine, file->ReadString("S", "K", "(none)", 100));
        EXPECT_EQ(1u, WaitingEdits().size());
        relay.Disturb({});
        file->WriteString("S", "L", "second");
        EXPECT_TRUE(file->Release());
        EXPECT_EQ("[S]\r\nK=" + mine + "\r\nL=second\r\n", Entry());
        EXPECT_THAT(WaitingEdits(), IsEmpty());
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(OfflineTest, WaitingEditsAreStoredInWindows) {
    constexpr int kFiles = 40;
    for (int number = 0; number < kFiles; ++number) {
        own_.AddFile("f" + std::to_string(number) + ".kra", test::kSuffix, test::kOld);
        Load("f" + std::to_string(number) + ".kra");
    }
    Away();
    for (int number = 0; number < kFiles; ++number) {
        const auto file = Load("f" + std::to_string(number) + ".kra");
        file->WriteString("S", "K", std::to_string(number));
        EXPECT_TRUE(file->Release());
    }
    ASSERT_EQ(std::size_t{kFiles}, WaitingEdits().size());
    Back();
    Restart();
    // What counts is how often an answer is waited for before the next request is sent.
    own_.Mark();
    Value();
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    for (int number = 0; number < kFiles; ++number) {
        EXPECT_EQ("[S]\r\nK=" + std::to_string(number) + "\r\nL=old\r\n",
                  Entry("f" + std::to_string(number) + ".kra"));
    }
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
