// Processes that are killed while they keep an edit for later or store one: what was acknowledged
// is never lost.
#include <cstdlib>

#include "directory_depots/depot_fixture.h"
#include "directory_depots/killed_process.h"
#include "support/offline_files.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::FilesIn;
using test::KilledEnd;
using test::kKillingKinds;
using test::UseUntilKilled;
using test::WaitingEdits;
using testing::HasSubstr;
using testing::IsEmpty;

// Without DEPOTINTR_THOROUGH so many calls of each kind are the last one, spread over all.
constexpr int kPlaces = 12;

class KilledWritersTest : public test::DepotFixture {
protected:
    KilledWritersTest() {
        key_.Dword("Work", "Offline1", 1);
        key_.Dword("Work", "DetectConflicts1", 2);
        Define(own_.Port(), test::kSuffix);
        own_.AddFile("a.kra", test::kSuffix, "[S]\r\nK=old\r\nL=old\r\n");
    }

    void Restart() { Define(own_.Port(), test::kSuffix); }
    bool Edit(const std::string& key, const std::string& value) {
        const auto file = Load();
        file->WriteString("S", key, value);
        return file->Release();
    }
    std::string Value(const std::string& key) {
        return Load()->ReadString("S", key, "(none)", 100);
    }

    // Some calls depend on what other processes left: a run may have fewer than were counted.
    static bool IsKilledOrDone(const KilledEnd& end) {
        return end.WasKilled() || end.IsAcknowledged();
    }

    // Calls `check` with the number of each call that is to be a process's last.
    template <class Check>
    static void ForEachPlace(int calls, const Check& check) {
        const int step =
            std::getenv("DEPOTINTR_THOROUGH") != nullptr ? 1 : std::max(1, calls / kPlaces);
        for (int number = 1; number <= calls; number += step) {
            SCOPED_TRACE("call " + std::to_string(number));
            check(number);
            if (testing::Test::HasFailure()) return;
        }
    }

    static std::vector<std::string> DamagedFiles() {
        std::vector<std::string> damaged;
        for (const std::string& folder : OfflineFolders()) {
            for (std::string& file : FilesIn(folder, "*.damaged")) damaged.push_back(file);
        }
        return damaged;
    }
    static std::string Waiting() {
        const auto edits = WaitingEdits();
        if (edits.size() != 1) return std::to_string(edits.size()) + " edits";
        return {edits.front().bytes.begin(), edits.front().bytes.end()};
    }

    test::CleanOfflineFiles cleanKept_;
    DirectoryServer own_;
};

TEST_F(KilledWritersTest, AcknowledgedEditsOutliveAKillAtAnyCallOfTheirWriter) {
    Value("K");
    own_.Stop();
    ASSERT_TRUE(Edit("L", "acknowledged"));
    std::string last = "old";
    for (std::size_t kind = 0; kind < std::size(kKillingKinds); ++kind) {
        SCOPED_TRACE(NameOf(kKillingKinds[kind]));
        const KilledEnd whole = UseUntilKilled(
            {.kind = kKillingKinds[kind], .number = 0, .values = {{"S", "K", last}}});
        ASSERT_TRUE(whole.IsAcknowledged());
        ForEachPlace(whole.Calls(), [&](int number) {
            const std::string value = "v" + std::to_string(kind) + "." + std::to_string(number);
            const KilledEnd end = UseUntilKilled(
                {.kind = kKillingKinds[kind], .number = number, .values = {{"S", "K", value}}});
            ASSERT_TRUE(IsKilledOrDone(end)) << end.exitCode;
            EXPECT_THAT(DamagedFiles(), IsEmpty());
            const std::string waiting = Waiting();
            EXPECT_THAT(waiting, HasSubstr("L=acknowledged\r\n"));
            const bool isThere = waiting.find("K=" + value + "\r\n") != std::string::npos;
            EXPECT_TRUE(isThere || !end.IsAcknowledged()) << waiting;
            if (isThere) last = value;
            EXPECT_THAT(waiting, HasSubstr("K=" + last + "\r\n"));
        });
    }
    own_.Continue();
    Restart();
    EXPECT_EQ(last, Value("K"));
    EXPECT_EQ("acknowledged", Value("L"));
    EXPECT_THAT(WaitingEdits(), IsEmpty());
}

TEST_F(KilledWritersTest, WaitingEditsAreStoredOnceWhereverTheirCourierIsKilled) {
    Value("K");
    const auto queueAnEdit = [&](const std::string& value) {
        own_.Stop();
        Restart();
        ASSERT_TRUE(Edit("K", value));
        ASSERT_EQ(1u, WaitingEdits().size());
        own_.Continue();
    };
    for (std::size_t kind = 0; kind < std::size(kKillingKinds); ++kind) {
        SCOPED_TRACE(NameOf(kKillingKinds[kind]));
        queueAnEdit("first" + std::to_string(kind));
        const KilledEnd whole = UseUntilKilled({.kind = kKillingKinds[kind], .number = 0});
        ASSERT_TRUE(whole.IsAcknowledged());
        ForEachPlace(whole.Calls(), [&](int number) {
            const std::string value = "v" + std::to_string(kind) + "." + std::to_string(number);
            queueAnEdit(value);
            const KilledEnd end = UseUntilKilled({.kind = kKillingKinds[kind], .number = number});
            ASSERT_TRUE(IsKilledOrDone(end)) << end.exitCode;
            Restart();
            EXPECT_EQ(value, Value("K"));
            EXPECT_THAT(WaitingEdits(), IsEmpty());
            EXPECT_THAT(DamagedFiles(), IsEmpty());
            EXPECT_THAT(test::RecoveredFiles(), IsEmpty());
        });
    }
}

}  // namespace
}  // namespace depot
