#include "api/session_table.h"

#include <gtest/gtest.h>

#include <new>

#include "support/failing_memory.h"
#include "support/import_patch.h"

namespace depot {
namespace {

bool Yes() {
    return true;
}

constexpr LONG_PTR kTwoGigabytes = LONG_PTR{0x7FFFFFFF} + 1;

class SessionTableTest : public testing::Test {
protected:
    SessionTable table_;
};

TEST_F(SessionTableTest, NewSessionIsFoundByItsHandleOnly) {
    const LONG_PTR handle = table_.Create();
    ASSERT_NE(0, handle);
    EXPECT_EQ(handle, reinterpret_cast<LONG_PTR>(table_.Find(handle)));
    for (const LONG_PTR other : {LONG_PTR{0}, LONG_PTR{-1}, handle + 1, handle - 1}) {
        EXPECT_EQ(nullptr, table_.Find(other)) << other;
    }
}

TEST_F(SessionTableTest, HandlesLieBelowTwoGigabytes) {
    for (int count = 0; count < 2000; ++count) {
        const LONG_PTR handle = table_.Create();
        EXPECT_GT(handle, 0);
        EXPECT_LT(handle, kTwoGigabytes);
    }
}

TEST_F(SessionTableTest, ForeignUpperHalfDoesNotCountWhenWidened) {
    const LONG_PTR handle = table_.Create();
    EXPECT_EQ(handle, table_.Widen(handle));
    EXPECT_EQ(handle, table_.Widen(handle | (LONG_PTR{0x12345678} << 32)));
    EXPECT_EQ(handle, table_.Widen(handle | (LONG_PTR{-1} << 32)));
    EXPECT_EQ(0, table_.Widen(0));
    EXPECT_EQ(0, table_.Widen(LONG_PTR{1} << 32));
    EXPECT_EQ(0, table_.Widen(handle + 1));
}

TEST_F(SessionTableTest, ForeignUpperHalfCountsNowhere) {
    const LONG_PTR handle = table_.Create();
    for (const LONG_PTR upper : {LONG_PTR{0x12345678}, LONG_PTR{-1}}) {
        const LONG_PTR foreign = handle | (upper << 32);
        EXPECT_EQ(handle, reinterpret_cast<LONG_PTR>(table_.Find(foreign)));
        EXPECT_EQ(handle, reinterpret_cast<LONG_PTR>(table_.Enter(foreign)));
        EXPECT_EQ(nullptr, table_.Enter(foreign));
        EXPECT_EQ(nullptr, table_.Enter(handle));
        table_.Leave(handle);
    }
    table_.Destroy(handle | (LONG_PTR{1} << 32));
    EXPECT_EQ(nullptr, table_.Find(handle));
}

TEST_F(SessionTableTest, ZeroIsZeroWithAForeignUpperHalfToo) {
    EXPECT_TRUE(table_.IsZero(0));
    EXPECT_TRUE(table_.IsZero(LONG_PTR{0x12345678} << 32));
    EXPECT_FALSE(table_.IsZero(1));
    EXPECT_FALSE(table_.IsZero(table_.Create()));
}

TEST_F(SessionTableTest, DestroyedSessionIsGoneAndCanBeDestroyedAgain) {
    const LONG_PTR kept = table_.Create();
    const LONG_PTR ended = table_.Create();
    table_.Destroy(ended);
    EXPECT_EQ(nullptr, table_.Find(ended));
    EXPECT_EQ(0, table_.Widen(ended));
    table_.Destroy(ended);
    table_.Destroy(0);
    table_.Destroy(4711);
    EXPECT_NE(nullptr, table_.Find(kept));
}

TEST_F(SessionTableTest, SessionIsTakenForOneCallAtATime) {
    const LONG_PTR handle = table_.Create();
    EXPECT_EQ(nullptr, table_.Enter(handle + 1));
    ASSERT_NE(nullptr, table_.Enter(handle));
    EXPECT_EQ(nullptr, table_.Enter(handle));
    table_.Leave(handle);
    EXPECT_NE(nullptr, table_.Enter(handle));
    table_.Leave(handle);
    table_.Leave(handle + 1);
}

TEST_F(SessionTableTest, SessionThatIsEndedDuringACallIsDestroyedWhenTheCallReturns) {
    const LONG_PTR handle = table_.Create();
    DepotSession* const session = table_.Enter(handle);
    ASSERT_NE(nullptr, session);
    table_.Destroy(handle);
    EXPECT_EQ(nullptr, table_.Find(handle));
    EXPECT_EQ(nullptr, table_.Enter(handle));
    table_.Destroy(handle);
    session->selectedItemPath = "still there";
    table_.Leave(handle);
    EXPECT_EQ(nullptr, table_.Find(handle));
}

TEST_F(SessionTableTest, AbandonedSessionIsOutOfReachButNotDestroyed) {
    const LONG_PTR handle = table_.Create();
    DepotSession* const session = table_.Find(handle);
    session->selectedItemPath = "a text that is too long to be kept in place";
    table_.Abandon(handle);
    EXPECT_EQ(nullptr, table_.Find(handle));
    EXPECT_EQ("a text that is too long to be kept in place", session->selectedItemPath);
    std::destroy_at(session);
}

TEST_F(SessionTableTest, SessionsThatAreLeftEndAllTogether) {
    EXPECT_TRUE(table_.EndThoseLeft(Yes));
    const LONG_PTR first = table_.Create();
    const LONG_PTR second = table_.Create();
    EXPECT_TRUE(table_.EndThoseLeft(Yes));
    EXPECT_EQ(nullptr, table_.Find(first));
    EXPECT_EQ(nullptr, table_.Find(second));
    EXPECT_NE(0, table_.Create());
}

TEST_F(SessionTableTest, SessionThatACallIsAtWorkOnIsNotEndedAsOneThatIsLeft) {
    const LONG_PTR busy = table_.Create();
    const LONG_PTR idle = table_.Create();
    ASSERT_NE(nullptr, table_.Enter(busy));
    EXPECT_FALSE(table_.EndThoseLeft(Yes));
    EXPECT_EQ(nullptr, table_.Find(idle));
    EXPECT_NE(nullptr, table_.Find(busy));
    table_.Leave(busy);
    EXPECT_TRUE(table_.EndThoseLeft(Yes));
    EXPECT_EQ(nullptr, table_.Find(busy));
}

TEST_F(SessionTableTest, EndingOfWhatIsLeftStopsOnRequest) {
    table_.Create();
    table_.Create();
    int asked = 0;
    EXPECT_FALSE(table_.EndThoseLeft([&] { return ++asked == 1; }));
    EXPECT_EQ(2, asked);
    asked = 0;
    EXPECT_TRUE(table_.EndThoseLeft([&] { return ++asked == 1; })) << "one was left";
    EXPECT_EQ(1, asked);
}

TEST_F(SessionTableTest, SessionThatComesMeanwhileIsNotEnded) {
    table_.Create();
    LONG_PTR added = 0;
    EXPECT_FALSE(table_.EndThoseLeft([&] {
        added = table_.Create();
        return true;
    }));
    EXPECT_NE(nullptr, table_.Find(added));
}

TEST_F(SessionTableTest, LeftTableIsEmptyAndQuiet) {
    const LONG_PTR handle = table_.Create();
    EXPECT_TRUE(table_.LeaveAll());
    EXPECT_EQ(nullptr, table_.Find(handle));
    EXPECT_TRUE(table_.LeaveAll());
}

TEST_F(SessionTableTest, LeavingDoesNotTouchASessionThatACallIsAtWorkOn) {
    const LONG_PTR handle = table_.Create();
    DepotSession* const session = table_.Enter(handle);
    session->selectedItemPath = "a text that is too long to be kept in place";
    EXPECT_FALSE(table_.LeaveAll());
    EXPECT_EQ("a text that is too long to be kept in place", session->selectedItemPath);
    table_.Leave(handle);
    std::destroy_at(session);
}

TEST_F(SessionTableTest, HandleOfAnEndedSessionIsNotReusedAtOnce) {
    const LONG_PTR ended = table_.Create();
    table_.Destroy(ended);
    for (int count = 0; count < 100; ++count) {
        const LONG_PTR next = table_.Create();
        EXPECT_NE(ended, next);
        table_.Destroy(next);
    }
}

TEST_F(SessionTableTest, SessionThatFindsNoMemoryLeavesTheTableAsItWas) {
    const LONG_PTR kept = table_.Create();
    EXPECT_LT(1, test::FailEachAllocation([&] {
                  try {
                      const LONG_PTR made = table_.Create();
                      EXPECT_NE(nullptr, table_.Find(made));
                      table_.Destroy(made);
                  } catch (const std::bad_alloc&) {
                      EXPECT_TRUE(test::FailingMemory::RanOut());
                  }
                  EXPECT_NE(nullptr, table_.Find(kept));
              }));
}

TEST_F(SessionTableTest, WithoutAddressSpaceThereIsNoSession) {
    const test::ImportPatch<decltype(&VirtualAlloc)> refusing(
        "VirtualAlloc", [](void*, SIZE_T, DWORD, DWORD) -> void* { return nullptr; });
    ASSERT_TRUE(refusing.IsInPlace());
    EXPECT_EQ(0, table_.Create());
}

using WithoutHandle = SessionForCall::WithoutHandle;

TEST(SessionForCallTest, HandleZeroMakesATemporarySessionWhereAllowed) {
    const SessionForCall temporary(0, WithoutHandle::kMakeTemporary);
    EXPECT_TRUE(temporary);
    EXPECT_FALSE(SessionForCall(0, WithoutHandle::kFail));
}

TEST(SessionForCallTest, LiveHandleIsUsedAndLeftAlive) {
    SessionTable& table = SessionTable::Instance();
    const LONG_PTR handle = table.Create();
    for (const auto without : {WithoutHandle::kMakeTemporary, WithoutHandle::kFail}) {
        const SessionForCall session(handle, without);
        ASSERT_TRUE(session);
        EXPECT_EQ(table.Find(handle), session.operator->());
    }
    EXPECT_NE(nullptr, table.Find(handle));
    table.Destroy(handle);
    EXPECT_FALSE(SessionForCall(handle, WithoutHandle::kMakeTemporary));
    EXPECT_FALSE(SessionForCall(handle, WithoutHandle::kFail));
}

TEST(SessionForCallTest, ForeignUpperHalfDoesNotCount) {
    SessionTable& table = SessionTable::Instance();
    const LONG_PTR handle = table.Create();
    const LONG_PTR foreign = handle | (LONG_PTR{0x12345678} << 32);
    for (int call = 0; call < 2; ++call) {
        const SessionForCall session(foreign, WithoutHandle::kFail);
        ASSERT_TRUE(session);
        EXPECT_FALSE(SessionForCall(handle, WithoutHandle::kFail));
    }
    table.Destroy(foreign);
    EXPECT_EQ(nullptr, table.Find(handle));
    EXPECT_TRUE(SessionForCall(LONG_PTR{1} << 32, WithoutHandle::kMakeTemporary));
}

TEST(NewSessionTest, SessionThatIsNotKeptEndsAndLeavesZero) {
    SessionTable& table = SessionTable::Instance();
    LONG_PTR variable = 4711;
    LONG_PTR handle = 0;
    {
        const NewSession made(variable);
        handle = made.Handle();
        EXPECT_NE(nullptr, table.Find(handle));
        EXPECT_EQ(handle, variable);
    }
    EXPECT_EQ(nullptr, table.Find(handle));
    EXPECT_EQ(0, variable);
}

TEST(NewSessionTest, KeptSessionIsTheClients) {
    SessionTable& table = SessionTable::Instance();
    LONG_PTR variable = 4711;
    {
        NewSession made(variable);
        made.Keep();
    }
    EXPECT_NE(nullptr, table.Find(variable));
    table.Destroy(variable);
}

}  // namespace
}  // namespace depot
