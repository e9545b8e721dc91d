#include "manager/writability.h"

#include "directory_depots/depot_fixture.h"
#include "platform/handles.h"
#include "support/import_patch.h"

namespace depot {
namespace {

using test::OperationCounts;
using testing::IsEmpty;

class DirectoryWritabilityTest : public test::DepotFixture {
protected:
    int Test(const std::string& path) {
        text_ = "junk";
        return TestPathWritable(*work_, "<Work>\\" + path, &text_);
    }

    std::string text_;
};

TEST_F(DirectoryWritabilityTest, ExistingEntryIsWritableAndStays) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(1, Test("a.kra"));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    EXPECT_EQ("x", Contents("a.kra"));
    EXPECT_FALSE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, MissingPlaceIsCreatedAndRemovedWithItsParents) {
    Choose();
    EXPECT_EQ(1, Test("x\\y\\z.kra"));
    const OperationCounts counts = server_.Counts();
    EXPECT_EQ(2, counts.adds);
    EXPECT_EQ(2, counts.deletions);
    EXPECT_EQ(1, counts.binds);
    EXPECT_FALSE(server_.Holds(Dn("x")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DirectoryWritabilityTest, OpenConnectionIsUsedAndStaysOpen) {
    Choose();
    ASSERT_EQ(1, Directory().ConnectLocation(nullptr));
    server_.Mark();
    EXPECT_EQ(1, Test("x"));
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_TRUE(Directory().IsConnected());
}

TEST_F(DirectoryWritabilityTest, ExistingParentsStay) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(1, Test("x\\y\\z.kra"));
    EXPECT_TRUE(server_.Holds(Dn("x")));
    EXPECT_FALSE(server_.Holds("cn=y," + Dn("x")));
}

TEST_F(DirectoryWritabilityTest, PlaceThatCannotBeCreatedIsNotWritable) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\y.kra"));
    EXPECT_FALSE(server_.Holds(Dn("x")));
    EXPECT_NE("junk", text_);
}

ULONG LDAPAPI FindNothing(LDAP*, const PCHAR, ULONG, const PCHAR, PCHAR[], ULONG, LDAPMessage**) {
    return LDAP_NO_SUCH_OBJECT;
}

TEST_F(DirectoryWritabilityTest, EntryThatCannotBeSeenStays) {
    server_.AddFolder("seen", base_);
    Choose();
    Directory().Client().ldap_search_s = &FindNothing;
    EXPECT_EQ(0, Test("seen"));
    EXPECT_EQ(0, Test("seen\\below"));
    EXPECT_TRUE(server_.Holds(Dn("seen")));
    EXPECT_EQ(0, server_.Counts().deletions);
}

TEST_F(DirectoryWritabilityTest, FailedCreationKeepsItsLastError) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\y.kra"));
    EXPECT_EQ(std::uint32_t{LDAP_PARAM_ERROR}, Directory().LastError());
}

TEST_F(DirectoryWritabilityTest, InvalidNameIsToldAndNotWritable) {
    Choose();
    EXPECT_EQ(0, TestWritable(kDirectoryLocation, "not a name", &Directory(), &text_));
    EXPECT_EQ(test::MessageFor(34), text_);
}

TEST_F(DirectoryWritabilityTest, CachedRefusalIsAccessDenied) {
    Define(server_.Port(), "cn=missing," + base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, TestDepotWritable(*work_, "Shown", &text_));
    server_.Mark();
    EXPECT_EQ(0, TestDepotWritable(*work_, "Shown", &text_));
    EXPECT_EQ("", server_.Log());
    std::string denied;
    FormatErrorText(ERROR_ACCESS_DENIED, "Shown", "Quillon", &denied, nullptr);
    EXPECT_EQ(denied, text_);
}

TEST_F(DirectoryWritabilityTest, NewFileInAnExistingFolderIsTriedAndRemoved) {
    server_.AddFolder("x", base_);
    Choose();
    EXPECT_EQ(1, Test("x\\new.kra"));
    EXPECT_EQ(1, server_.Counts().adds);
    EXPECT_EQ(1, server_.Counts().deletions);
    EXPECT_FALSE(server_.Holds("cn=new.kra," + Dn("x")));
    EXPECT_TRUE(server_.Holds(Dn("x")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DirectoryWritabilityTest, NewFileInAnExistingFolderIsNotForReaders) {
    server_.AddFolder("x", base_);
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    Choose();
    EXPECT_EQ(0, Test("x\\new.kra"));
    EXPECT_EQ(test::MessageFor(50), text_);
}

TEST_F(DirectoryWritabilityTest, UnreachableServerIsNotWritable) {
    Choose();
    server_.Stop();
    EXPECT_EQ(0, Test("a.kra"));
    server_.Continue();
    // After the failed bind nobody answered the question for other credentials.
    EXPECT_EQ(test::MessageFor(88), text_);
}

TEST_F(DirectoryWritabilityTest, PathWithoutAConnectionIsNotWritable) {
    EXPECT_EQ(0, TestWritable(kDirectoryLocation, base_, nullptr, nullptr));
}

TEST_F(DirectoryWritabilityTest, ExactFormAsksEachTime) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    EXPECT_EQ(1, Test("a.kra"));
    server_.Mark();
    EXPECT_EQ(1, Test("a.kra"));
    EXPECT_EQ(1, server_.Counts().searches);
}

TEST_F(DirectoryWritabilityTest, CachedFormAsksOnce) {
    Choose();
    EXPECT_EQ(1, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    server_.Mark();
    EXPECT_EQ(1, TestDepotWritable(*work_, {}, &text_));
    EXPECT_EQ("", server_.Log());
}

class FolderWritabilityTest : public testing::Test {
protected:
    int Test(const std::string& path, const std::string& shown = {}) {
        text_ = "junk";
        return TestWritable(kFolderLocation, path, nullptr, &text_, shown);
    }

    static std::string TextOf(DWORD error, const std::string& lead) {
        std::string text;
        FormatErrorText(error, lead.c_str(), "Quillon", &text, nullptr);
        return text;
    }

    test::ScratchFolder folder_;
    std::string text_;
};

TEST_F(FolderWritabilityTest, FolderIsTestedByAProbeFileThatGoesAgain) {
    EXPECT_EQ(1, Test(folder_.Path()));
    EXPECT_THAT(test::FilesIn(folder_.Path(), "*"), IsEmpty());
    EXPECT_EQ("junk", text_);
}

TEST_F(FolderWritabilityTest, ProbeFileIsWhatTheFolderIsTestedBy) {
    const std::string probe = folder_.MakeFile("____Test____Writable____File___.twr", "mine");
    {
        const UniqueHandle lock(CreateFileA(probe.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_EQ(0, Test(folder_.Path()));
        EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, folder_.Path()), text_);
    }
    EXPECT_EQ(1, Test(folder_.Path()));
    EXPECT_EQ("mine", test::FileBytes(probe));
}

TEST_F(FolderWritabilityTest, MissingFileIsCreatedAndDeletedAgain) {
    EXPECT_EQ(1, Test(folder_.At("new.kra")));
    EXPECT_FALSE(test::Exists(folder_.At("new.kra")));
}

TEST_F(FolderWritabilityTest, ExistingFileKeepsItsBytes) {
    const std::string path = folder_.MakeFile("a.kra", "bytes");
    EXPECT_EQ(1, Test(path));
    EXPECT_EQ("bytes", test::FileBytes(path));
}

TEST_F(FolderWritabilityTest, MissingParentFailsWithItsText) {
    EXPECT_EQ(0, Test(folder_.At("none\\a.kra")));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, folder_.At("none\\a.kra")), text_);
    EXPECT_EQ(0, Test(folder_.At("none\\a.kra"), "Shown"));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, "Shown"), text_);
}

TEST_F(FolderWritabilityTest, FileHeldWithoutSharingFailsWithItsText) {
    const std::string path = folder_.MakeFile("a.kra", "x");
    const UniqueHandle lock(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(0, Test(path));
    EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, path), text_);
}

TEST_F(FolderWritabilityTest, FileThatAnyoneElseReadsIsNotWritable) {
    const std::string path = folder_.MakeFile("a.kra", "x");
    const UniqueHandle reader(CreateFileA(path.c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(reader);
    EXPECT_EQ(0, Test(path));
    EXPECT_EQ(TextOf(ERROR_SHARING_VIOLATION, path), text_);
}

using OpenFile = decltype(&CreateFileA);

// How a file was last asked for, and with which error it could not be had.
struct AskedFile {
    std::string path;
    DWORD access;
    DWORD sharing;
    SECURITY_ATTRIBUTES* security;
    DWORD creation;
    DWORD attributes;
    HANDLE model;
};
AskedFile askedFile;
DWORD refusal = 0;

HANDLE WINAPI RefuseFile(const char* path, DWORD access, DWORD sharing,
                         SECURITY_ATTRIBUTES* security, DWORD creation, DWORD attributes,
                         HANDLE model) {
    askedFile = {path, access, sharing, security, creation, attributes, model};
    SetLastError(refusal);
    return INVALID_HANDLE_VALUE;
}

TEST_F(FolderWritabilityTest, EveryRefusalMeansNotWritable) {
    const test::ImportPatch<OpenFile> opening("CreateFileA", &RefuseFile);
    ASSERT_TRUE(opening.IsInPlace());
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_FILE_EXISTS, ERROR_ALREADY_EXISTS,
                              ERROR_DISK_FULL, ERROR_WRITE_PROTECT}) {
        SCOPED_TRACE(error);
        refusal = error;
        EXPECT_EQ(0, Test(folder_.Path() + "\\"));
        EXPECT_EQ(TextOf(error, folder_.Path() + "\\"), text_);
    }
    EXPECT_EQ(folder_.At("____Test____Writable____File___.twr"), askedFile.path);
    EXPECT_EQ(DWORD{GENERIC_WRITE}, askedFile.access);
    EXPECT_EQ(0u, askedFile.sharing);
    EXPECT_EQ(nullptr, askedFile.security);
    EXPECT_EQ(DWORD{OPEN_ALWAYS}, askedFile.creation);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, askedFile.attributes);
    EXPECT_EQ(nullptr, askedFile.model);
}

TEST_F(FolderWritabilityTest, LaterFailuresOfTheCachedFormAreAccessDenied) {
    static constexpr char kKey[] = "Software\\DepotTests\\Writability";
    const test::ScratchKey key(HKEY_CURRENT_USER, kKey);
    const std::string root = folder_.At("none\\later");
    key.Text("Work", "Path1", root);
    const CDepots depots(kKey);
    CDepot& depot = *depots.At(0);
    EXPECT_EQ(0, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ(TextOf(ERROR_PATH_NOT_FOUND, root), text_);
    folder_.MakeFolder("none\\later");
    EXPECT_EQ(0, TestDepotWritable(depot, {}, &text_));
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, root), text_);
    EXPECT_EQ(0, TestDepotWritable(depot, "Shown", &text_));
    EXPECT_EQ(TextOf(ERROR_ACCESS_DENIED, "Shown"), text_);
    EXPECT_EQ(1, TestPathWritable(depot, "<Work>\\", nullptr));
}

TEST_F(FolderWritabilityTest, CachedWritableHoldsWhenTheFolderGoes) {
    static constexpr char kKey[] = "Software\\DepotTests\\Writability";
    const test::ScratchKey key(HKEY_CURRENT_USER, kKey);
    const std::string root = folder_.MakeFolder("root");
    key.Text("Work", "Path1", root);
    const CDepots depots(kKey);
    EXPECT_EQ(1, TestDepotWritable(*depots.At(0), {}, nullptr));
    ASSERT_TRUE(RemoveDirectoryA(root.c_str()));
    EXPECT_EQ(1, TestDepotWritable(*depots.At(0), {}, nullptr));
}

}  // namespace
}  // namespace depot
