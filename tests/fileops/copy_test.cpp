#include "fileops/copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "platform/file_search.h"
#include "platform/paths.h"
#include "store/folder_store.h"
#include "support/failing_memory.h"
#include "support/memory_store.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::FileBytes;

class CopyTest : public testing::Test {
protected:
    StorePath Local(const std::string& name) { return {&local_, folder_.At(name)}; }
    StorePath InMemory(const std::string& name) {
        return {&memory_, memory_.ChildPath(test::MemoryStore::kRoot, name, true)};
    }

    // A folder "tree" with a file and, in a folder, another one.
    StorePath MakeTree() {
        for (const char* name : {"tree", "tree\\sub"}) folder_.MakeFolder(name);
        folder_.MakeFile("tree\\a.kra", "1");
        folder_.MakeFile("tree\\sub\\b.kra", "2");
        return Local("tree");
    }
    void ExpectTree(const std::string& name) {
        EXPECT_EQ("1", FileBytes(folder_.At(name + "\\a.kra")));
        EXPECT_EQ("2", FileBytes(folder_.At(name + "\\sub\\b.kra")));
    }

    test::ScratchFolder folder_;
    FolderStore& local_ = FolderStore::Instance();
    test::MemoryStore memory_;
};

TEST_F(CopyTest, TreeIsCopiedWithinTheFileSystemAndNotedFileByFile) {
    CopiedSource copied;
    CopyRequest request = {MakeTree(), Local("copy")};
    request.copied = &copied;
    int seen = 0;
    request.watcher = [&](const TransferProgress& progress) {
        EXPECT_EQ(2u, progress.filesInAll);
        return ++seen > 0;
    };
    EXPECT_TRUE(CopyWhole(request).result) << CopyWhole(request).result.Text();
    ExpectTree("copy");
    EXPECT_EQ(2, seen);
    ASSERT_EQ(4u, copied.items.size());
    EXPECT_TRUE(IsAsCopied(local_, copied));
    EXPECT_TRUE(RemoveCopied(local_, copied).why);
    EXPECT_FALSE(test::Exists(folder_.At("tree")));
}

TEST_F(CopyTest, TreeMovesNeitherOntoNorIntoItself) {
    const StorePath tree = MakeTree();
    for (const char* target : {"tree", "TREE", "tree\\sub\\again"}) {
        SCOPED_TRACE(target);
        EXPECT_TRUE(CopyWhole({tree, Local(target)}).result.Is(Reason::kInvalid));
    }
    ExpectTree("tree");
    EXPECT_FALSE(test::Exists(folder_.At("tree\\sub\\again")));
}

int TemporaryFolders() {
    char folder[MAX_PATH] = {};
    GetTempPathA(sizeof(folder), folder);
    FileSearch search(JoinPath(folder, "Dir*.tmp"));
    WIN32_FIND_DATAA found = {};
    int count = 0;
    while (search.Next(found)) ++count;
    return count;
}

TEST_F(CopyTest, CopyThatRunsOutOfMemoryLeavesNoTemporaryFolder) {
    ASSERT_TRUE(CopyWhole({MakeTree(), InMemory("tree")}).result);
    const int before = TemporaryFolders();
    int copied = 0;
    const int allocations = test::FailEachAllocation([&] {
        try {
            test::MemoryStore other;
            const StorePath target = {&other,
                                      other.ChildPath(test::MemoryStore::kRoot, "tree", true)};
            if (CopyWhole({InMemory("tree"), target}).result) ++copied;
        } catch (const std::bad_alloc&) {
            return;
        }
    });
    EXPECT_LT(10, allocations);
    EXPECT_LT(0, copied);
    EXPECT_EQ(before, TemporaryFolders());
}

TEST_F(CopyTest, ExistingFileThatStaysIsFoundBeforeAnythingIsCopied) {
    for (const char* name : {"copy", "copy\\sub"}) folder_.MakeFolder(name);
    folder_.MakeFile("copy\\sub\\b.kra", "old");
    EXPECT_TRUE(CopyWhole({MakeTree(), Local("copy"), ExistingEntries::kRefuse})
                    .result.Is(Reason::kExists));
    EXPECT_EQ("old", FileBytes(folder_.At("copy\\sub\\b.kra")));
    EXPECT_FALSE(test::Exists(folder_.At("copy\\a.kra")));
    EXPECT_TRUE(CopyWhole({MakeTree(), Local("copy")}).result);
    ExpectTree("copy");
}

TEST_F(CopyTest, TreeIsStoppedBetweenTwoFiles) {
    CopyRequest request = {MakeTree(), Local("copy")};
    request.watcher = [](const TransferProgress&) { return false; };
    EXPECT_TRUE(CopyWhole(request).result.Is(Reason::kStopped));
    EXPECT_NE(test::Exists(folder_.At("copy\\a.kra")),
              test::Exists(folder_.At("copy\\sub\\b.kra")));
}

TEST_F(CopyTest, TreePassesFromStoreToStoreAndBack) {
    EXPECT_TRUE(Copy({MakeTree(), InMemory("tree")}).result);
    // Neither is in reach of the system: a temporary folder lies between.
    test::MemoryStore other;
    EXPECT_TRUE(
        Copy({InMemory("tree"), {&other, other.ChildPath(test::MemoryStore::kRoot, "tree", true)}})
            .result);
    EXPECT_TRUE(
        Copy({{&other, other.ChildPath(test::MemoryStore::kRoot, "tree", true)}, Local("back")})
            .result);
    ExpectTree("back");
    EXPECT_EQ(0, memory_.TimesOpen());
    EXPECT_EQ(0, other.TimesOpen());
}

TEST_F(CopyTest, TargetWithoutRoomFailsAndLeavesTheSource) {
    memory_.SetRoom(1);
    const CopyOutcome outcome = Copy({MakeTree(), InMemory("tree")});
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(CopyStage::kTarget, outcome.stage);
    ExpectTree("tree");
}

TEST_F(CopyTest, MissingSourceIsReportedAsSuch) {
    const CopyOutcome outcome = CopyWhole({Local("none"), Local("copy")});
    EXPECT_TRUE(outcome.result.Is(Reason::kMissing));
    EXPECT_EQ(CopyStage::kSource, outcome.stage);
    EXPECT_FALSE(test::Exists(folder_.At("copy")));
}

}  // namespace
}  // namespace depot
