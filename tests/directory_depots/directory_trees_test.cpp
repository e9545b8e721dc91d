// Adding a local file to a directory and downloading a subtree into a local folder.
#include "model/directory_trees.h"

#include "directory_depots/depot_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;
using testing::IsEmpty;

constexpr char kBytes[] = "[S]\r\nK=v\r\n";

// The searches that fail, by the name of their entry.
std::string failing;
DirectoryClient real;

class DownloadTreeTest : public test::DirectoryFixture {
protected:
    void FailSearchesFor(const std::string& name) {
        failing = name;
        real = Connected().Client();
        Connected().Client().ldap_search_s = [](LDAP* connection, PCHAR base, ULONG scope,
                                                PCHAR filter, PCHAR* attributes, ULONG typesOnly,
                                                LDAPMessage** result) -> ULONG {
            if (std::string(base).substr(3, failing.size()) == failing) return LDAP_BUSY;
            return real.ldap_search_s(connection, base, scope, filter, attributes, typesOnly,
                                      result);
        };
    }

    test::ScratchFolder local_;
};

TEST_F(DownloadTreeTest, AllFilesLandInTheFolderItselfAndNothingIsReported) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), IsDone());
    EXPECT_EQ("one", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
    EXPECT_TRUE(test::Exists(local_.At("sub")));
    EXPECT_FALSE(test::Exists(local_.At("sub\\b.krc")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DownloadTreeTest, NamesThatLeadElsewhereAreLeftOutAndCountedAtEveryDepth) {
    server_.AddFile("a:b.krc", base_, "x");
    server_.AddFile("good.krc", base_, "x");
    server_.AddFolder("sub", base_);
    server_.AddFile("c/d.krc", Dn("sub"), "x");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), IsDone());
    EXPECT_EQ(UnsafeNamesText(2), text_);
    EXPECT_TRUE(test::Exists(local_.At("good.krc")));
    EXPECT_FALSE(test::Exists(local_.At("a")));
    EXPECT_FALSE(test::Exists(local_.At("c")));
}

TEST_F(DownloadTreeTest, PlacesOfFilesAndFoldersOfOtherNamesAreLeftOutAndCounted) {
    local_.MakeFile("a long file name.krc", "mine");
    local_.MakeFolder("a long folder name");
    const std::string file = test::ShortNameOf(local_.At("a long file name.krc"));
    const std::string folder = test::ShortNameOf(local_.At("a long folder name"));
    server_.AddFile(file, base_, "x");
    server_.AddFile("x~1.krc", base_, "x");
    server_.AddFolder(folder, base_);
    server_.AddFile("below.krc", Dn(folder), "x");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), IsDone());
    EXPECT_EQ(UnsafeNamesText(2), text_);
    EXPECT_EQ("mine", test::FileBytes(local_.At("a long file name.krc")));
    EXPECT_EQ("x", test::FileBytes(local_.At("x~1.krc")));
    EXPECT_FALSE(test::Exists(local_.At("below.krc")));
}

TEST_F(DownloadTreeTest, WithoutAnErrorTextUnsafeNamesAreLeftOutSilently) {
    server_.AddFile("a:b.krc", base_, "x");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false), IsDone());
    EXPECT_FALSE(test::Exists(local_.At("a")));
}

TEST_F(DownloadTreeTest, EmptyOrMissingFolderCreatesNothing) {
    server_.AddFolder("empty", base_);
    EXPECT_THAT(DownloadTree(Connected(), Dn("empty"), local_.At("out"), false, &text_), IsDone());
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_THAT(DownloadTree(Connected(), Dn("none"), local_.At("out"), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DownloadTreeTest, ServerThatCannotBeReachedCreatesNothing) {
    const unsigned port = test::ClosedPort();
    test::ForgetServer(port);
    auto location = server_.Location(base_).Clone();
    location->port = port;
    CLDAPItems items(location.get());
    EXPECT_THAT(DownloadTree(items, base_, local_.At("out"), true, &text_), Fails());
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_NE("junk", text_);
}

TEST_F(DownloadTreeTest, FileThatCannotBeWrittenIsPassedOverAndReported) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    local_.MakeFolder("a.krc");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_LOCAL_ERROR));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, FileThatCannotBeReadLeavesTheLocalOneAndIsReported) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    for (const char* name : {"a.krc", "b.krc"}) local_.MakeFile(name, "old");
    FailSearchesFor("a.krc");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_BUSY));
    EXPECT_EQ("old", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, FileWhoseBytesCannotBeSeenReplacesNothing) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    local_.MakeFile("a.krc", "old");
    Connected().Location().fileContentsAttributeName = "description";
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_ATTRIBUTE));
    EXPECT_EQ("old", test::FileBytes(local_.At("a.krc")));
    EXPECT_FALSE(test::Exists(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, FolderThatCannotBeListedIsPassedOverAndReported) {
    server_.AddFolder("deep", base_);
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    FailSearchesFor("deep");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_BUSY));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
    EXPECT_TRUE(test::Exists(local_.At("deep")));
}

TEST_F(DownloadTreeTest, SubfolderThatCannotBeMadeIsReportedAndItsFilesCome) {
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    local_.MakeFile("sub", "a file");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_LOCAL_ERROR));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
    EXPECT_EQ("a file", test::FileBytes(local_.At("sub")));
}

TEST_F(DownloadTreeTest, OfFilesOfOneNameInTheTreeTheLastOneInListOrderStaysAndItIsAFailure) {
    server_.AddFile("a.krc", base_, "top");
    server_.AddFolder("one", base_);
    server_.AddFile("a.krc", Dn("one"), "1");
    server_.AddFolder("two", base_);
    server_.AddFolder("deep", Dn("one"));
    server_.AddFile("a.krc", "cn=deep," + Dn("one"), "deep");
    server_.AddFile("b.krc", "cn=deep," + Dn("one"), "deep");
    server_.AddFile("b.krc", Dn("two"), "2");
    EXPECT_THAT(DownloadTree(Connected(), base_, local_.Path(), false, &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NAMING_VIOLATION));
    EXPECT_EQ(kSharedNamesText, text_);
    // Each folder with all that is below it comes before the next one.
    EXPECT_EQ("deep", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("2", test::FileBytes(local_.At("b.krc")));
}

class DepotDownloadTreeTest : public test::DepotFixture {
protected:
    test::ScratchFolder folder_;
};

TEST_F(DepotDownloadTreeTest, DownloadedTreeLandsInOneFolderWithEmptySubfolders) {
    server_.AddFolder("A", base_);
    server_.AddFile("a1.kra", Dn("A"), "one");
    server_.AddFolder("B", Dn("A"));
    server_.AddFile("b1.kra", "cn=B," + Dn("A"), "two");
    EXPECT_THAT(DownloadTree(Directory(), Dn("A"), folder_.At("local"), true), IsDone());
    EXPECT_EQ("one", FileBytes(folder_.At("local\\a1.kra")));
    EXPECT_EQ("two", FileBytes(folder_.At("local\\b1.kra")));
    EXPECT_TRUE(test::Exists(folder_.At("local\\B")));
    EXPECT_FALSE(test::Exists(folder_.At("local\\B\\b1.kra")));
    EXPECT_FALSE(Directory().IsConnected());
}

class UploadNewFileTest : public test::DepotFixture {
protected:
    test::ScratchFolder folder_;
};

TEST_F(UploadNewFileTest, NewFileIsAddedUnderItsOwnName) {
    const std::string path = folder_.MakeFile("new.kra", "bytes");
    std::string text = "junk";
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, true, &text), IsDone());
    EXPECT_EQ("bytes", Stored("new.kra"));
    EXPECT_FALSE(Directory().IsConnected());
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, true, &text), Fails());
}

TEST_F(UploadNewFileTest, MissingPathOrParentIsAParameterErrorWithoutABox) {
    for (const bool hasPath : {false, true}) {
        std::string text = "junk";
        EXPECT_THAT(UploadNewFile(Directory(), hasPath ? folder_.MakeFile("n", "x") : "",
                                  hasPath ? "" : base_, true, &text),
                    Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_PARAM_ERROR));
        EXPECT_THAT(Directory().Connection().Shared().Block().Access()->lastError,
                    IsCode(LDAP_PARAM_ERROR));
        EXPECT_EQ(test::MessageFor(LDAP_PARAM_ERROR), text);
        Directory().Connection().Shared().Block().Access()->lastError = 0;
    }
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(UploadNewFileTest, EntryThatExistsIsLeftAlone) {
    const std::string path = folder_.MakeFile("new.kra", "bytes");
    server_.AddFile("new.kra", base_, "old");
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, true, nullptr), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_ALREADY_EXISTS));
    EXPECT_EQ("old", Stored("new.kra"));
}

TEST_F(UploadNewFileTest, FileThatCannotBeReadAddsABlank) {
    EXPECT_THAT(UploadNewFile(Directory(), folder_.At("none.kra"), base_, true, nullptr), IsDone());
    EXPECT_EQ(" ", Stored("none.kra"));
}

TEST_F(UploadNewFileTest, WithoutTheConnectFlagItNeedsAndKeepsAConnection) {
    const std::string path = folder_.MakeFile("new.kra", "bytes");
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, false, nullptr), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_SERVER_DOWN));
    ASSERT_THAT(Directory().ConnectLocation(nullptr), IsDone());
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, false, nullptr), IsDone());
    EXPECT_TRUE(Directory().IsConnected());
    EXPECT_EQ("bytes", Stored("new.kra"));
}

TEST_F(UploadNewFileTest, MissingParentOrDeadServerIsAFailure) {
    const std::string path = folder_.MakeFile("new.kra", "bytes");
    EXPECT_THAT(UploadNewFile(Directory(), path, Dn("none"), true, nullptr), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    Define(test::ClosedPort(), base_);
    std::string text = "junk";
    EXPECT_THAT(UploadNewFile(Directory(), path, base_, true, &text), Fails());
    EXPECT_NE("junk", text);
}

TEST_F(UploadNewFileTest, OpenConnectionStaysOpen) {
    CLDAPItems& items = Connected();
    EXPECT_THAT(UploadNewFile(items, folder_.MakeFile("a.kra", kBytes), base_, false, nullptr),
                IsDone());
    EXPECT_TRUE(items.IsConnected());
    EXPECT_EQ(kBytes, Stored("a.kra"));
}

TEST_F(UploadNewFileTest, FileThatCannotBeReadAddsABlankOnAnOpenConnection) {
    EXPECT_THAT(UploadNewFile(Connected(), folder_.At("none.kra"), base_, false, nullptr),
                IsDone());
    EXPECT_EQ(" ", Stored("none.kra"));
}

TEST_F(UploadNewFileTest, ServerThatIsGoneIsAFailure) {
    CDepotPath location = server_.Location(base_);
    location.port = test::ClosedPort();
    location.authentication = kAnonymousAuthentication;
    test::ForgetServer(location.port);
    CLDAPItems items(&location);
    EXPECT_THAT(UploadNewFile(items, folder_.MakeFile("a.kra", kBytes), base_, true, nullptr),
                Fails());
}

}  // namespace
}  // namespace depot
