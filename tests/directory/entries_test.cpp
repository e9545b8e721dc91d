#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using EntriesTest = test::DirectoryFixture;
using test::Fails;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(EntriesTest, AddedFoldersHaveTheirNameAndTheirClass) {
    server_.Mark();
    EXPECT_THAT(Connected().AddFolderEntry("CN=sub," + base_, "sub", &text_), IsDone());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SUCCESS));
    EXPECT_EQ("junk", text_);
    EXPECT_EQ("dn: " + Dn("sub") + "\ncn: sub\nobjectClass: quillonFolder\n\n",
              server_.Show(Dn("sub")));
}

TEST_F(EntriesTest, AddingAnExistingFolderChangesNothing) {
    server_.Apply("dn: " + Dn("sub") + "\nobjectClass: quillonFolder\ncn: sub\ndescription: old\n");
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().AddFolderEntry(Dn("sub"), "sub", &text_), IsDone());
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
    EXPECT_THAT(server_.Show(Dn("sub")), HasSubstr("description: old"));
}

TEST_F(EntriesTest, AddingAFolderOfAnInvalidNameFailsWithoutAnAdd) {
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().AddFolderEntry("not a name", "x", &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_EQ(MessageFor(LDAP_INVALID_DN_SYNTAX), text_);
    EXPECT_EQ(0, server_.Counts().adds);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(EntriesTest, AddingAFolderBelowAMissingOneFails) {
    EXPECT_THAT(Connected().AddFolderEntry("CN=a,CN=missing," + base_, "a", &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(MessageFor(LDAP_NO_SUCH_OBJECT), text_);
}

TEST_F(EntriesTest, AddedFilesHoldTheirBytes) {
    const std::string bytes("\0\xFF line\r\n\0", 10);
    EXPECT_THAT(Connected().AddFileEntry("CN=a.krc," + base_, "a.krc", bytes.data(), 10), IsDone());
    EXPECT_EQ(bytes, Contents(Dn("a.krc")));
    const std::string entry = server_.Show(Dn("a.krc"));
    EXPECT_THAT(entry, HasSubstr("objectClass: quillonFileBinary\n"));
    EXPECT_THAT(entry, HasSubstr("cn: a.krc\n"));
}

TEST_F(EntriesTest, ZeroLengthFileIsReadBackAsOneBlank) {
    EXPECT_THAT(Connected().AddFileEntry(Dn("a.krc"), "a.krc", nullptr, 0), IsDone());
    EXPECT_EQ(" ", Contents(Dn("a.krc")));
    EXPECT_THAT(Connected().ReplaceFileContents(Dn("a.krc"), "text", 4), IsDone());
    EXPECT_EQ("text", Contents(Dn("a.krc")));
    EXPECT_THAT(Connected().ReplaceFileContents(Dn("a.krc"), "text", 0), IsDone());
    EXPECT_EQ(" ", Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, LargeContentsComeBackWhole) {
    std::string bytes(5 * 1024 * 1024 + 1, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at) bytes[at] = static_cast<char>(at * 31 >> 3);
    const auto length = static_cast<std::uint32_t>(bytes.size());
    EXPECT_THAT(Connected().AddFileEntry(Dn("a.krc"), "a.krc", bytes.data(), length), IsDone());
    EXPECT_TRUE(bytes == Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, AddingAFileTwiceGivesTheDirectorysCode) {
    EXPECT_THAT(Connected().AddFileEntry(Dn("a.krc"), "a.krc", "x", 1), IsDone());
    EXPECT_THAT(Connected().AddFileEntry(Dn("a.krc"), "a.krc", "y", 1), Fails(LDAP_ALREADY_EXISTS));
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_ALREADY_EXISTS));
    EXPECT_EQ("x", Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, ReplacingAMissingFileGivesTheDirectorysCode) {
    EXPECT_THAT(Connected().ReplaceFileContents(Dn("a.krc"), "x", 1), Fails(LDAP_NO_SUCH_OBJECT));
}

TEST_F(EntriesTest, WritingContentsIsOneOperation) {
    Connected();
    server_.Mark();
    Connected().AddFileEntry(Dn("a.krc"), "a.krc", "x", 1);
    Connected().ReplaceFileContents(Dn("a.krc"), "y", 1);
    EXPECT_EQ((test::OperationCounts{.adds = 1, .modifications = 1}), server_.Counts());
}

TEST_F(EntriesTest, FilesOfTheirOwnNamesAreWrittenWithThem) {
    CDepotPath location = server_.Location(base_);
    location.fileObjectClass = "person";
    location.fileContentsAttributeName = "sn";
    CLDAPItems items(&location);
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(items.AddFileEntry(Dn("a"), "a", "bytes", 5), IsDone());
    EXPECT_THAT(server_.Show(Dn("a")), HasSubstr("sn: bytes\n"));
    EXPECT_THAT(server_.Show(Dn("a")), HasSubstr("objectClass: person\n"));
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents(Dn("a"), buffer), IsDone());
    EXPECT_EQ(5u, buffer.length);
}

TEST_F(EntriesTest, FoldersOfTheirOwnNamesAreWrittenWithThem) {
    CDepotPath location = server_.Location(base_);
    location.folderObjectClass = "organizationalUnit";
    location.folderAttributeName = "ou";
    CLDAPItems items(&location);
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    const std::string top = "ou=top," + base_, sub = "ou=sub," + top;
    EXPECT_THAT(items.EnsureFolderPath("CN=a.krc," + sub, false, &text_), IsDone());
    EXPECT_THAT(server_.Show(top), HasSubstr("ou: top\n"));
    EXPECT_THAT(server_.Show(sub), HasSubstr("objectClass: organizationalUnit\n"));
    EXPECT_THAT(items.AddFolderEntry("ou=other," + base_, "other", &text_), IsDone());
    EXPECT_TRUE(server_.Holds("ou=other," + base_));
    EXPECT_EQ(sub, items.PathToDN(base_ + "\\top\\sub"));
}

TEST_F(EntriesTest, RenamingKeepsTheContentsAndDropsTheOldName) {
    server_.AddFile("a.krc", base_, "bytes");
    EXPECT_THAT(Connected().RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_), IsDone());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SUCCESS));
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
    EXPECT_EQ("bytes", Contents(Dn("b.krc")));
    EXPECT_THAT(server_.Show(Dn("b.krc")), testing::Not(HasSubstr("cn: a.krc")));
}

TEST_F(EntriesTest, RenamingToANewParentMovesTheEntry) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "bytes");
    EXPECT_THAT(Connected().RenameEntry(Dn("a.krc"), "CN=b.krc," + Dn("sub"), &text_), IsDone());
    EXPECT_EQ("bytes", Contents("cn=b.krc," + Dn("sub")));
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
}

TEST_F(EntriesTest, RenamingFailuresKeepTheEntryAndReportTheReason) {
    server_.AddFile("a.krc", base_, "a");
    server_.AddFile("b.krc", base_, "b");
    EXPECT_THAT(Connected().RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_ALREADY_EXISTS));
    EXPECT_EQ(MessageFor(LDAP_ALREADY_EXISTS), text_);
    EXPECT_THAT(Connected().RenameEntry(Dn("a.krc"), "CN=a.krc," + Dn("missing"), &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_THAT(Connected().RenameEntry(Dn("a.krc"), "not a name", &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_INVALID_DN_SYNTAX));
    EXPECT_THAT(Connected().RenameEntry(Dn("missing.krc"), Dn("c.krc"), nullptr), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ("a", Contents(Dn("a.krc")));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(EntriesTest, ReaderMayNotWriteAndTheReasonIsReported) {
    server_.AddFile("a.krc", base_, "x");
    CDepotPath location = server_.Location(base_);
    location.username = test::kReader;
    location.password = test::kReaderPassword;
    CLDAPItems items(&location);
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(items.AddFileEntry(Dn("b.krc"), "b.krc", "x", 1), Fails(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_THAT(items.ReplaceFileContents(Dn("a.krc"), "y", 1), Fails(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_THAT(items.AddFolderEntry(Dn("sub"), "sub", &text_), Fails());
    EXPECT_EQ(MessageFor(LDAP_INSUFFICIENT_RIGHTS), text_);
    EXPECT_THAT(items.DeleteTree(Dn("a.krc"), &text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_THAT(items.RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_EQ("x", Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, PathsAreMappedWithTheLocationsNames) {
    EXPECT_EQ("CN=a.krc,CN=sub," + base_, Connected().PathToDN(base_ + "\\sub\\a.krc"));
    location_->folderAttributeName = "ou";
    location_->fileAttributeName = "uid";
    EXPECT_EQ("uid=a.krc,ou=sub," + base_, Connected().PathToDN(base_ + "\\sub\\a.krc"));
}

TEST_F(EntriesTest, SplittingReportsTheNameAndTheKind) {
    std::string name = "junk";
    bool isFolder = true;
    EXPECT_THAT(
        Connected().SplitEntryName("CN=report.krc," + base_, name, isFolder, FileExtension::kStrip),
        IsDone());
    EXPECT_EQ("report", name);
    EXPECT_FALSE(isFolder);
    EXPECT_THAT(Connected().SplitEntryName(test::kSuffix, name, isFolder), Fails());
    EXPECT_EQ("", name);
    EXPECT_THAT(Connected().SplitEntryName("not a name", name, isFolder), Fails());
}

TEST_F(EntriesTest, WithoutAConnectionEveryOperationFailsAsServerDown) {
    CDepotPath location = server_.Location(base_);
    CLDAPItems items(&location);
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(base_, children), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(items.AddFileEntry(Dn("a.krc"), "a.krc", "x", 1), Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(items.ReplaceFileContents(Dn("a.krc"), "x", 1), Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(items.AddFolderEntry(Dn("sub"), "sub", &text_), Fails());
    EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), text_);
    EXPECT_THAT(items.RenameEntry(Dn("a"), Dn("b"), nullptr), Fails());
    EXPECT_THAT(items.DeleteTree(Dn("a"), nullptr), Fails());
    EXPECT_THAT(CodeOf(items.Entries().Find(base_)), Fails(LDAP_SERVER_DOWN));
}

TEST_F(EntriesTest, MissingEntryPointMakesItsOperationFailAsServerDown) {
    DirectoryClient genuine;
    BindDirectoryClient(genuine);
    const auto without = [&](auto member) -> CLDAPItems& {
        CLDAPItems& items = Connected();
        items.Client() = genuine;
        items.Client().*member = DirectoryClient().*member;
        items.SetLastError(0);
        return items;
    };
    LdapItemList children;
    EXPECT_THAT(without(&DirectoryClient::ldap_first_entry).ListChildren(base_, children), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_get_values_len).ListChildren(base_, children),
                Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_search_s).ListChildren(base_, children), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_add_s).AddFileEntry(Dn("a"), "a", "", 0),
                Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_modify_s).ReplaceFileContents(Dn("a"), "", 0),
                Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_delete_s).DeleteTree(Dn("a"), nullptr), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_explode_dn).RenameEntry(Dn("a"), Dn("b"), nullptr),
                Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_rename_ext_s).RenameEntry(Dn("a"), Dn("b"), nullptr),
                Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    FileBuffer buffer;
    EXPECT_THAT(without(&DirectoryClient::ldap_get_dn).ReadFileContents(base_, buffer), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(without(&DirectoryClient::ldap_explode_dn).EnsureFolderPath(base_, false, nullptr),
                Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SERVER_DOWN));
    Connected().Client() = genuine;
}

}  // namespace
}  // namespace depot
