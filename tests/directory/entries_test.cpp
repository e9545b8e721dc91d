#include "directory/entries_fixture.h"

namespace depot {
namespace {

using test::EntriesTest;
using test::MessageFor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(EntriesTest, AddedFoldersHaveTheirNameAndTheirClass) {
    server_.Mark();
    EXPECT_EQ(1, Connected().AddFolderEntry("CN=sub," + base_, "sub", &text_));
    EXPECT_EQ(0u, Connected().LastError());
    EXPECT_EQ("junk", text_);
    EXPECT_EQ("dn: " + Dn("sub") + "\ncn: sub\nobjectClass: quillonFolder\n\n",
              server_.Show(Dn("sub")));
}

TEST_F(EntriesTest, AddingAnExistingFolderChangesNothing) {
    server_.Apply("dn: " + Dn("sub") + "\nobjectClass: quillonFolder\ncn: sub\ndescription: old\n");
    Connected();
    server_.Mark();
    EXPECT_EQ(1, Connected().AddFolderEntry(Dn("sub"), "sub", &text_));
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
    EXPECT_THAT(server_.Show(Dn("sub")), HasSubstr("description: old"));
}

TEST_F(EntriesTest, AddingAFolderOfAnInvalidNameFailsWithoutAnAdd) {
    Connected();
    server_.Mark();
    EXPECT_EQ(0, Connected().AddFolderEntry("not a name", "x", &text_));
    EXPECT_EQ(34u, Connected().LastError());
    EXPECT_EQ(MessageFor(34), text_);
    EXPECT_EQ(0, server_.Counts().adds);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(EntriesTest, AddingAFolderBelowAMissingOneFails) {
    EXPECT_EQ(0, Connected().AddFolderEntry("CN=a,CN=missing," + base_, "a", &text_));
    EXPECT_EQ(32u, Connected().LastError());
    EXPECT_EQ(MessageFor(32), text_);
}

TEST_F(EntriesTest, AddedFilesHoldTheirBytes) {
    const std::string bytes("\0\xFF line\r\n\0", 10);
    EXPECT_EQ(0u, Connected().AddFileEntry("CN=a.krc," + base_, "a.krc", bytes.data(), 10));
    EXPECT_EQ(bytes, Contents(Dn("a.krc")));
    const std::string entry = server_.Show(Dn("a.krc"));
    EXPECT_THAT(entry, HasSubstr("objectClass: quillonFileBinary\n"));
    EXPECT_THAT(entry, HasSubstr("cn: a.krc\n"));
}

TEST_F(EntriesTest, ZeroLengthFileIsReadBackAsOneBlank) {
    EXPECT_EQ(0u, Connected().AddFileEntry(Dn("a.krc"), "a.krc", nullptr, 0));
    EXPECT_EQ(" ", Contents(Dn("a.krc")));
    EXPECT_EQ(0u, Connected().ReplaceFileContents(Dn("a.krc"), "text", 4));
    EXPECT_EQ("text", Contents(Dn("a.krc")));
    EXPECT_EQ(0u, Connected().ReplaceFileContents(Dn("a.krc"), "text", 0));
    EXPECT_EQ(" ", Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, LargeContentsComeBackWhole) {
    std::string bytes(5 * 1024 * 1024 + 1, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at) bytes[at] = static_cast<char>(at * 31 >> 3);
    const auto length = static_cast<std::uint32_t>(bytes.size());
    EXPECT_EQ(0u, Connected().AddFileEntry(Dn("a.krc"), "a.krc", bytes.data(), length));
    EXPECT_TRUE(bytes == Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, AddingAFileTwiceGivesTheDirectorysCode) {
    EXPECT_EQ(0u, Connected().AddFileEntry(Dn("a.krc"), "a.krc", "x", 1));
    EXPECT_EQ(68u, Connected().AddFileEntry(Dn("a.krc"), "a.krc", "y", 1));
    EXPECT_EQ(68u, Connected().LastError());
    EXPECT_EQ("x", Contents(Dn("a.krc")));
}

TEST_F(EntriesTest, ReplacingAMissingFileGivesTheDirectorysCode) {
    EXPECT_EQ(32u, Connected().ReplaceFileContents(Dn("a.krc"), "x", 1));
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
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    EXPECT_EQ(0u, items.AddFileEntry(Dn("a"), "a", "bytes", 5));
    EXPECT_THAT(server_.Show(Dn("a")), HasSubstr("sn: bytes\n"));
    EXPECT_THAT(server_.Show(Dn("a")), HasSubstr("objectClass: person\n"));
    FileBuffer buffer;
    EXPECT_EQ(1, items.ReadFileContents(Dn("a"), buffer));
    EXPECT_EQ(5u, buffer.length);
}

TEST_F(EntriesTest, FoldersOfTheirOwnNamesAreWrittenWithThem) {
    CDepotPath location = server_.Location(base_);
    location.folderObjectClass = "organizationalUnit";
    location.folderAttributeName = "ou";
    CLDAPItems items(&location);
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    const std::string top = "ou=top," + base_, sub = "ou=sub," + top;
    EXPECT_EQ(1, items.EnsureFolderPath("CN=a.krc," + sub, false, &text_));
    EXPECT_THAT(server_.Show(top), HasSubstr("ou: top\n"));
    EXPECT_THAT(server_.Show(sub), HasSubstr("objectClass: organizationalUnit\n"));
    EXPECT_EQ(1, items.AddFolderEntry("ou=other," + base_, "other", &text_));
    EXPECT_TRUE(server_.Holds("ou=other," + base_));
    EXPECT_EQ(sub, items.PathToDN(base_ + "\\top\\sub"));
}

TEST_F(EntriesTest, RenamingKeepsTheContentsAndDropsTheOldName) {
    server_.AddFile("a.krc", base_, "bytes");
    EXPECT_EQ(1, Connected().RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_));
    EXPECT_EQ(0u, Connected().LastError());
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
    EXPECT_EQ("bytes", Contents(Dn("b.krc")));
    EXPECT_THAT(server_.Show(Dn("b.krc")), testing::Not(HasSubstr("cn: a.krc")));
}

TEST_F(EntriesTest, RenamingToANewParentMovesTheEntry) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "bytes");
    EXPECT_EQ(1, Connected().RenameEntry(Dn("a.krc"), "CN=b.krc," + Dn("sub"), &text_));
    EXPECT_EQ("bytes", Contents("cn=b.krc," + Dn("sub")));
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
}

TEST_F(EntriesTest, RenamingFailuresKeepTheEntryAndReportTheReason) {
    server_.AddFile("a.krc", base_, "a");
    server_.AddFile("b.krc", base_, "b");
    EXPECT_EQ(0, Connected().RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_));
    EXPECT_EQ(68u, Connected().LastError());
    EXPECT_EQ(MessageFor(68), text_);
    EXPECT_EQ(0, Connected().RenameEntry(Dn("a.krc"), "CN=a.krc," + Dn("missing"), &text_));
    EXPECT_EQ(32u, Connected().LastError());
    EXPECT_EQ(0, Connected().RenameEntry(Dn("a.krc"), "not a name", &text_));
    EXPECT_EQ(34u, Connected().LastError());
    EXPECT_EQ(0, Connected().RenameEntry(Dn("missing.krc"), Dn("c.krc"), nullptr));
    EXPECT_EQ(32u, Connected().LastError());
    EXPECT_EQ("a", Contents(Dn("a.krc")));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(EntriesTest, ReaderMayNotWriteAndTheReasonIsReported) {
    server_.AddFile("a.krc", base_, "x");
    CDepotPath location = server_.Location(base_);
    location.username = test::kReader;
    location.password = test::kReaderPassword;
    CLDAPItems items(&location);
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    EXPECT_EQ(50u, items.AddFileEntry(Dn("b.krc"), "b.krc", "x", 1));
    EXPECT_EQ(50u, items.ReplaceFileContents(Dn("a.krc"), "y", 1));
    EXPECT_EQ(0, items.AddFolderEntry(Dn("sub"), "sub", &text_));
    EXPECT_EQ(MessageFor(50), text_);
    EXPECT_EQ(0, items.DeleteTree(Dn("a.krc"), &text_));
    EXPECT_EQ(50u, items.LastError());
    EXPECT_EQ(0, items.RenameEntry(Dn("a.krc"), Dn("b.krc"), &text_));
    EXPECT_EQ(50u, items.LastError());
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
    EXPECT_EQ(1, Connected().SplitEntryName("CN=report.krc," + base_, name, isFolder,
                                            FileExtension::kStrip));
    EXPECT_EQ("report", name);
    EXPECT_FALSE(isFolder);
    EXPECT_EQ(0, Connected().SplitEntryName(test::kSuffix, name, isFolder));
    EXPECT_EQ("", name);
    EXPECT_EQ(0, Connected().SplitEntryName("not a name", name, isFolder));
}

TEST_F(EntriesTest, WithoutAConnectionEveryOperationFailsAsServerDown) {
    CDepotPath location = server_.Location(base_);
    CLDAPItems items(&location);
    LdapItemList children;
    EXPECT_EQ(0, items.ListChildren(base_, children));
    EXPECT_EQ(81u, items.LastError());
    EXPECT_EQ(81u, items.AddFileEntry(Dn("a.krc"), "a.krc", "x", 1));
    EXPECT_EQ(81u, items.ReplaceFileContents(Dn("a.krc"), "x", 1));
    EXPECT_EQ(0, items.AddFolderEntry(Dn("sub"), "sub", &text_));
    EXPECT_EQ(MessageFor(81), text_);
    EXPECT_EQ(0, items.RenameEntry(Dn("a"), Dn("b"), nullptr));
    EXPECT_EQ(0, items.DeleteTree(Dn("a"), nullptr));
    EXPECT_EQ(81u, CodeOf(items.Entries().Find(base_)));
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
    EXPECT_EQ(0, without(&DirectoryClient::ldap_first_entry).ListChildren(base_, children));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(0, without(&DirectoryClient::ldap_get_values_len).ListChildren(base_, children));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(0, without(&DirectoryClient::ldap_search_s).ListChildren(base_, children));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(81u, without(&DirectoryClient::ldap_add_s).AddFileEntry(Dn("a"), "a", "", 0));
    EXPECT_EQ(81u, without(&DirectoryClient::ldap_modify_s).ReplaceFileContents(Dn("a"), "", 0));
    EXPECT_EQ(0, without(&DirectoryClient::ldap_delete_s).DeleteTree(Dn("a"), nullptr));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(0, without(&DirectoryClient::ldap_explode_dn).RenameEntry(Dn("a"), Dn("b"), nullptr));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(0,
              without(&DirectoryClient::ldap_rename_ext_s).RenameEntry(Dn("a"), Dn("b"), nullptr));
    EXPECT_EQ(81u, Connected().LastError());
    FileBuffer buffer;
    EXPECT_EQ(0, without(&DirectoryClient::ldap_get_dn).ReadFileContents(base_, buffer));
    EXPECT_EQ(81u, Connected().LastError());
    EXPECT_EQ(0,
              without(&DirectoryClient::ldap_explode_dn).EnsureFolderPath(base_, false, nullptr));
    EXPECT_EQ(81u, Connected().LastError());
    Connected().Client() = genuine;
}

}  // namespace
}  // namespace depot
