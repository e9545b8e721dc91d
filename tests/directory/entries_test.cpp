#include "support/directory_fixture.h"

namespace depot {
namespace {

using test::MessageFor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class EntriesTest : public test::DirectoryFixture {
protected:
    std::string Dn(const std::string& name) const { return "cn=" + name + "," + base_; }

    std::vector<std::string> List(const std::string& localBase = {}) {
        std::vector<std::string> children;
        LdapItemList items;
        items.Add("junk", true);
        EXPECT_EQ(1, Connected().ListChildren(base_, items, localBase));
        for (const CLDAPItem* item : items) {
            children.push_back((item->isFolder ? "folder " : "file ") + item->path);
        }
        return children;
    }
    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        EXPECT_EQ(1, Connected().ReadFileContents(dn, buffer));
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }

    std::string text_ = "junk";
};

TEST_F(EntriesTest, ListingTellsFoldersAndFilesByTheirClass) {
    server_.AddFolder("v1.2", base_);
    server_.AddFile("plain", base_, "x");
    EXPECT_THAT(List(), UnorderedElementsAre("folder CN=v1.2," + base_, "file CN=plain," + base_));
}

TEST_F(EntriesTest, ListingAnEmptyFolderSucceedsWithNothing) {
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(EntriesTest, ListingLeavesOutEntriesOfOtherClasses) {
    server_.Apply("dn: " + Dn("person") + "\nobjectClass: person\ncn: person\nsn: person\n");
    server_.AddFile("a.krc", base_, "x");
    EXPECT_THAT(List(), ElementsAre("file CN=a.krc," + base_));
}

TEST_F(EntriesTest, ListingTakesDirectChildrenOnly) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", Dn("sub"), "x");
    EXPECT_THAT(List(), ElementsAre("folder CN=sub," + base_));
}

TEST_F(EntriesTest, ListingWithALocalBaseGivesLocalPaths) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "x");
    EXPECT_THAT(List("C:\\local"),
                UnorderedElementsAre("folder C:\\local\\sub", "file C:\\local\\a.krc"));
    EXPECT_EQ(0u, Connected().UnsafeNames());
}

TEST_F(EntriesTest, ListingWithALocalBaseLeavesOutNamesThatLeadElsewhere) {
    for (const char* name : {"..\\5Cup.krc", "nul.krc", "a/b.krc", "c:x.krc", ".."}) {
        server_.AddFile(name, base_, "x");
    }
    server_.AddFile("good.krc", base_, "x");
    EXPECT_THAT(List("C:\\local"), ElementsAre("file C:\\local\\good.krc"));
    EXPECT_EQ(5u, Connected().UnsafeNames());
    EXPECT_EQ(6u, List().size());
    EXPECT_EQ(0u, Connected().UnsafeNames());
}

TEST_F(EntriesTest, ListingAsksForTheNamesAndTheClassOnly) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    List();
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH base=\"" + base_ + "\" scope=1"));
    EXPECT_THAT(server_.Log(), HasSubstr("filter=\"(objectClass=*)\""));
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH attr=CN objectClass\n"));
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
}

TEST_F(EntriesTest, ListingDecidesAfterEachValueWhateverTheirOrder) {
    // The entry's class comes last in what is read of it: the names are known by then.
    server_.AddFile("a.krc", base_, "x");
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    static bool classLast;
    // Only so many attributes are handed out: a walk that misses the end must not go on for ever.
    static int left;
    for (const bool last : {false, true}) {
        classLast = last;
        left = 10;
        Connected().Client().ldap_first_attribute = [](LDAP*, LDAPMessage*, BerElement** position) {
            *position = nullptr;
            static char names[2][12];
            strcpy(names[0], classLast ? "cn" : "OBJECTCLASS");
            return names[0];
        };
        Connected().Client().ldap_next_attribute = [](LDAP*, LDAPMessage*, BerElement*) {
            static char second[12];
            strcpy(second, classLast ? "OBJECTCLASS" : "cn");
            return left-- > 0 ? second : nullptr;
        };
        Connected().Client().ldap_memfree = [](PCHAR) {};
        EXPECT_THAT(List(), ElementsAre("file CN=a.krc," + base_));
        // Both attributes were needed and no more was asked for.
        EXPECT_EQ(9, left);
    }
}

TEST_F(EntriesTest, ListingTakesTheFirstOfSeveralNamesThatCompletesTheChild) {
    server_.Apply("dn: " + Dn("two.krc") +
                  "\nobjectClass: quillonFileBinary\ncn: two.krc\ncn: other.krc\n"
                  "quillonFileContentsBinary: x\n");
    EXPECT_EQ(1u, List().size());
}

TEST_F(EntriesTest, ListingWithItsOwnNamesUsesThem) {
    server_.Apply("dn: ou=Dir," + base_ + "\nobjectClass: organizationalUnit\nou: Dir\n");
    server_.Apply("dn: uid=f," + base_ + "\nobjectClass: account\nuid: f\n");
    server_.AddFolder("other", base_);
    CDepotPath location = server_.Location(base_);
    location.folderAttributeName = "ou";
    location.folderObjectClass = "ORGANIZATIONALUNIT";
    location.fileAttributeName = "uid";
    location.fileObjectClass = "account";
    CLDAPItems items(&location);
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    server_.Mark();
    LdapItemList children;
    EXPECT_EQ(1, items.ListChildren(base_, children));
    ASSERT_EQ(2u, children.Count());
    const std::size_t folder = children.At(0).isFolder == 1 ? 0 : 1;
    EXPECT_EQ("ou=Dir," + base_, children.At(folder).path);
    EXPECT_EQ(1u, children.At(folder).isFolder);
    EXPECT_EQ("uid=f," + base_, children.At(1 - folder).path);
    EXPECT_EQ(0u, children.At(1 - folder).isFolder);
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH attr=ou objectClass uid\n"));
}

TEST_F(EntriesTest, ListingAMissingFolderFailsAndEmptiesTheList) {
    LdapItemList items;
    items.Add("junk", true);
    EXPECT_EQ(0, Connected().ListChildren(Dn("missing"), items));
    EXPECT_EQ(0u, items.Count());
    EXPECT_EQ(32u, Connected().LastError());
}

TEST_F(EntriesTest, NamesBeyondAsciiSurviveTheWayThere) {
    server_.AddFile("r\xC3\xA9sum\xC3\xA9.krc", base_, "x");
    EXPECT_THAT(List(), ElementsAre("file CN=r\xE9sum\xE9.krc," + base_));
    EXPECT_EQ("x", Contents("CN=r\xE9sum\xE9.krc," + base_));
    std::string name;
    bool isFolder = true;
    EXPECT_EQ(1, Connected().SplitEntryName("CN=r\xE9sum\xE9.krc," + base_, name, isFolder));
    EXPECT_EQ("r\xE9sum\xE9.krc", name);
    EXPECT_FALSE(isFolder);
}

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

TEST_F(EntriesTest, AZeroLengthFileIsReadBackAsOneBlank) {
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

TEST_F(EntriesTest, RenamingFailuresKeepTheEntryAndTellTheReason) {
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

TEST_F(EntriesTest, DeletingAFileIsDone) {
    server_.AddFile("a.krc", base_, "x");
    EXPECT_EQ(1, Connected().DeleteTree(Dn("a.krc"), &text_));
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
    EXPECT_EQ("junk", text_);
}

TEST_F(EntriesTest, DeletingAFolderTakesFilesThenEmptyFoldersThenFullOnes) {
    server_.AddFolder("tree", base_);
    server_.AddFolder("empty", Dn("tree"));
    server_.AddFolder("full", Dn("tree"));
    server_.AddFile("b.krc", "cn=full," + Dn("tree"), "b");
    server_.AddFile("a.krc", Dn("tree"), "a");
    Connected();
    server_.Mark();
    EXPECT_EQ(1, Connected().DeleteTree(Dn("tree"), &text_));
    const std::string log = server_.Log();
    EXPECT_EQ(2, server_.Counts().searches);
    std::vector<std::string> deleted;
    constexpr std::string_view kDeletion = "DEL dn=\"cn=";
    for (std::size_t at = log.find(kDeletion); at != std::string::npos;
         at = log.find(kDeletion, at + 1)) {
        const std::size_t name = at + kDeletion.size();
        deleted.push_back(log.substr(name, log.find(',', name) - name));
    }
    // The server is free to list the two folders in any order.
    EXPECT_THAT(deleted,
                testing::AnyOf(ElementsAre("a.krc", "empty", "full", "b.krc", "full", "tree"),
                               ElementsAre("a.krc", "full", "b.krc", "full", "empty", "tree")));
    EXPECT_FALSE(server_.Holds(Dn("tree")));
}

TEST_F(EntriesTest, DeletingNothingIsAParameterError) {
    EXPECT_EQ(0, Connected().DeleteTree("", &text_));
    EXPECT_EQ(89u, Connected().LastError());
    EXPECT_EQ(MessageFor(89), text_);
    EXPECT_EQ(0, Connected().DeleteTree("", nullptr));
}

TEST_F(EntriesTest, DeletingAMissingEntryFails) {
    EXPECT_EQ(0, Connected().DeleteTree(Dn("missing"), &text_));
    EXPECT_EQ(32u, Connected().LastError());
    EXPECT_EQ(MessageFor(32), text_);
}

TEST_F(EntriesTest, DeletingLeavesAFolderThatHoldsOtherEntries) {
    server_.AddFolder("tree", base_);
    server_.AddFile("a.krc", Dn("tree"), "a");
    server_.Apply("dn: cn=p," + Dn("tree") + "\nobjectClass: person\ncn: p\nsn: p\n");
    EXPECT_EQ(0, Connected().DeleteTree(Dn("tree"), &text_));
    EXPECT_EQ(66u, Connected().LastError());
    EXPECT_FALSE(server_.Holds("cn=a.krc," + Dn("tree")));
    EXPECT_TRUE(server_.Holds("cn=p," + Dn("tree")));
}

TEST_F(EntriesTest, DeletingGoesOnBehindAChildThatCannotBeDeleted) {
    server_.AddFolder("tree", base_);
    for (const char* name : {"a.krc", "b.krc", "c.krc"}) server_.AddFile(name, Dn("tree"), "x");
    for (const char* name : {"d", "e", "f"}) {
        server_.AddFolder(name, Dn("tree"));
        server_.AddFile("x.krc", std::string("cn=") + name + "," + Dn("tree"), "x");
    }
    // One file and one folder resist, whatever their place in the server's order.
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    Connected().Client().ldap_delete_s = [](LDAP* connection, PCHAR dn) -> ULONG {
        const std::string name(dn);
        const bool resists = name.find("=b.krc,") != std::string::npos || name.starts_with("CN=e,");
        return resists ? ULONG{LDAP_INSUFFICIENT_RIGHTS} : genuine.ldap_delete_s(connection, dn);
    };
    EXPECT_EQ(0, Connected().DeleteTree(Dn("tree"), &text_));
    const std::string left = server_.Show(Dn("tree"), "sub", "1.1");
    EXPECT_THAT(left, HasSubstr("cn=b.krc,"));
    EXPECT_THAT(left, HasSubstr("cn=e,"));
    for (const char* name : {"a.krc", "c.krc", "d", "f", "x.krc"}) {
        EXPECT_THAT(left, testing::Not(HasSubstr(std::string("cn=") + name + ","))) << name;
    }
    // The tree itself still holds two; the failure of the file was told before.
    EXPECT_EQ(66u, Connected().LastError());
    EXPECT_EQ(MessageFor(66), text_);
}

TEST_F(EntriesTest, FailureOfAFileIsToldAlsoWhenTheFolderItselfGoes) {
    server_.AddFolder("tree", base_);
    server_.AddFile("a.krc", Dn("tree"), "x");
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    // Deleted, but the client says otherwise.
    Connected().Client().ldap_delete_s = [](LDAP* connection, PCHAR dn) -> ULONG {
        const ULONG code = genuine.ldap_delete_s(connection, dn);
        return std::string(dn).starts_with("CN=a.krc,") ? ULONG{LDAP_BUSY} : code;
    };
    EXPECT_EQ(1, Connected().DeleteTree(Dn("tree"), &text_));
    EXPECT_EQ(MessageFor(LDAP_BUSY).empty() ? "junk" : MessageFor(LDAP_BUSY), text_);
    EXPECT_FALSE(server_.Holds(Dn("tree")));
}

TEST_F(EntriesTest, AReaderMayNotWriteAndTheReasonIsTold) {
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

TEST_F(EntriesTest, SplittingTellsTheNameAndTheKind) {
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
    EXPECT_EQ(81u, items.FindEntry(base_));
}

TEST_F(EntriesTest, AMissingEntryPointMakesItsOperationFailAsServerDown) {
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
    EXPECT_EQ(0, without(&DirectoryClient::ldap_get_values).ListChildren(base_, children));
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
