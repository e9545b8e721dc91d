#include "directory_files/transfer_fixture.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;

// Transfers between depots, named by display paths.
class DepotTransferTest : public test::TransferTest {
protected:
    int OnList(std::initializer_list<CDepotItem> sources, const CDepotItem* target,
               UINT operation) {
        CDepotItems items;
        for (const CDepotItem& source : sources) items.Append(source.Clone());
        return ListOperation(items, target, operation, kQuietFlags, nullptr, &error_);
    }
    // The temporary folders that exist now.
    static int TemporaryFolders() {
        char folder[MAX_PATH] = {};
        GetTempPathA(sizeof(folder), folder);
        WIN32_FIND_DATAA found = {};
        int count = 0;
        const HANDLE search = FindFirstFileA((std::string(folder) + "Dir*").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) return 0;
        do {
            ++count;
        } while (FindNextFileA(search, &found));
        FindClose(search);
        return count;
    }
};

TEST_F(DepotTransferTest, AFileTravelsThroughEveryPairOfStores) {
    Make("h\\a.kra", "1");
    EXPECT_EQ(1, CopyFile(home_, "<Home>\\a.kra", "<Work>\\a.kra", work_, true, &error_));
    EXPECT_EQ(1, CopyFile(*work_, "<Work>\\a.kra", "<Work>\\b.kra", work_, true, &error_));
    EXPECT_EQ(1, CopyFile(*work_, "<Work>\\b.kra", "<Home>\\c.kra", &home_, true, &error_));
    EXPECT_EQ(1, CopyFile(*work_, "<Work>\\b.kra", At("plain.kra"), nullptr, true, &error_));
    EXPECT_EQ(1, CopyFile(*work_, "<Work>\\b.kra", "<Work>\\sub\\", work_, true, &error_));
    EXPECT_EQ("1", FileBytes(At("h\\c.kra")));
    EXPECT_EQ("1", FileBytes(At("plain.kra")));
    EXPECT_EQ("1", Contents(DN("cn=b.kra,cn=sub")));
    EXPECT_EQ(1, FileExists(*work_, "<Work>\\b.kra"));
    EXPECT_EQ(1, MoveFile(*work_, "<Work>\\b.kra", "<Work>\\d.kra", nullptr, nullptr, nullptr));
    EXPECT_EQ(0, FileExists(*work_, "<Work>\\b.kra"));
    EXPECT_NE(0, DeleteFile(*work_, "<Work>\\d.kra"));
    EXPECT_EQ(0, DeleteFile(*work_, "<Work>\\d.kra"));
}

TEST_F(DepotTransferTest, TheLastErrorCodeIsThatOfTheDirectory) {
    EXPECT_EQ(0, CopyFile(*work_, "<Work>\\no.kra", At("x"), nullptr, true, &error_));
    EXPECT_EQ(Directory().Client().LdapMapErrorToWin32(LDAP_INVALID_DN_SYNTAX),
              LastErrorCode(*work_));
}

TEST_F(DepotTransferTest, AMixedListIsCopiedToAFolderAndLeavesNoTemporaryFolder) {
    Make("h\\a.kra", "1");
    Make("h\\b.kra", "2");
    server_.AddFile("c.kra", base_, "3");
    const std::string out = world_.folder.MakeFolder("h\\out");
    const CDepotItem target("<Home>\\out", &home_);
    const int before = TemporaryFolders();
    EXPECT_EQ(
        1, OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\b.kra", &home_}, {"<Work>\\c.kra", work_}},
                  &target, FO_COPY));
    EXPECT_EQ("1", FileBytes(out + "\\a.kra"));
    EXPECT_EQ("2", FileBytes(out + "\\b.kra"));
    EXPECT_EQ("3", FileBytes(out + "\\c.kra"));
    EXPECT_EQ(before, TemporaryFolders());
    EXPECT_EQ("3", Contents(DN("cn=c.kra")));
}

TEST_F(DepotTransferTest, TemporaryFoldersGoAlsoWhenTheShellFails) {
    server_.AddFile("c.kra", base_, "3");
    const int before = TemporaryFolders();
    const CDepotItem nowhere;
    EXPECT_EQ(0, OnList({{"<Work>\\c.kra", work_}}, &nowhere, FO_MOVE));
    EXPECT_EQ(before, TemporaryFolders());
    EXPECT_EQ("3", Contents(DN("cn=c.kra")));
}

TEST_F(DepotTransferTest, AnEntryIsMovedToAFolderAndDeleted) {
    server_.AddFile("c.kra", base_, "3");
    server_.AddFile("d.kra", base_, "4");
    const CDepotItem target("<Home>\\out.kra", &home_);
    EXPECT_EQ(1, OnList({{"<Work>\\c.kra", work_}}, &target, FO_MOVE));
    EXPECT_EQ("3", FileBytes(At("h\\out.kra")));
    EXPECT_FALSE(Holds(DN("cn=c.kra")));
    EXPECT_EQ(1, OnList({{"<Work>\\d.kra", work_}}, nullptr, FO_DELETE));
    EXPECT_FALSE(Holds(DN("cn=d.kra")));
}

TEST_F(DepotTransferTest, AListIntoADirectoryFolderStopsAtTheFirstFailure) {
    Make("h\\a.kra", "1");
    Make("h\\c.kra", "3");
    const CDepotItem target("<Work>\\sub\\", work_);
    EXPECT_EQ(
        0, OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\b.kra", &home_}, {"<Home>\\c.kra", &home_}},
                  &target, FO_MOVE));
    EXPECT_EQ("1", Contents(DN("cn=a.kra,cn=sub")));
    EXPECT_FALSE(Exists(At("h\\a.kra")));
    EXPECT_FALSE(Holds(DN("cn=c.kra,cn=sub")));
    EXPECT_TRUE(Exists(At("h\\c.kra")));
}

TEST_F(DepotTransferTest, AnItemThatExistsInTheDirectoryIsNotReplaced) {
    Make("h\\a.kra", "new");
    server_.AddFile("a.kra", base_, "old");
    const CDepotItem target("<Work>\\a.kra", work_);
    EXPECT_EQ(0, OnList({{"<Home>\\a.kra", &home_}}, &target, FO_MOVE));
    EXPECT_EQ("old", Contents(DN("cn=a.kra")));
    EXPECT_TRUE(Exists(At("h\\a.kra")));
}

}  // namespace
}  // namespace depot
