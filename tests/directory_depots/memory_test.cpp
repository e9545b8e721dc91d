// Working copies and trees of a directory while memory runs out at each allocation in turn.
#include "directory_depots/depot_fixture.h"
#include "model/directory_trees.h"
#include "support/failing_memory.h"
#include "support/offline_files.h"
#include "support/results.h"

namespace depot {
namespace {

using test::FailingMemory;
using test::FileBytes;
using test::IsDone;
using testing::IsEmpty;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

// No operation makes as many allocations.
constexpr int kManyAllocations = 3000;

class DirectoryMemoryTest : public test::DepotFixture {
protected:
    // Makes the call with one of its allocations failing. Returns whether that happened.
    template <class Call>
    bool RunWithout(int failing, const Call& call) {
        const FailingMemory memory(failing);
        try {
            call();
        } catch (const std::bad_alloc&) {
            threw_ = true;
        }
        return FailingMemory::RanOut();
    }

    // Changes a working copy and releases it in that way.
    bool ReleaseWithout(int failing) {
        const auto file = Load();
        file->WriteString("S", "K", "new");
        if (entryIsGone_) server_.Apply("dn: " + Dn("a.kra") + "\nchangetype: delete\n");
        return RunWithout(failing, [&] { file->Release(); });
    }

    // All that the edit may have become: a working copy, a recovered file, the entry's bytes.
    std::vector<std::string> PlacesOfBytes() {
        std::vector<std::string> found;
        for (const std::string& path : test::WorkingCopies()) found.push_back(FileBytes(path));
        for (const std::string& path : test::RecoveredFiles()) found.push_back(FileBytes(path));
        if (server_.Holds(Dn("a.kra"))) found.push_back(Stored("a.kra"));
        return found;
    }

    static void RemoveFiles() { const test::CleanWorkingFiles clean; }

    bool entryIsGone_ = false;
    bool threw_ = false;
};

TEST_F(DirectoryMemoryTest, EditIsNeverLostByAReleaseThatRunsOutOfMemory) {
    server_.AddFile("a.kra", base_, kOld);
    bool ranOut = true;
    for (int failing = 1; ranOut && failing < kManyAllocations; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_THAT(Connected().ReplaceFileContents(Dn("a.kra"), kOld, sizeof(kOld) - 1), IsDone());
        ranOut = ReleaseWithout(failing);
        ASSERT_THAT(PlacesOfBytes(), testing::Contains(kNew));
        RemoveFiles();
    }
    EXPECT_FALSE(ranOut);
    EXPECT_TRUE(threw_);
}

TEST_F(DirectoryMemoryTest, EditThatIsStoredButCannotBeKeptForLaterLeavesNoCopy) {
    const test::CleanOfflineFiles clean;
    key_.Dword("Work", "Offline1", 1);
    Define(server_.Port(), base_);
    server_.AddFile("a.kra", base_, kOld);
    bool ranOut = true;
    int failing = 1;
    for (; ranOut && failing < kManyAllocations; ++failing) {
        ranOut = ReleaseWithout(failing);
        if (Stored("a.kra") != kNew) {
            RemoveFiles();
            continue;
        }
        EXPECT_THAT(test::WorkingCopies(), IsEmpty()) << failing;
        EXPECT_THAT(test::RecoveredFiles(), IsEmpty()) << failing;
        RemoveFiles();
        Connected();
        EXPECT_THAT(Connected().ReplaceFileContents(Dn("a.kra"), kOld, sizeof(kOld) - 1), IsDone());
    }
    EXPECT_FALSE(ranOut);
    EXPECT_LT(5, failing);
}

TEST_F(DirectoryMemoryTest, EditOfAnEntryThatIsGoneIsNeverLostEither) {
    entryIsGone_ = true;
    bool ranOut = true;
    for (int failing = 1; ranOut && failing < kManyAllocations; ++failing) {
        SCOPED_TRACE(failing);
        server_.AddFile("a.kra", base_, kOld);
        ranOut = ReleaseWithout(failing);
        ASSERT_THAT(PlacesOfBytes(), testing::Contains(kNew));
        RemoveFiles();
    }
    EXPECT_FALSE(ranOut);
    EXPECT_TRUE(threw_);
}

TEST_F(DirectoryMemoryTest, LoadThatRunsOutOfMemoryLeavesNoWorkingCopy) {
    server_.AddFile("a.kra", base_, kOld);
    Choose();
    bool ranOut = true;
    for (int failing = 1; ranOut && failing < kManyAllocations; ++failing) {
        SCOPED_TRACE(failing);
        ranOut = RunWithout(failing, [&] { Load(); });
        ASSERT_THAT(test::WorkingCopies(), IsEmpty());
        ASSERT_FALSE(Directory().IsConnected());
    }
    EXPECT_FALSE(ranOut);
    EXPECT_TRUE(threw_);
}

TEST_F(DirectoryMemoryTest, DownloadThatRunsOutOfMemoryLeavesOnlyWholeFilesAndNoConnection) {
    server_.AddFolder("A", base_);
    server_.AddFile("a1.kra", Dn("A"), kOld);
    server_.AddFile("a2.kra", Dn("A"), kOld);
    server_.AddFolder("B", Dn("A"));
    server_.AddFile("b1.kra", "cn=B," + Dn("A"), kOld);
    Choose();
    bool ranOut = true;
    for (int failing = 1; ranOut && failing < kManyAllocations; ++failing) {
        SCOPED_TRACE(failing);
        const test::ScratchFolder folder;
        ranOut =
            RunWithout(failing, [&] { DownloadTree(Directory(), Dn("A"), folder.Path(), true); });
        for (const std::string& path : test::FilesIn(folder.Path(), "*.kra")) {
            ASSERT_EQ(kOld, FileBytes(path)) << path;
        }
        ASSERT_FALSE(Directory().IsConnected());
    }
    EXPECT_FALSE(ranOut);
    EXPECT_TRUE(threw_);
}

TEST_F(DirectoryMemoryTest, UploadThatRunsOutOfMemoryStaysUnconnected) {
    const test::ScratchFolder folder;
    const std::string path = folder.MakeFile("new.kra", kNew);
    bool ranOut = true;
    for (int failing = 1; ranOut && failing < kManyAllocations; ++failing) {
        SCOPED_TRACE(failing);
        ranOut =
            RunWithout(failing, [&] { UploadNewFile(Directory(), path, base_, true, nullptr); });
        ASSERT_FALSE(Directory().IsConnected());
        if (!server_.Holds(Dn("new.kra"))) continue;
        ASSERT_EQ(kNew, Stored("new.kra"));
        server_.Apply("dn: " + Dn("new.kra") + "\nchangetype: delete\n");
    }
    EXPECT_FALSE(ranOut);
    EXPECT_TRUE(threw_);
}

}  // namespace
}  // namespace depot
