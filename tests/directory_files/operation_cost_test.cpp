// What operations on several files cost the server, read from its own log.
#include <algorithm>

#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "fileops/numbered_copy.h"
#include "support/results.h"

namespace depot {
namespace {

using test::IsDone;
using test::OperationCounts;

class OperationCostTest : public test::DirectoryWorldTest {
protected:
    int OnList(const std::vector<std::string>& sources, CDepot* depot, const CDepotItem* target,
               UINT operation) {
        CDepotItems items;
        for (const std::string& source : sources) {
            items.Append(std::make_unique<CDepotItem>(source, depot));
        }
        return ListOperation(items, target, operation, kQuietFlags, nullptr, &error_);
    }
    // The most entries that one search found.
    int LargestResult() {
        constexpr std::string_view kCount = " nentries=";
        const std::string log = server_.Log();
        int largest = 0;
        for (std::size_t at = log.find(kCount); at != std::string::npos;
             at = log.find(kCount, at + 1)) {
            largest = std::max(largest, std::atoi(log.c_str() + at + kCount.size()));
        }
        return largest;
    }
    void FillTarget(const std::string& dn, int files) {
        std::string ldif;
        for (int index = 0; index < files; ++index) {
            const std::string name = "other" + std::to_string(index) + ".kra";
            ldif += "dn: cn=" + name + "," + dn + "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: x\n\n";
        }
        server_.Apply(ldif);
    }
};

TEST_F(OperationCostTest, NumberedCopyIsOneBindHoweverManyNamesAreTaken) {
    for (const char* name : {"a.kra", "a - copy.kra", "a - copy (2).kra"}) {
        server_.AddFile(name, base_, "1");
    }
    server_.Mark();
    EXPECT_EQ("<Work>\\a - copy (3).kra",
              MakeNumberedCopy(world_.depots, "<Work>\\a.kra", CopyNameStyle::kDash));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 4, .adds = 1}), Counts());
    EXPECT_EQ("1", Contents(DN("cn=a - copy (3).kra")));
}

TEST_F(OperationCostTest, ListIntoADirectoryIsOneBindAndAnAdditionForEachFile) {
    Make("h\\a.kra", "1");
    Make("h\\b.kra", "2");
    const CDepotItem target("<Work>\\", work_);
    EXPECT_THAT(OnList({"<Home>\\a.kra", "<Home>\\b.kra"}, &home_, &target, FO_COPY), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .adds = 2}), Counts());
    EXPECT_FALSE(Directory().IsConnected());
}

TEST_F(OperationCostTest, ListOutOfADirectoryIsOneBind) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", base_, "2");
    world_.folder.MakeFolder("h\\out");
    const CDepotItem target("<Home>\\out", &home_);
    server_.Mark();
    EXPECT_THAT(OnList({"<Work>\\a.kra", "<Work>\\b.kra"}, work_, &target, FO_COPY), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 2}), Counts());
    server_.Mark();
    EXPECT_THAT(OnList({"<Work>\\a.kra", "<Work>\\b.kra"}, work_, nullptr, FO_DELETE), IsDone());
    EXPECT_EQ(1, Counts().binds);
    EXPECT_EQ(2, Counts().deletions);
}

TEST_F(OperationCostTest, ListWithinADirectoryIsOneBind) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", base_, "2");
    const CDepotItem target("<Work>\\sub\\", work_);
    server_.Mark();
    EXPECT_THAT(OnList({"<Work>\\a.kra", "<Work>\\b.kra"}, work_, &target, FO_MOVE), IsDone());
    EXPECT_EQ(1, Counts().binds);
    EXPECT_EQ(2, Counts().deletions);
    EXPECT_EQ("2", Contents(DN("cn=b.kra,cn=sub")));
}

TEST_F(OperationCostTest, WhatAnEarlierItemOfAListReplacesIsReadAfterwards) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFolder("sub", base_);
    server_.AddFile("b.kra", DN("cn=sub"), "new");
    server_.AddFolder("t", base_);
    server_.AddFolder("sub", DN("cn=t"));
    server_.AddFile("b.kra", DN("cn=sub,cn=t"), "old");
    const CDepotItem target("<Work>\\t\\", work_);
    EXPECT_THAT(
        OnList({"<Work>\\a.kra", "<Work>\\sub", "<Work>\\t\\sub\\b.kra"}, work_, &target, FO_COPY),
        IsDone());
    EXPECT_EQ("new", Contents(DN("cn=b.kra,cn=t")));
}

TEST_F(OperationCostTest, MoveOfOneEntryIsOneBind) {
    server_.AddFile("a.kra", base_, "1");
    const CDepotItem target("<Home>\\a.kra", &home_);
    server_.Mark();
    EXPECT_THAT(ItemOperation({"<Work>\\a.kra", work_}, &target, FO_MOVE, nullptr, nullptr),
                IsDone());
    EXPECT_EQ(1, Counts().binds);
    EXPECT_EQ(1, Counts().deletions);
}

TEST_F(OperationCostTest, NoSearchResultGrowsWithTheTargetFolder) {
    FillTarget(base_, 60);
    server_.AddFile("source.kra", base_, "1");
    const std::string file = Make("h\\a.kra", "1");
    const CDepotItem target("<Work>\\", work_);
    server_.Mark();
    EXPECT_THAT(OnList({"<Home>\\a.kra"}, &home_, &target, FO_COPY), IsDone());
    EXPECT_THAT(CopyFile(home_, "<Home>\\a.kra", "<Work>\\other1.kra", work_, false, &error_),
                IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", "<Work>\\other2.kra", work_, false, &error_),
                IsDone());
    EXPECT_THAT(
        MoveFile(*work_, "<Work>\\other2.kra", "<Work>\\new.kra", nullptr, nullptr, &error_),
        IsDone());
    EXPECT_TRUE(MakeNumberedCopy(world_.depots, "<Work>\\a.kra", CopyNameStyle::kDash));
    EXPECT_LE(LargestResult(), 1);
    EXPECT_GT(Counts().searches, 0);
}

TEST_F(OperationCostTest, TreeIntoAFullFolderFindsNoMoreThanItsOwnEntries) {
    FillTarget(base_, 60);
    const std::string tree = AddTree("tree");
    server_.Mark();
    EXPECT_THAT(MoveFile(*work_, "<Work>\\tree", "<Work>\\moved", nullptr, nullptr, &error_),
                IsDone());
    EXPECT_LE(LargestResult(), 2);
    EXPECT_EQ(1, Counts().binds);
    ExpectTree(DN("cn=moved"));
}

}  // namespace
}  // namespace depot
