#include "platform/first_answer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <new>

#include "platform/win32.h"

namespace depot {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSoon(100);
constexpr milliseconds kNever(60'000);

// An attempt that waits until it is let go.
class Gate {
public:
    void Open() { SetEvent(event_.get()); }
    std::function<bool()> Attempt(bool answer) {
        return [event = event_, answer] {
            WaitForSingleObject(event.get(), INFINITE);
            return answer;
        };
    }

private:
    std::shared_ptr<void> event_{CreateEventA(nullptr, TRUE, FALSE, nullptr), CloseHandle};
};

std::function<bool()> Answer(bool answer) {
    return [answer] { return answer; };
}

TEST(FirstAnswerTest, FirstThatSucceedsIsChosenWithoutTheOthersBeingTried) {
    const auto tried = std::make_shared<std::atomic<int>>(0);
    const auto counted = [tried](bool answer) {
        return [tried, answer] {
            ++*tried;
            return answer;
        };
    };
    EXPECT_EQ(1u, FirstAnswer({counted(false), counted(true), counted(true)}, kNever));
    EXPECT_EQ(2, *tried);
}

TEST(FirstAnswerTest, NothingIsChosenWhenAllFail) {
    EXPECT_EQ(std::nullopt, FirstAnswer({Answer(false), Answer(false)}, kNever));
    EXPECT_EQ(std::nullopt, FirstAnswer({}, kNever));
}

TEST(FirstAnswerTest, DeadPlaceHoldsTheNextOneUpForItsPatienceOnly) {
    Gate dead;
    EXPECT_EQ(1u, FirstAnswer({dead.Attempt(true), Answer(true)}, kSoon));
    dead.Open();
}

TEST(FirstAnswerTest, EarlierOneThatAnswersWhileALaterOneIsTriedWins) {
    Gate later;
    const auto slow = [] {
        Sleep(2 * static_cast<DWORD>(kSoon.count()));
        return true;
    };
    EXPECT_EQ(0u, FirstAnswer({slow, later.Attempt(true)}, kSoon));
    later.Open();
}

TEST(FirstAnswerTest, LastOneIsAwaitedHoweverLongItTakes) {
    const auto slow = [] {
        Sleep(3 * static_cast<DWORD>(kSoon.count()));
        return true;
    };
    EXPECT_EQ(1u, FirstAnswer({Answer(false), slow}, kSoon));
}

TEST(FirstAnswerTest, AttemptThatThrowsHasFailed) {
    EXPECT_EQ(1u, FirstAnswer({[]() -> bool { throw std::bad_alloc(); }, Answer(true)}, kNever));
}

TEST(FirstAnswerTest, WhatAnAttemptUsesLivesUntilItEnds) {
    Gate dead;
    auto kept = std::make_shared<int>(1);
    const std::weak_ptr<int> seen = kept;
    EXPECT_EQ(1u, FirstAnswer({[kept = std::move(kept), wait = dead.Attempt(true)] {
                                   return wait() && *kept == 1;
                               },
                               Answer(true)},
                              kSoon));
    EXPECT_FALSE(seen.expired());
    dead.Open();
    for (int time = 0; time < 500 && !seen.expired(); ++time) Sleep(10);
    EXPECT_TRUE(seen.expired());
}

}  // namespace
}  // namespace depot
