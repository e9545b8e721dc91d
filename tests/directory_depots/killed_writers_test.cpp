// Processes that are killed while they keep an edit for later or store one: what was acknowledged
// is never lost.
#include <cstdlib>

#include "directory_depots/depot_fixture.h"
#include "faults/fault_layer.h"
#include "support/child_process.h"
#include "support/offline_files.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Arguments;
using test::ChildProcess;
using test::DirectoryServer;
using test::FaultKind;
using test::FaultLayer;
using test::FilesIn;
using test::WaitingEdits;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kDepots[] = "Software\\DepotTests\\Directory";
constexpr int kRefused = 97;
// A process that comes to its end reports how many calls it made.
constexpr int kAcknowledged = 1000;
// Without DEPOTINTR_THOROUGH so many calls of each kind are the last one, spread over all.
constexpr int kPlaces = 12;

constexpr FaultKind kKinds[] = {FaultKind::kFile, FaultKind::kObject, FaultKind::kDirectory};

// Writes a value of the file while the process lives, and reads one where the text is empty.
int UseUntilKilled(const Arguments& arguments) {
    const FaultLayer layer(GetModuleHandleA(nullptr));
    CDepots depots(kDepots);
    FaultLayer::EndProcess(kKinds[std::stoi(arguments[0])], std::stoi(arguments[1]));
    bool isDone = true;
    {
        DepotFileContext file("<Work>\\a.kra", depots);
        if (arguments.size() > 2) file.WriteString("S", "K", arguments[2]);
        isDone = file.Release();
    }
    return isDone ? kAcknowledged + FaultLayer::Stop() : kRefused;
}
const test::RoleRegistration useRole("use-until-killed", &UseUntilKilled);

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

    static int Use(std::size_t kind, int number, const Arguments& value = {}) {
        Arguments arguments = {std::to_string(kind), std::to_string(number)};
        arguments.insert(arguments.end(), value.begin(), value.end());
        return ChildProcess("use-until-killed", arguments).ExitCode();
    }

    // Some calls depend on what other processes left: a run may have fewer than were counted.
    static bool IsKilledOrDone(int result) {
        return result == static_cast<int>(FaultLayer::kEnded) || result >= kAcknowledged;
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
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        SCOPED_TRACE(NameOf(kKinds[kind]));
        const int whole = Use(kind, 0, {last});
        ASSERT_LE(kAcknowledged, whole);
        ForEachPlace(whole - kAcknowledged, [&](int number) {
            const std::string value = "v" + std::to_string(kind) + "." + std::to_string(number);
            const int result = Use(kind, number, {value});
            ASSERT_TRUE(IsKilledOrDone(result)) << result;
            EXPECT_THAT(DamagedFiles(), IsEmpty());
            const std::string waiting = Waiting();
            EXPECT_THAT(waiting, HasSubstr("L=acknowledged\r\n"));
            const bool isThere = waiting.find("K=" + value + "\r\n") != std::string::npos;
            EXPECT_TRUE(isThere || result < kAcknowledged) << waiting;
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
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        SCOPED_TRACE(NameOf(kKinds[kind]));
        queueAnEdit("first" + std::to_string(kind));
        const int whole = Use(kind, 0);
        ASSERT_LE(kAcknowledged, whole);
        ForEachPlace(whole - kAcknowledged, [&](int number) {
            const std::string value = "v" + std::to_string(kind) + "." + std::to_string(number);
            queueAnEdit(value);
            const int result = Use(kind, number);
            ASSERT_TRUE(IsKilledOrDone(result)) << result;
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
