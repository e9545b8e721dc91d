// What an entry is shows by its classes and what it holds, not by its name; and what cannot be seen
// whole does not go.
#include "support/directory_transfer.h"

#include "directory_files/directory_world.h"
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
using TransferTest = test::DirectoryWorldTest;

TEST_F(TransferTest, FilesWithoutADotAndFoldersWithOneKeepWhatTheyHoldInATree) {
    const std::string tree = AddTree("tree");
    AddUnusualNames(tree);
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_), IsDone());
    EXPECT_EQ("3", FileBytes(At("out\\README")));
    EXPECT_EQ("4", FileBytes(At("out\\v1.2\\c.kra")));
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), IsDone());
    ExpectTree(DN("cn=moved"));
    EXPECT_EQ("3", Contents(DN("cn=README,cn=moved")));
    EXPECT_EQ("4", Contents(DN("cn=c.kra,cn=v1.2,cn=moved")));
    EXPECT_FALSE(Holds(tree));
}

TEST_F(TransferTest, FileWithoutADotIsTransferredAsAFile) {
    AddUnusualNames(base_);
    server_.Mark();
    EXPECT_THAT(Download(Directory(), DN("cn=README"), At("README"), &error_), IsDone());
    EXPECT_EQ(1, Counts().binds);
    EXPECT_EQ("3", FileBytes(At("README")));
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=README"), Directory(), DN("cn=LICENSE"),
                          ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ("3", Contents(DN("cn=LICENSE")));
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=README"), DN("cn=NEWS"), &error_), IsDone());
    EXPECT_EQ("3", Contents(DN("cn=NEWS")));
}

TEST_F(TransferTest, FolderWithADotIsTransferredWithItsTree) {
    AddUnusualNames(base_);
    EXPECT_THAT(Download(Directory(), DN("cn=v1.2"), At("v1.2"), &error_), IsDone());
    EXPECT_EQ("4", FileBytes(At("v1.2\\c.kra")));
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=v1.2"), Directory(), DN("cn=v1.3"),
                          ExistingEntries::kReplace, &error_),
                IsDone());
    EXPECT_EQ("4", Contents(DN("cn=c.kra,cn=v1.3")));
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=v1.2"), DN("cn=v1.4,cn=new"), &error_), IsDone());
    EXPECT_EQ("4", Contents(DN("cn=c.kra,cn=v1.4,cn=new")));
    EXPECT_FALSE(Holds(DN("cn=v1.2")));
}

TEST_F(TransferTest, EmptyFolderStaysAFolderWhateverItsName) {
    for (const char* name : {"empty", "v2.0"}) {
        SCOPED_TRACE(name);
        server_.AddFolder(name, base_);
        EXPECT_THAT(Download(Directory(), DN(std::string("cn=") + name), At(name), &error_),
                    IsDone());
        EXPECT_TRUE(GetFileAttributesA(At(name).c_str()) & FILE_ATTRIBUTE_DIRECTORY);
    }
}

TEST_F(TransferTest, WhatCannotBeSeenToBeWholeDoesNotGo) {
    // A file with an entry below it, and an entry that is neither a file nor a folder.
    server_.AddFile("a.kra", base_, "1");
    server_.AddFile("b.kra", DN("cn=a.kra"), "2");
    server_.Apply("dn: " + DN("cn=bob") + "\nobjectClass: person\ncn: bob\nsn: bob\n");
    for (const auto& [name, code] :
         {std::pair("cn=a.kra", std::uint32_t{LDAP_NOT_ALLOWED_ON_NONLEAF}),
          std::pair("cn=bob", std::uint32_t{LDAP_OBJECT_CLASS_VIOLATION})}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(Download(Directory(), DN(name), At("out"), &error_, {},
                             ExistingEntries::kReplace, SourceFate::kGoes),
                    Fails());
        EXPECT_EQ(code, Directory().LastError());
        EXPECT_THAT(CopyEntry(Directory(), DN(name), Directory(), DN("cn=x"),
                              ExistingEntries::kReplace, &error_, {}, SourceFate::kGoes),
                    Fails());
        EXPECT_FALSE(Exists(At("out")));
    }
    EXPECT_THAT(Download(Directory(), DN("cn=a.kra"), At("out"), &error_), IsDone());
}

TEST_F(TransferTest, FileWithoutADotThatHoldsEntriesDoesNotGo) {
    server_.AddFolder("tree", base_);
    server_.AddFile("README", DN("cn=tree"), "1");
    server_.AddFile("b.kra", DN("cn=README,cn=tree"), "2");
    for (const char* name : {"cn=tree", "cn=README,cn=tree"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(Download(Directory(), DN(name), At("out"), &error_, {},
                             ExistingEntries::kReplace, SourceFate::kGoes),
                    Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NOT_ALLOWED_ON_NONLEAF));
    }
    test::RefuseTreeRenames(Directory());
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=README,cn=tree"), DN("cn=moved"), &error_), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NOT_ALLOWED_ON_NONLEAF));
    EXPECT_TRUE(server_.Holds(DN("cn=b.kra,cn=README,cn=tree")));
}

TEST_F(TransferTest, AnotherSpellingOfItsOwnNameIsTheEntryItself) {
    server_.AddFolder("A B", base_);
    server_.AddFolder("sub", DN("cn=A B"));
    server_.AddFile("a b.kra", base_, "1");
    MoveEntry(Directory(), DN("cn=A  B"), DN("cn=A B"), &error_);
    MoveEntry(Directory(), DN("cn=A  B"), DN("cn=C,cn=A B"), &error_);
    EXPECT_TRUE(server_.Holds(DN("cn=sub,cn=A B")));
    CopyEntry(Directory(), DN("cn=a  b.kra"), Directory(), DN("cn=a b.kra"),
              ExistingEntries::kReplace, &error_, {}, SourceFate::kGoes);
    EXPECT_TRUE(server_.Holds(DN("cn=a b.kra")));
}

TEST_F(TransferTest, FileWhoseBytesCannotBeSeenIsNeitherCopiedNorMoved) {
    server_.AddFile("a.kra", base_, "1");
    server_.AddFolder("tree", base_);
    server_.AddFile("b.kra", DN("cn=tree"), "2");
    work_->paths->At(0)->fileContentsAttributeName = "description";
    for (const char* name : {"cn=a.kra", "cn=tree"}) {
        SCOPED_TRACE(name);
        for (const SourceFate fate : {SourceFate::kGoes, SourceFate::kStays}) {
            EXPECT_THAT(Download(Directory(), DN(name), At("out"), &error_, {},
                                 ExistingEntries::kReplace, fate),
                        Fails());
            ExpectUnseen();
        }
    }
    EXPECT_FALSE(test::Exists(At("out\\b.kra")));
}

TEST_F(TransferTest, EntriesAreFoundAndRemovedWithWhatIsBelow) {
    const std::string tree = AddTree("tree");
    EXPECT_EQ(kYes, EntryExists(Directory(), tree, nullptr));
    EXPECT_THAT(RemoveEntry(Directory(), tree, nullptr), IsDone());
    EXPECT_EQ(kNo, EntryExists(Directory(), tree, &error_));
    EXPECT_THAT(RemoveEntry(Directory(), tree, nullptr), Fails());
}

TEST_F(TransferTest, ReaderStoresNothing) {
    work_->paths->At(0)->username = test::kReader;
    work_->paths->At(0)->password = test::kReaderPassword;
    const std::string file = Make("a.kra", "1");
    EXPECT_THAT(Upload(Directory(), file, DN("cn=a.kra"), ExistingEntries::kReplace, &error_),
                Fails());
    EXPECT_NE("junk", error_);
    EXPECT_FALSE(Holds(DN("cn=a.kra")));
}

}  // namespace
}  // namespace depot
