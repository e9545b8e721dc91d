#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;
using test::kNo;
using test::kYes;

// Transfers between depots, named by display paths.
class DepotTransferTest : public test::DirectoryWorldTest {
protected:
    int OnList(std::initializer_list<CDepotItem> sources, const CDepotItem* target,
               UINT operation) {
        CDepotItems items;
        for (const CDepotItem& source : sources) items.Append(source.Clone());
        return ListOperation(items, target, operation, kQuietFlags, nullptr, &error_);
    }
    void ExpectKept(const char* name, const char* target, CDepot* targetDepot) {
        SCOPED_TRACE(name);
        const std::string before = server_.Show(base_, "sub");
        const CDepotItem item(name, work_), place(target, targetDepot);
        EXPECT_THAT(OnList({CDepotItem(item)}, &place, FO_MOVE), Fails());
        EXPECT_THAT(ItemOperation(item, &place, FO_MOVE, nullptr, &error_), Fails());
        EXPECT_EQ(before, server_.Show(base_, "sub"));
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

TEST_F(DepotTransferTest, FileTravelsThroughEveryPairOfStores) {
    Make("h\\a.kra", "1");
    EXPECT_THAT(CopyFile(home_, "<Home>\\a.kra", "<Work>\\a.kra", work_, true, &error_), IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", "<Work>\\b.kra", work_, true, &error_), IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\b.kra", "<Home>\\c.kra", &home_, true, &error_),
                IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\b.kra", At("plain.kra"), nullptr, true, &error_),
                IsDone());
    EXPECT_THAT(CopyFile(*work_, "<Work>\\b.kra", "<Work>\\sub\\", work_, true, &error_), IsDone());
    EXPECT_EQ("1", FileBytes(At("h\\c.kra")));
    EXPECT_EQ("1", FileBytes(At("plain.kra")));
    EXPECT_EQ("1", Contents(DN("cn=b.kra,cn=sub")));
    EXPECT_EQ(kYes, FileExists(*work_, "<Work>\\b.kra"));
    EXPECT_THAT(MoveFile(*work_, "<Work>\\b.kra", "<Work>\\d.kra", nullptr, nullptr, nullptr),
                IsDone());
    EXPECT_EQ(kNo, FileExists(*work_, "<Work>\\b.kra"));
    EXPECT_THAT(DeleteFile(*work_, "<Work>\\d.kra"), IsDone());
    EXPECT_THAT(DeleteFile(*work_, "<Work>\\d.kra"), Fails());
}

TEST_F(DepotTransferTest, LastErrorCodeIsThatOfTheDirectory) {
    EXPECT_THAT(CopyFile(*work_, "<Work>\\no.kra", At("x"), nullptr, true, &error_), Fails());
    EXPECT_EQ(Directory().Client().LdapMapErrorToWin32(LDAP_INVALID_DN_SYNTAX),
              LastErrorCode(*work_));
}

TEST_F(DepotTransferTest, MixedListIsCopiedToAFolderAndLeavesNoTemporaryFolder) {
    Make("h\\a.kra", "1");
    Make("h\\b.kra", "2");
    server_.AddFile("c.kra", base_, "3");
    const std::string out = world_.folder.MakeFolder("h\\out");
    const CDepotItem target("<Home>\\out", &home_);
    const int before = TemporaryFolders();
    EXPECT_THAT(
        OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\b.kra", &home_}, {"<Work>\\c.kra", work_}},
               &target, FO_COPY),
        IsDone());
    EXPECT_EQ("1", FileBytes(out + "\\a.kra"));
    EXPECT_EQ("2", FileBytes(out + "\\b.kra"));
    EXPECT_EQ("3", FileBytes(out + "\\c.kra"));
    EXPECT_EQ(before, TemporaryFolders());
    EXPECT_EQ("3", Contents(DN("cn=c.kra")));
}

TEST_F(DepotTransferTest, TemporaryFoldersAreDeletedAlsoWhenTheShellFails) {
    server_.AddFile("c.kra", base_, "3");
    const int before = TemporaryFolders();
    const CDepotItem nowhere;
    EXPECT_THAT(OnList({{"<Work>\\c.kra", work_}}, &nowhere, FO_MOVE), Fails());
    EXPECT_EQ(before, TemporaryFolders());
    EXPECT_EQ("3", Contents(DN("cn=c.kra")));
}

TEST_F(DepotTransferTest, EntryIsMovedToAFolderAndDeleted) {
    server_.AddFile("c.kra", base_, "3");
    server_.AddFile("d.kra", base_, "4");
    const CDepotItem target("<Home>\\out.kra", &home_);
    EXPECT_THAT(OnList({{"<Work>\\c.kra", work_}}, &target, FO_MOVE), IsDone());
    EXPECT_EQ("3", FileBytes(At("h\\out.kra")));
    EXPECT_FALSE(Holds(DN("cn=c.kra")));
    EXPECT_THAT(OnList({{"<Work>\\d.kra", work_}}, nullptr, FO_DELETE), IsDone());
    EXPECT_FALSE(Holds(DN("cn=d.kra")));
}

TEST_F(DepotTransferTest, RemovingEntriesStopsAtTheFirstThatResists) {
    for (const char* name : {"a.kra", "b.kra", "c.kra"}) server_.AddFile(name, base_, name);
    static DirectoryClient real;
    real = Directory().Client();
    Directory().Client().ldap_delete_s = [](LDAP* connection, PCHAR dn) -> ULONG {
        const bool resists = std::string(dn).find("=b.kra") != std::string::npos;
        return resists ? ULONG{LDAP_INSUFFICIENT_RIGHTS} : real.ldap_delete_s(connection, dn);
    };
    // What was moved is deleted on a condition.
    Directory().Client().ldap_delete_ext_s = [](LDAP* connection, const PCHAR dn,
                                                PLDAPControlA* controls,
                                                PLDAPControlA* clientControls) -> ULONG {
        const bool resists = std::string(dn).find("=b.kra") != std::string::npos;
        return resists ? ULONG{LDAP_INSUFFICIENT_RIGHTS}
                       : real.ldap_delete_ext_s(connection, dn, controls, clientControls);
    };
    world_.folder.MakeFolder("h\\out");
    const auto entries = [&](const char* name) {
        return CDepotItem(std::string("<Work>\\") + name, work_);
    };
    EXPECT_THAT(OnList({entries("a.kra"), entries("b.kra"), entries("c.kra")}, nullptr, FO_DELETE),
                Fails());
    EXPECT_FALSE(Holds(DN("cn=a.kra")));
    EXPECT_TRUE(Holds(DN("cn=b.kra")));
    EXPECT_TRUE(Holds(DN("cn=c.kra")));
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_EQ("junk", error_);
    // What was moved already stays where it has arrived. Some shells move several items only
    // together with a folder.
    const CDepotItem target("<Home>\\out", &home_);
    world_.folder.MakeFolder("h\\dir");
    Make("h\\dir\\d.kra", "4");
    EXPECT_THAT(OnList({entries("b.kra"), entries("c.kra"), CDepotItem("<Home>\\dir", &home_)},
                       &target, FO_MOVE),
                Fails());
    EXPECT_EQ("b.kra", FileBytes(At("h\\out\\b.kra")));
    EXPECT_EQ("c.kra", FileBytes(At("h\\out\\c.kra")));
    EXPECT_TRUE(Holds(DN("cn=b.kra")));
    EXPECT_TRUE(Holds(DN("cn=c.kra")));
}

TEST_F(DepotTransferTest, EntriesWithNamesThatNoLocalFileCanHaveAreDeletedInLists) {
    server_.AddFile("CON", AddTree("tree"), "x");
    AddHostileEntries(base_);
    server_.AddFile("a.kra", base_, "1");
    Make("h\\a.kra", "1");
    const int before = TemporaryFolders();
    EXPECT_THAT(OnList({{"<Work>\\CON", work_},
                        {"<Work>\\a.kra", work_},
                        {"<Home>\\a.kra", &home_},
                        {"<Work>\\C:x.kra", work_},
                        {"<Work>\\tree", work_}},
                       nullptr, FO_DELETE),
                IsDone());
    EXPECT_EQ("junk", error_);
    for (const char* name : {"cn=CON", "cn=a.kra", "cn=C:x.kra", "cn=tree"}) {
        EXPECT_FALSE(Holds(DN(name))) << name;
    }
    EXPECT_FALSE(Exists(At("h\\a.kra")));
    EXPECT_EQ(before, TemporaryFolders());
}

TEST_F(DepotTransferTest, ListWithARootAndAnEntryOfAHostileNameDeletesNothing) {
    server_.AddFile("CON", base_, "x");
    EXPECT_THAT(OnList({{"<Work>\\CON", work_}, {"<Work>\\", work_}}, nullptr, FO_DELETE), Fails());
    EXPECT_NE("junk", error_);
    EXPECT_TRUE(Holds(DN("cn=CON")));
}

TEST_F(DepotTransferTest, TwoItemsOfOneNameAreNotCopiedFromADirectoryIntoOneFolder) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFolder("sub", base_);
    server_.AddFile("A.kra", DN("cn=sub"), "2");
    world_.folder.MakeFolder("h\\sub");
    world_.folder.MakeFolder("h\\out");
    Make("h\\sub\\A.kra", "3");
    const CDepotItem target("<Home>\\out\\", &home_);
    const CDepotItem entry("<Work>\\a.kra", work_);
    for (const CDepotItem& second :
         {CDepotItem("<Work>\\sub\\A.kra", work_), CDepotItem("<Home>\\sub\\A.kra", &home_)}) {
        error_ = "junk";
        EXPECT_THAT(OnList({CDepotItem(entry), CDepotItem(second)}, &target, FO_COPY), Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NAMING_VIOLATION));
        EXPECT_EQ(kSharedNamesText, error_);
        EXPECT_FALSE(Exists(At("h\\out\\a.kra")));
    }
}

TEST_F(DepotTransferTest, ListIntoADirectoryFolderStopsAtTheFirstFailure) {
    Make("h\\a.kra", "1");
    Make("h\\c.kra", "3");
    const CDepotItem target("<Work>\\sub\\", work_);
    EXPECT_THAT(
        OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\b.kra", &home_}, {"<Home>\\c.kra", &home_}},
               &target, FO_MOVE),
        Fails());
    EXPECT_EQ("1", Contents(DN("cn=a.kra,cn=sub")));
    EXPECT_FALSE(Exists(At("h\\a.kra")));
    EXPECT_FALSE(Holds(DN("cn=c.kra,cn=sub")));
    EXPECT_TRUE(Exists(At("h\\c.kra")));
}

TEST_F(DepotTransferTest, ItemThatExistsInTheDirectoryGetsTheNewContents) {
    Make("h\\a.kra", "new");
    Make("h\\b.kra", "newer");
    server_.AddFile("a.kra", base_, "old");
    const CDepotItem target("<Work>\\a.kra", work_);
    EXPECT_THAT(OnList({{"<Home>\\a.kra", &home_}}, &target, FO_COPY), IsDone());
    EXPECT_EQ("new", Contents(DN("cn=a.kra")));
    EXPECT_THAT(OnList({{"<Home>\\b.kra", &home_}}, &target, FO_MOVE), IsDone());
    EXPECT_EQ("newer", Contents(DN("cn=a.kra")));
    EXPECT_FALSE(Exists(At("h\\b.kra")));
    EXPECT_EQ("junk", error_);
}

TEST_F(DepotTransferTest, EntryThatIsMovedOntoItselfStays) {
    server_.AddFile("a.kra", base_, "1");
    AddTree("tree");
    for (const char* name : {"<Work>\\a.kra", "<Work>\\tree", "<WORK>\\TREE"}) {
        SCOPED_TRACE(name);
        const CDepotItem target(name, work_);
        EXPECT_THAT(OnList({CDepotItem(target)}, &target, FO_MOVE), Fails());
        EXPECT_THAT(OnList({CDepotItem(target)}, &target, FO_COPY), Fails());
    }
    EXPECT_EQ("1", Contents(DN("cn=a.kra")));
    ExpectTree(DN("cn=tree"));
}

TEST_F(DepotTransferTest, ExistingLocalFileIsReplacedOnlyWhenThatIsAllowed) {
    server_.AddFile("a.kra", base_, "new");
    const std::string file = Make("h\\a.kra", "old");
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", "<Home>\\a.kra", &home_, true, &error_), Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", file, nullptr, true, &error_), Fails());
    EXPECT_EQ("old", FileBytes(file));
    EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", file, nullptr, false, &error_), IsDone());
    EXPECT_EQ("new", FileBytes(file));
}

TEST_F(DepotTransferTest, TreeThatWouldReplaceALocalFileFetchesNothing) {
    AddTree("tree");
    world_.folder.MakeFolder("h\\out\\sub");
    Make("h\\out\\sub\\b.kra", "old");
    EXPECT_THAT(CopyFile(*work_, "<Work>\\tree", "<Home>\\out", &home_, true, &error_), Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_EQ("old", FileBytes(At("h\\out\\sub\\b.kra")));
    EXPECT_FALSE(Exists(At("h\\out\\a.kra")));
}

TEST_F(DepotTransferTest, TwoItemsOfAListNeverBecomeOneEntry) {
    world_.folder.MakeFolder("h\\sub");
    Make("h\\a.kra", "1");
    Make("h\\sub\\A.kra", "2");
    for (const char* path : {"<Work>\\", "<Work>\\one.kra"}) {
        SCOPED_TRACE(path);
        const CDepotItem target(path, work_);
        EXPECT_THAT(
            OnList({{"<Home>\\a.kra", &home_}, {"<Home>\\sub\\A.kra", &home_}}, &target, FO_MOVE),
            Fails());
        ExpectFailure(LDAP_ALREADY_EXISTS);
        error_ = "junk";
        EXPECT_EQ("2", FileBytes(At("h\\sub\\A.kra")));
        Make("h\\a.kra", "1");
    }
    EXPECT_EQ("1", Contents(DN("cn=a.kra")));
    EXPECT_EQ("1", Contents(DN("cn=one.kra")));
}

TEST_F(DepotTransferTest, TwoEntriesOfOneNameAreNotMovedIntoOneFolder) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFolder("sub", base_);
    server_.AddFile("a.kra", DN("cn=sub"), "2");
    const CDepotItem target("<Home>\\", &home_);
    EXPECT_THAT(OnList({{"<Work>\\a.kra", work_}, {"<Work>\\sub\\a.kra", work_}}, &target, FO_MOVE),
                Fails());
    EXPECT_NE("junk", error_);
    EXPECT_EQ("1", Contents(DN("cn=a.kra")));
    EXPECT_EQ("2", Contents(DN("cn=a.kra,cn=sub")));
    EXPECT_THAT(
        OnList({{"<Work>\\a.kra", work_}, {"<Work>\\sub\\a.kra", work_}}, nullptr, FO_DELETE),
        IsDone());
    EXPECT_FALSE(Holds(DN("cn=a.kra,cn=sub")));
}

// Some shells merge the two folders, others leave both and say that they have moved one.
TEST_F(DepotTransferTest, TreeThatIsMovedOntoAFolderOfItsNameIsNeverLost) {
    const std::string tree = AddTree("tree");
    world_.folder.MakeFolder("h\\tree");
    Make("h\\tree\\other.kra", "3");
    const CDepotItem target("<Home>\\", &home_);
    const int moved = OnList({{"<Work>\\tree", work_}}, &target, FO_MOVE);
    EXPECT_EQ(moved == 0, Holds(tree));
    EXPECT_EQ(moved != 0, Exists(At("h\\tree\\a.kra")) && Exists(At("h\\tree\\sub\\b.kra")));
    EXPECT_TRUE(Exists(At("h\\tree\\other.kra")));
}

// Moves that must leave their sources alone.
using KeptSourceTest = DepotTransferTest;

TEST_F(KeptSourceTest, TreeWithNamesThatNoLocalFileCanHave) {
    AddHostileEntries(AddTree("tree"));
    ExpectKept("<Work>\\tree", "<Home>\\out", &home_);
    EXPECT_EQ(UnsafeNamesText(3), error_);
    EXPECT_FALSE(Exists(At("h\\out")));
}

TEST_F(KeptSourceTest, EntryWhoseOwnNameNoLocalFileCanHave) {
    AddHostileEntries(base_);
    const int before = TemporaryFolders();
    for (const char* name : {"<Work>\\CON", "<Work>\\C:x.kra", "<Work>\\..", "<Work>\\"}) {
        ExpectKept(name, "<Home>\\", &home_);
    }
    EXPECT_EQ(UnsafeNamesText(1), error_);
    EXPECT_EQ(before, TemporaryFolders());
}

TEST_F(KeptSourceTest, EntryThatHoldsMoreThanIsCopied) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", DN("cn=a.kra"), "2");
    ExpectKept("<Work>\\a.kra", "<Home>\\out.kra", &home_);
}

TEST_F(KeptSourceTest, TreeThatWouldMoveOntoTheFolderAboveIt) {
    const std::string tree = AddTree("tree");
    server_.AddFolder("tree", tree);
    server_.AddFile("c.kra", "cn=tree," + tree, "3");
    ExpectKept("<Work>\\tree\\tree", "<Work>\\tree", work_);
    EXPECT_THAT(MoveFile(*work_, "<Work>\\tree", "<Work>\\", nullptr, nullptr, &error_), Fails());
    ExpectTree(tree);
}

TEST_F(DepotTransferTest, FilesWithoutADotAndFoldersWithOneAreMovedWhole) {
    AddUnusualNames(base_);
    const CDepotItem folder("<Home>\\", &home_);
    EXPECT_THAT(OnList({{"<Work>\\v1.2", work_}, {"<Work>\\README", work_}}, &folder, FO_MOVE),
                IsDone());
    EXPECT_EQ("3", FileBytes(At("h\\README")));
    EXPECT_EQ("4", FileBytes(At("h\\v1.2\\c.kra")));
    EXPECT_FALSE(Holds(DN("cn=README")));
    EXPECT_FALSE(Holds(DN("cn=v1.2")));
}

TEST_F(DepotTransferTest, FilesWithoutADotAndFoldersWithOneAreMovedWholeOneByOne) {
    AddUnusualNames(base_);
    for (const char* name : {"README", "v1.2"}) {
        const CDepotItem target(std::string("<Home>\\") + name, &home_);
        EXPECT_THAT(ItemOperation({std::string("<Work>\\") + name, work_}, &target, FO_MOVE,
                                  nullptr, &error_),
                    IsDone());
    }
    EXPECT_EQ("3", FileBytes(At("h\\README")));
    EXPECT_EQ("4", FileBytes(At("h\\v1.2\\c.kra")));
    EXPECT_FALSE(Holds(DN("cn=README")));
    EXPECT_FALSE(Holds(DN("cn=v1.2")));
}

// Opens a file so that nobody else can.
class Locked {
public:
    explicit Locked(const std::string& path)
        : file_(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(INVALID_HANDLE_VALUE, file_);
    }
    ~Locked() { CloseHandle(file_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    HANDLE file_;
};

TEST_F(DepotTransferTest, SourceThatIsOpenElsewhereIsNeitherCopiedNorMoved) {
    const std::string source = Make("h\\a.kra", "1");
    const Locked locked(source);
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        const CDepotItem entry("<Work>\\a.kra", work_), file("<Home>\\b.kra", &home_);
        for (const CDepotItem* target : {&entry, &file}) {
            EXPECT_THAT(
                ItemOperation({"<Home>\\a.kra", &home_}, target, operation, nullptr, nullptr),
                Fails());
        }
    }
    EXPECT_TRUE(Exists(source));
    EXPECT_FALSE(Exists(At("h\\b.kra")));
    EXPECT_FALSE(Holds(DN("cn=a.kra")));
}

TEST_F(DepotTransferTest, TreeWithAFileThatIsOpenElsewhereIsNotMoved) {
    world_.folder.MakeFolder("h\\tree");
    Make("h\\tree\\a.kra", "1");
    const std::string open = Make("h\\tree\\b.kra", "2");
    const CDepotItem target("<Work>\\tree", work_);
    {
        const Locked locked(open);
        EXPECT_THAT(ItemOperation({"<Home>\\tree", &home_}, &target, FO_MOVE, nullptr, nullptr),
                    Fails());
    }
    EXPECT_EQ("1", FileBytes(At("h\\tree\\a.kra")));
    EXPECT_EQ("2", FileBytes(open));
}

TEST_F(DepotTransferTest, DestinationThatIsOpenElsewhereKeepsTheEntry) {
    server_.AddFile("a.kra", base_, "1");
    const std::string destination = Make("h\\a.kra", "old");
    {
        const Locked locked(destination);
        EXPECT_THAT(CopyFile(*work_, "<Work>\\a.kra", destination, nullptr, false, &error_),
                    Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    }
    EXPECT_EQ("old", FileBytes(destination));
    EXPECT_TRUE(Holds(DN("cn=a.kra")));
}

}  // namespace
}  // namespace depot
