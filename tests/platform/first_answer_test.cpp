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
    std::function<Answer()> Attempt(Answer answer) {
        return [event = event_, answer] {
            WaitForSingleObject(event.get(), INFINITE);
            return answer;
        };
    }

private:
    std::shared_ptr<void> event_{CreateEventA(nullptr, TRUE, FALSE, nullptr), CloseHandle};
};

std::function<Answer()> Gives(Answer answer) {
    return [answer] { return answer; };
}

// An attempt that takes several times as long as anybody has patience.
std::function<Answer()> Slow(Answer answer) {
    return [answer] {
        Sleep(3 * static_cast<DWORD>(kSoon.count()));
        return answer;
    };
}

TEST(FirstAnswerTest, FirstThatSucceedsIsChosenWithoutTheOthersBeingTried) {
    const auto tried = std::make_shared<std::atomic<int>>(0);
    const auto counted = [tried](Answer answer) {
        return [tried, answer] {
            ++*tried;
            return answer;
        };
    };
    EXPECT_EQ(1u,
              FirstAnswer({counted(Answer::kNone), counted(Answer::kGood), counted(Answer::kGood)},
                          kNever));
    EXPECT_EQ(2, *tried);
}

TEST(FirstAnswerTest, NothingIsChosenWhenAllFail) {
    EXPECT_EQ(std::nullopt, FirstAnswer({Gives(Answer::kNone), Gives(Answer::kNone)}, kNever));
    EXPECT_EQ(std::nullopt, FirstAnswer({}, kNever));
}

TEST(FirstAnswerTest, DeadPlaceHoldsTheNextOneUpForItsPatienceOnly) {
    Gate dead;
    EXPECT_EQ(1u, FirstAnswer({dead.Attempt(Answer::kGood), Gives(Answer::kGood)}, kSoon));
    dead.Open();
}

TEST(FirstAnswerTest, EarlierOneThatAnswersWhileALaterOneIsTriedWins) {
    Gate later;
    EXPECT_EQ(0u, FirstAnswer({Slow(Answer::kGood), later.Attempt(Answer::kGood)}, kSoon));
    later.Open();
}

TEST(FirstAnswerTest, LastOneIsAwaitedHoweverLongItTakes) {
    EXPECT_EQ(1u, FirstAnswer({Gives(Answer::kNone), Slow(Answer::kGood)}, kSoon));
}

TEST(FirstAnswerTest, FallbackIsChosenWhereNoOtherOneAnswersWell) {
    EXPECT_EQ(1u, FirstAnswer({Gives(Answer::kNone), Gives(Answer::kFallback)}, kNever));
    EXPECT_EQ(0u, FirstAnswer({Gives(Answer::kFallback), Gives(Answer::kFallback)}, kNever));
    EXPECT_EQ(0u, FirstAnswer({Gives(Answer::kFallback), Gives(Answer::kNone)}, kNever));
}

TEST(FirstAnswerTest, GoodAnswerWinsOverAnEarlierFallback) {
    EXPECT_EQ(1u, FirstAnswer({Gives(Answer::kFallback), Gives(Answer::kGood)}, kNever));
}

TEST(FirstAnswerTest, FallbackDoesNotWaitForADeadPlaceLongerThanItsPatience) {
    for (const bool isFirst : {true, false}) {
        Gate dead;
        std::vector<std::function<Answer()>> attempts = {dead.Attempt(Answer::kGood)};
        attempts.insert(isFirst ? attempts.begin() : attempts.end(), Gives(Answer::kFallback));
        EXPECT_EQ(isFirst ? 0u : 1u, FirstAnswer(std::move(attempts), kSoon));
        dead.Open();
    }
}

TEST(FirstAnswerTest, AttemptThatThrowsHasFailed) {
    EXPECT_EQ(1u, FirstAnswer({[]() -> Answer { throw std::bad_alloc(); }, Gives(Answer::kGood)},
                              kNever));
}

TEST(FirstAnswerTest, WhatAnAttemptUsesLivesUntilItEnds) {
    Gate dead;
    auto kept = std::make_shared<int>(1);
    const std::weak_ptr<int> seen = kept;
    EXPECT_EQ(1u, FirstAnswer({[kept = std::move(kept), wait = dead.Attempt(Answer::kGood)] {
                                   return *kept == 1 ? wait() : Answer::kNone;
                               },
                               Gives(Answer::kGood)},
                              kSoon));
    EXPECT_FALSE(seen.expired());
    dead.Open();
    for (int time = 0; time < 500 && !seen.expired(); ++time) Sleep(10);
    EXPECT_TRUE(seen.expired());
}

}  // namespace
}  // namespace depot
