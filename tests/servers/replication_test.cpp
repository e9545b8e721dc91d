// Two servers that replicate each other behind one depot: one of them stops, at every time, and
// both are edited at once.
#include <gmock/gmock.h>

#include <optional>

#include "component/component.h"
#include "servers/server_rows.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/test_folders.h"
#include "support/waits.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

constexpr char kOld[] = "[S]\r\nK=old\r\n";

class ReplicationTest : public ComponentTest {
protected:
    ReplicationTest() {
        first_.Follow(second_);
        second_.Follow(first_, line_);
        DefineDepot("Home");
        depots_.Dword("Home", "DefaultDepot", 1);
        Define(first_.Port(), second_.Port());
        first_.AddFile("a.kra", kSuffix, kOld);
        EXPECT_TRUE(Arrives(second_, kOld));
    }

    void Define(unsigned first, unsigned second) {
        DefineDirectoryDepot(depots_, "Corp", first, kSuffix);
        ForgetServer(second);
        depots_.Text("Corp", "Path2", kSuffix);
        depots_.Dword("Corp", "Type2", kDirectoryLocation);
        depots_.Text("Corp", "Host2", "127.0.0.1");
        depots_.Dword("Corp", "Port2", second);
        depots_.Dword("Corp", "Authentication2", kSimpleAuthentication);
        depots_.Text("Corp", "Username2", kEditor);
        depots_.Text("Corp", "Password2", kEditorPassword);
    }

    static std::string BytesAt(DirectoryServer& server) {
        return DirectoryTestFolder(server, kSuffix, "").Bytes("a.kra");
    }
    // Waits until the replication has brought a version, or the server has it anyway.
    static bool Arrives(DirectoryServer& server, const std::string& bytes) {
        for (int attempt = 0; attempt < 200; ++attempt, Sleep(50)) {
            if (BytesAt(server) == bytes) return true;
        }
        return false;
    }

    void Load(Session& session) {
        ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Corp>\\a.kra")), IsOk());
    }
    // Sets the value and flushes. What is not stored then is recovered.
    void Store(Session& session, const wchar_t* value, const wchar_t* key = L"K") {
        EXPECT_THAT(api_->DPSetProfileString(session, Text(L"S"), Text(key), Text(value)), IsOk());
        EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    }

    // Stores "here" on one server and "there" on the other, before either has heard of the other's
    // version. A session has the definitions of the moment when it is made.
    void EditBothAtOnce() {
        depots_.Dword("Corp", "DetectConflicts1", 1);
        Load(here_.emplace(*api_));
        Define(second_.Port(), first_.Port());
        Load(there_.emplace(*api_));
        second_.Stop();
        Store(*here_, L"here");
        EXPECT_EQ("[S]\r\nK=here\r\n", BytesAt(first_));
        first_.Stop();
        second_.Continue();
        Store(*there_, L"there");
        EXPECT_EQ("[S]\r\nK=there\r\n", BytesAt(second_));
        first_.Continue();
        ASSERT_TRUE(Arrives(first_, "[S]\r\nK=there\r\n"));
    }

    DirectoryServer first_{"multi"}, second_{"multi"};
    // What the second server hears of the first comes through this relay.
    const unsigned line_ = first_.Relay();
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    std::optional<Session> here_, there_;
};

TEST_F(ReplicationTest, SessionThatBeginsWithoutTheFirstServerUsesTheSecond) {
    Row("the first of two replicas is down: a new session uses the second");
    first_.Stop();
    Session session(*api_);
    Load(session);
    EXPECT_EQ(L"old", Read(session, L"S", L"K"));
    Store(session, L"new");
    EXPECT_EQ("[S]\r\nK=new\r\n", BytesAt(second_));
    first_.Continue();
    EXPECT_TRUE(Arrives(first_, "[S]\r\nK=new\r\n"));
}

TEST_F(ReplicationTest, EditOfASessionWhoseServerWentIsRecoveredAndNewSessionsUseTheSecond) {
    Row("the replica in use goes away: the edit is recovered, the next session works");
    {
        Session session(*api_);
        Load(session);
        first_.Stop();
        Store(session, L"new");
    }
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_EQ("[S]\r\nK=new\r\n", FileBytes(RecoveredFiles().front()));
    EXPECT_EQ(kOld, BytesAt(second_));
    Session next(*api_);
    Load(next);
    Store(next, L"again");
    EXPECT_EQ("[S]\r\nK=again\r\n", BytesAt(second_));
}

TEST_F(ReplicationTest, ServerThatCameBackIsTheFirstAgainAndHoldsWhatTheSecondTook) {
    Row("the replica comes back with what the other took meanwhile");
    first_.Stop();
    {
        Session session(*api_);
        Load(session);
        Store(session, L"meanwhile");
    }
    first_.Continue();
    ASSERT_TRUE(Arrives(first_, "[S]\r\nK=meanwhile\r\n"));
    second_.Stop();
    Session session(*api_);
    Load(session);
    EXPECT_EQ(L"meanwhile", Read(session, L"S", L"K"));
}

// Wherever the answer breaks off, the version is stored on both servers, or it is recovered and
// both have the one before; never is it neither, and never a part of one.
TEST_F(ReplicationTest, WriteUnderWayWhenTheServerIsKilledIsWholeOrRecovered) {
    Row("a replica is killed with a write under way: stored or recovered, the same on both");
    const unsigned relay = first_.Relay();
    Define(relay, second_.Port());
    for (const unsigned bytes : {14u, 40u, 80u, 120u, 200u}) {
        SCOPED_TRACE(bytes);
        const std::string before = BytesAt(first_);
        for (const std::string& file : RecoveredFiles()) DeleteFileA(file.c_str());
        const std::wstring value = L"after " + std::to_wstring(bytes);
        const std::string after = "[S]\r\nK=after " + std::to_string(bytes) + "\r\n";
        {
            Session session(*api_);
            Load(session);
            first_.Disturb(relay, "reset", bytes);
            Store(session, value.c_str());
            first_.Stop();
            first_.Disturb(relay, "not");
        }
        first_.Continue();
        const std::string present = BytesAt(first_);
        EXPECT_TRUE(Arrives(second_, present));
        EXPECT_THAT(present, testing::AnyOf(before, after));
        if (RecoveredFiles().empty()) {
            EXPECT_EQ(after, present);
        } else {
            EXPECT_EQ(after, FileBytes(RecoveredFiles().front()));
        }
    }
}

// Each server tests against what it has: neither has heard of the other's version.
TEST_F(ReplicationTest, OfTwoEditsOnTwoServersAtOnceTheLaterStaysOnBoth) {
    Row("both replicas are edited at once: the later version stays on both");
    EditBothAtOnce();
    EXPECT_EQ("[S]\r\nK=there\r\n", BytesAt(second_));
    EXPECT_THAT(RecoveredFiles(), testing::IsEmpty());
}

TEST_F(ReplicationTest, EditThatALaterOneOnTheOtherServerReplacedIsRecoveredAtTheNextLoad) {
    Row("an edit that the other replica's later one replaced is kept at its session's next load");
    EditBothAtOnce();
    Load(*here_);
    EXPECT_EQ(L"there", Read(*here_, L"S", L"K"));
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_EQ("[S]\r\nK=here\r\n", FileBytes(RecoveredFiles().front()));
    Load(*there_);
    EXPECT_EQ(1u, RecoveredFiles().size());
}

// Until the second server has heard of an edit it has the version before, and takes edits of that
// one; what was edited first and replaced by them is kept at its session's next load.
TEST_F(ReplicationTest, EditsWhileAReplicaLagsAreStoredOrRecovered) {
    Row("a replica lags five seconds: it has the version before, and no edit of that time is lost");
    depots_.Dword("Corp", "DetectConflicts1", 1);
    Load(here_.emplace(*api_));
    first_.Lag(line_, 5);
    Store(*here_, L"early");
    Define(second_.Port(), first_.Port());
    Load(there_.emplace(*api_));
    EXPECT_EQ(L"old", Read(*there_, L"S", L"K"));
    Store(*there_, L"late");
    ASSERT_TRUE(Arrives(first_, "[S]\r\nK=late\r\n"));
    EXPECT_THAT(RecoveredFiles(), testing::IsEmpty());
    Load(*here_);
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_EQ("[S]\r\nK=early\r\n", FileBytes(RecoveredFiles().front()));

    Store(*here_, L"last", L"L");
    EXPECT_EQ("[S]\r\nK=late\r\n", BytesAt(second_));
    EXPECT_TRUE(Arrives(second_, "[S]\r\nK=late\r\nL=last\r\n"));
    Load(*there_);
    EXPECT_EQ(L"last", Read(*there_, L"S", L"L"));
    EXPECT_EQ(1u, RecoveredFiles().size());
}

// A version that has arrived before is seen, as on one server.
TEST_F(ReplicationTest, EditOverAVersionThatHasArrivedIsRecovered) {
    Row("a version that has arrived from the other replica is kept (DetectConflicts)");
    Define(second_.Port(), first_.Port());
    depots_.Dword("Corp", "DetectConflicts1", 1);
    Session there(*api_);
    Load(there);
    Define(first_.Port(), second_.Port());
    {
        Session here(*api_);
        Load(here);
        Store(here, L"here");
    }
    ASSERT_TRUE(Arrives(second_, "[S]\r\nK=here\r\n"));
    Store(there, L"there");
    EXPECT_EQ("[S]\r\nK=here\r\n", BytesAt(second_));
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_EQ("[S]\r\nK=there\r\n", FileBytes(RecoveredFiles().front()));
}

}  // namespace
}  // namespace depot::test
