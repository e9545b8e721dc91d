#include "support/directory_transfer.h"

#include "directory_files/directory_world.h"
#include "store/folder_store.h"
#include "support/folder_link.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;
using test::OperationCounts;
using TransferTest = test::DirectoryWorldTest;

TEST_F(TransferTest, EmptyTextsAreParameterErrors) {
    const std::string dn = DN("cn=a.kra");
    CLDAPItems& directory = Directory();
    const auto refused = [&](int result) {
        EXPECT_THAT(result, Fails());
        ExpectFailure(LDAP_PARAM_ERROR);
        directory.SetLastError(0);
        error_ = "junk";
    };
    refused(Upload(directory, "", dn, ExistingEntries::kReplace, &error_));
    refused(Upload(directory, "x", "", ExistingEntries::kReplace, &error_));
    refused(Download(directory, "", "x", &error_));
    refused(Download(directory, dn, "", &error_));
    refused(CopyEntry(directory, "", directory, dn, ExistingEntries::kReplace, &error_));
    refused(CopyEntry(directory, dn, directory, "", ExistingEntries::kReplace, &error_));
    refused(MoveEntry(directory, "", dn, &error_));
    refused(MoveEntry(directory, dn, "", &error_));
    EXPECT_EQ("", server_.Log());
}

TEST_F(TransferTest, FileIsUploadedWithItsMissingFolders) {
    const std::string file = Make("a.kra", "bytes");
    EXPECT_THAT(Upload(Directory(), file, DN("cn=a.kra,cn=deep,cn=new"), ExistingEntries::kReplace,
                       &error_),
                IsDone());
    EXPECT_FALSE(Directory().IsConnected());
    EXPECT_EQ("bytes", Contents(DN("cn=a.kra,cn=deep,cn=new")));
    EXPECT_EQ("junk", error_);
}

TEST_F(TransferTest, FileWithoutADotIsNoFolderBelowItsMissingFolders) {
    const std::string file = Make("readme", "bytes");
    EXPECT_THAT(
        Upload(Directory(), file, DN("cn=readme,cn=new"), ExistingEntries::kReplace, &error_),
        IsDone());
    EXPECT_EQ("bytes", Contents(DN("cn=readme,cn=new")));
}

TEST_F(TransferTest, NewFileCostsOneBindAndOneAddition) {
    const std::string file = Make("a.kra", "bytes");
    Upload(Directory(), file, DN("cn=a.kra"), ExistingEntries::kReplace, &error_);
    EXPECT_EQ((OperationCounts{.binds = 1, .adds = 1}), Counts());
}

TEST_F(TransferTest, ExistingEntryIsReplacedOrRefused) {
    server_.AddFile("a.kra", base_, "old");
    const std::string file = Make("a.kra", "new");
    EXPECT_THAT(Upload(Directory(), file, DN("cn=a.kra"), ExistingEntries::kRefuse, &error_),
                Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_EQ("old", Contents(DN("cn=a.kra")));
    EXPECT_THAT(Upload(Directory(), file, DN("cn=a.kra"), ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ("new", Contents(DN("cn=a.kra")));
}

TEST_F(TransferTest, MissingLocalFileIsNotUploaded) {
    EXPECT_THAT(
        Upload(Directory(), At("none.kra"), DN("cn=a.kra"), ExistingEntries::kReplace, &error_),
        Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    EXPECT_FALSE(Holds(DN("cn=a.kra")));
}

TEST_F(TransferTest, TreeIsUploadedWithItsStructureOverOneBind) {
    const std::string tree = MakeTree();
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ(1, Counts().binds);
    EXPECT_EQ(4, Counts().adds);
    ExpectTree(DN("cn=tree"));
}

TEST_F(TransferTest, TreeThatWouldReplaceAFileIsRefusedBeforeAnythingIsStored) {
    const std::string tree = MakeTree();
    server_.AddFolder("tree", base_);
    server_.AddFolder("sub", DN("cn=tree"));
    server_.AddFile("b.kra", DN("cn=sub,cn=tree"), "old");
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kRefuse, &error_),
                Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_FALSE(Holds(DN("cn=a.kra,cn=tree")));
    EXPECT_EQ("old", Contents(DN("cn=b.kra,cn=sub,cn=tree")));
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kReplace, &error_),
                IsDone());
    ExpectTree(DN("cn=tree"));
}

TEST_F(TransferTest, WatcherSeesEachFileAndStopsBetweenTwo) {
    const std::string tree = MakeTree();
    std::vector<TransferProgress> seen;
    const auto watch = [&](bool goOn) {
        return [&seen, goOn](const TransferProgress& progress) {
            seen.push_back(progress);
            return goOn;
        };
    };
    EXPECT_THAT(
        Upload(Directory(), tree, DN("cn=one"), ExistingEntries::kReplace, &error_, watch(true)),
        IsDone());
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(2u, seen[1].filesDone);
    EXPECT_EQ(2u, seen[1].filesInAll);
    EXPECT_EQ(2u, seen[1].bytesDone);
    seen.clear();
    EXPECT_THAT(
        Upload(Directory(), tree, DN("cn=two"), ExistingEntries::kReplace, &error_, watch(false)),
        Fails());
    EXPECT_EQ(1u, seen.size());
    EXPECT_EQ("1", Contents(DN("cn=a.kra,cn=two")));
    EXPECT_FALSE(Holds(DN("cn=b.kra,cn=sub,cn=two")));
}

TEST_F(TransferTest, FileIsDownloadedOverOneBindAndOneSearch) {
    server_.AddFile("a.kra", base_, std::string("\0\xff", 2));
    server_.Mark();
    const std::string file = Make("a.kra", "much longer than that");
    EXPECT_THAT(Download(Directory(), DN("cn=a.kra"), file, &error_), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), Counts());
    EXPECT_EQ(std::string("\0\xff", 2), FileBytes(file));
}

TEST_F(TransferTest, MissingEntryIsNotDownloaded) {
    for (const char* name : {"cn=none.kra", "cn=none"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(Download(Directory(), DN(name), At("out"), &error_), Fails());
        ExpectFailure(LDAP_INVALID_DN_SYNTAX);
        EXPECT_FALSE(Exists(At("out")));
    }
}

TEST_F(TransferTest, DownloadToAnImpossiblePlaceFails) {
    server_.AddFile("a.kra", base_, "1");
    EXPECT_THAT(Download(Directory(), DN("cn=a.kra"), At("none\\a.kra"), &error_), Fails());
}

TEST_F(TransferTest, TreeIsDownloadedWithItsStructureOverOneBind) {
    const std::string tree = AddTree("tree");
    server_.Mark();
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_), IsDone());
    // One listing for each folder, one search for each file.
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 4}), Counts());
    EXPECT_EQ("1", FileBytes(At("out\\a.kra")));
    EXPECT_EQ("2", FileBytes(At("out\\sub\\b.kra")));
}

TEST_F(TransferTest, HostileNamesNeverLeaveTheTargetFolderAndAreAFailure) {
    const std::string tree = AddTree("tree");
    AddHostileEntries(tree);
    EXPECT_THAT(Download(Directory(), tree, At("deep\\out"), &error_), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NAMING_VIOLATION));
    EXPECT_EQ("1", FileBytes(At("deep\\out\\a.kra")));
    EXPECT_EQ("2", FileBytes(At("deep\\out\\sub\\b.kra")));
    EXPECT_EQ(UnsafeNamesText(3), error_);
    EXPECT_FALSE(Exists(At("x.kra")));
    EXPECT_FALSE(Exists(At("deep\\x.kra")));
}

TEST_F(TransferTest, HostileNamesOfATreeToBeMovedLetNothingBeFetched) {
    const std::string tree = AddTree("tree");
    AddHostileEntries(tree);
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_, {}, ExistingEntries::kReplace,
                         SourceFate::kGoes),
                Fails());
    EXPECT_FALSE(Exists(At("out")));
    EXPECT_EQ(UnsafeNamesText(3), error_);
}

TEST_F(TransferTest, EntriesThatWouldBecomeOneLocalFileLetNothingBeFetched) {
    const std::string tree = AddTree("tree");
    AddFilesOfOneLocalName("cn=sub," + tree);
    for (const SourceFate fate : {SourceFate::kStays, SourceFate::kGoes}) {
        error_ = "junk";
        EXPECT_THAT(
            Download(Directory(), tree, At("out"), &error_, {}, ExistingEntries::kReplace, fate),
            Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NAMING_VIOLATION));
        EXPECT_EQ(kSharedNamesText, error_);
        EXPECT_FALSE(Exists(At("out")));
    }
}

TEST_F(TransferTest, EntriesThatWouldBecomeOneLocalFileAreCopiedAndMovedNowhere) {
    const std::string tree = AddTree("tree");
    AddFilesOfOneLocalName(tree);
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), ExistingEntries::kReplace,
                          &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NAMING_VIOLATION));
    EXPECT_EQ(kSharedNamesText, error_);
    EXPECT_FALSE(Holds(DN("cn=copy")));
}

TEST_F(TransferTest, FileReplacesNoOtherOneOfItsTreeThroughALinkInTheTarget) {
    const std::string tree = AddTree("tree");
    server_.AddFile("a.kra", "cn=sub," + tree, "another");
    const std::string out = world_.folder.MakeFolder("out");
    const test::FolderLink link(out + "\\sub", out);
    EXPECT_THAT(Download(Directory(), tree, out, &error_), Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_EQ("1", FileBytes(out + "\\a.kra"));
}

TEST_F(TransferTest, TreeWithAFileThatCannotBeNamedIsUploadedWithoutItWhichIsAFailure) {
    const std::string tree = MakeTree();
    const std::wstring unnamed = WideFromAnsi(tree) + L"\\sub\\\x8868.kra";
    test::MakeWideFile(unnamed, "3");
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kReplace, &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NOT_SUPPORTED));
    EXPECT_EQ(UnsafeLocalNamesText(1), error_);
    ExpectTree(DN("cn=tree"));
    error_ = "junk";
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=moved"), ExistingEntries::kReplace, &error_, {},
                       SourceFate::kGoes),
                Fails());
    EXPECT_EQ(UnsafeLocalNamesText(1), error_);
    EXPECT_FALSE(Holds(DN("cn=moved")));
    EXPECT_EQ("3", test::WideBytes(unnamed));
}

TEST_F(TransferTest, EntriesThatCannotBeNamedAreReportedOfADownloadAndStay) {
    server_.AddFolder("tree", base_);
    server_.AddFile("a.kra", DN("cn=tree"), "1");
    server_.AddFile("\xE8\xA1\xA8.kra", DN("cn=tree"), "2");
    EXPECT_THAT(Download(Directory(), DN("cn=tree"), At("out"), &error_), Fails());
    EXPECT_EQ(UnsafeNamesText(1), error_);
    EXPECT_EQ("1", FileBytes(At("out\\a.kra")));
    EXPECT_THAT(Download(Directory(), DN("cn=tree"), At("moved"), &error_, {},
                         ExistingEntries::kReplace, SourceFate::kGoes),
                Fails());
    EXPECT_FALSE(Exists(At("moved\\a.kra")));
}

TEST_F(TransferTest, TreeWithALinkIsUploadedWithoutItWhichIsAFailure) {
    const std::string tree = MakeTree();
    world_.folder.MakeFolder("elsewhere");
    Make("elsewhere\\c.kra", "3");
    const test::FolderLink link(At("tree\\sub\\link"), At("elsewhere"));
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kReplace, &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NOT_SUPPORTED));
    EXPECT_EQ(LinksText(1), error_);
    ExpectTree(DN("cn=tree"));
    EXPECT_FALSE(Holds(DN("cn=link,cn=sub,cn=tree")));
    for (const std::string& source : {tree, At("tree\\sub\\link")}) {
        error_ = "junk";
        EXPECT_THAT(Upload(Directory(), source, DN("cn=moved"), ExistingEntries::kReplace, &error_,
                           {}, SourceFate::kGoes),
                    Fails());
        EXPECT_EQ(LinksText(1), error_);
        EXPECT_FALSE(Holds(DN("cn=moved")));
    }
    EXPECT_EQ("3", FileBytes(At("tree\\sub\\link\\c.kra")));
}

TEST_F(TransferTest, FolderOfACloudStorageIsUploadedWithItsTree) {
    const std::string tree = MakeTree();
    world_.folder.MakeFolder("elsewhere");
    Make("elsewhere\\c.kra", "3");
    const test::FolderLink cloud(At("tree\\cloud"), At("elsewhere"));
    const test::ShownReparseTag shown(0x9000001A);
    EXPECT_THAT(Upload(Directory(), tree, DN("cn=tree"), ExistingEntries::kReplace, &error_, {},
                       SourceFate::kGoes),
                IsDone());
    EXPECT_EQ("3", Contents(DN("cn=c.kra,cn=cloud,cn=tree")));
    EXPECT_EQ("junk", error_);
}

TEST_F(TransferTest, FileEntryIsCopiedToANewPlaceWithItsParents) {
    server_.AddFile("a.kra", base_, "1");
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=a.kra"), Directory(), DN("cn=b.kra,cn=new"),
                          ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ("1", Contents(DN("cn=b.kra,cn=new")));
    EXPECT_EQ("1", Contents(DN("cn=a.kra")));
}

TEST_F(TransferTest, CopyingAFileEntryIsOneBindOneSearchAndOneAddition) {
    server_.AddFile("a.kra", base_, "1");
    server_.Mark();
    CopyEntry(Directory(), DN("cn=a.kra"), Directory(), DN("cn=b.kra"), ExistingEntries::kReplace,
              &error_);
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1, .adds = 1}), Counts());
}

TEST_F(TransferTest, CopyingOntoAnExistingEntryReplacesItsContents) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", base_, "old");
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=a.kra"), Directory(), DN("cn=b.kra"),
                          ExistingEntries::kRefuse, &error_),
                Fails());
    EXPECT_EQ("old", Contents(DN("cn=b.kra")));
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=a.kra"), Directory(), DN("cn=b.kra"),
                          ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ("1", Contents(DN("cn=b.kra")));
}

TEST_F(TransferTest, CopyingAMissingEntryFails) {
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=none.kra"), Directory(), DN("cn=b.kra"),
                          ExistingEntries::kReplace, &error_),
                Fails());
    ExpectFailure(LDAP_PARAM_ERROR);
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=none"), Directory(), DN("cn=copy"),
                          ExistingEntries::kReplace, &error_),
                Fails());
    EXPECT_FALSE(Holds(DN("cn=copy")));
}

TEST_F(TransferTest, FolderEntryIsCopiedWithItsTree) {
    const std::string tree = AddTree("tree");
    server_.Mark();
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), ExistingEntries::kReplace,
                          &error_),
                IsDone());
    EXPECT_EQ(1, Counts().binds);
    ExpectTree(DN("cn=copy"));
    ExpectTree(tree);
}

TEST_F(TransferTest, FileEntryIsRenamedInPlace) {
    server_.AddFile("a.kra", base_, "1");
    server_.Mark();
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=a.kra"), DN("cn=b.kra"), &error_), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .renames = 1}), Counts());
    EXPECT_EQ("1", Contents(DN("cn=b.kra")));
    EXPECT_FALSE(Holds(DN("cn=a.kra")));
}

TEST_F(TransferTest, EmptyFolderIsRenamedInPlace) {
    server_.AddFolder("old", base_);
    server_.Mark();
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=old"), DN("cn=new"), &error_), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .renames = 1}), Counts());
    EXPECT_TRUE(Holds(DN("cn=new")));
    EXPECT_FALSE(Holds(DN("cn=old")));
}

TEST_F(TransferTest, FolderWithChildrenIsRenamedWithAllOfThem) {
    const std::string tree = AddTree("tree");
    server_.Mark();
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved,cn=below"), &error_), IsDone());
    EXPECT_EQ(1, Counts().binds);
    ExpectTree(DN("cn=moved,cn=below"));
    EXPECT_FALSE(Holds(tree));
}

TEST_F(TransferTest, RenamingAFolderOntoFilesOfItsNamesKeepsTheOldTree) {
    const std::string tree = AddTree("tree");
    server_.AddFolder("taken", base_);
    server_.AddFile("a.kra", DN("cn=taken"), "old");
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=taken"), &error_), Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_EQ("old", Contents(DN("cn=a.kra,cn=taken")));
    EXPECT_FALSE(Holds(DN("cn=sub,cn=taken")));
    ExpectTree(tree);
}

TEST_F(TransferTest, FolderWhoseNamesCannotAllBeCopiedKeepsItsTree) {
    const std::string tree = AddTree("tree");
    server_.AddFile("CON", tree, "x");
    test::RefuseTreeRenames(Directory());
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), Fails());
    ExpectTree(tree);
    EXPECT_FALSE(Holds(DN("cn=moved")));
}

// A server says so of an entry with others below it that this user may not see.
TEST_F(TransferTest, FileThatTheServerRefusesToRenameLikeATreeStays) {
    server_.AddFile("a.kra", base_, "bytes");
    server_.AddFolder("empty", base_);
    Directory().Client().ldap_rename_ext_s = [](LDAP*, const PCHAR, const PCHAR, const PCHAR, INT,
                                                PLDAPControlA*, PLDAPControlA*) -> ULONG {
        return LDAP_NOT_ALLOWED_ON_NONLEAF;
    };
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=a.kra"), DN("cn=b.kra"), &error_), Fails());
    ExpectFailure(LDAP_NOT_ALLOWED_ON_NONLEAF);
    EXPECT_EQ("bytes", Contents(DN("cn=a.kra")));
    EXPECT_FALSE(Holds(DN("cn=b.kra")));
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=empty"), DN("cn=other"), &error_), Fails());
    EXPECT_TRUE(Holds(DN("cn=empty")));
    EXPECT_FALSE(Holds(DN("cn=other")));
}

TEST_F(TransferTest, FolderThatTheServerRenamesKeepsEntriesOfEveryName) {
    const std::string tree = AddTree("tree");
    server_.AddFile("CON", tree, "x");
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), IsDone());
    ExpectTree(DN("cn=moved"));
    EXPECT_EQ("x", Contents(DN("cn=CON,cn=moved")));
}

TEST_F(TransferTest, FolderCannotMoveIntoItself) {
    const std::string tree = AddTree("tree");
    server_.Mark();
    EXPECT_THAT(MoveEntry(Directory(), tree, "cn=x,cn=sub," + tree, &error_), Fails());
    ExpectFailure(LDAP_PARAM_ERROR);
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), "cn=x," + tree, ExistingEntries::kReplace,
                          &error_),
                Fails());
    EXPECT_EQ("", server_.Log());
    ExpectTree(tree);
}

}  // namespace
}  // namespace depot
