// Downloading a subtree into a local folder.
#include "model/local_mirror.h"
#include "support/directory_fixture.h"
#include "support/scratch.h"

namespace depot {
namespace {

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
    std::string Dn(const std::string& name) const { return "cn=" + name + "," + base_; }

    test::ScratchFolder local_;
    std::string text_ = "junk";
};

TEST_F(DownloadTreeTest, AllFilesLandInTheFolderItselfAndNothingIsSaid) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    EXPECT_EQ(1, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
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
    EXPECT_EQ(1, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(UnsafeNamesText(2), text_);
    EXPECT_TRUE(test::Exists(local_.At("good.krc")));
    EXPECT_FALSE(test::Exists(local_.At("a")));
    EXPECT_FALSE(test::Exists(local_.At("c")));
}

TEST_F(DownloadTreeTest, WithoutAnErrorTextUnsafeNamesAreLeftOutSilently) {
    server_.AddFile("a:b.krc", base_, "x");
    EXPECT_EQ(1, DownloadTree(Connected(), base_, local_.Path(), false));
    EXPECT_FALSE(test::Exists(local_.At("a")));
}

TEST_F(DownloadTreeTest, AnEmptyOrMissingFolderCreatesNothing) {
    server_.AddFolder("empty", base_);
    EXPECT_EQ(1, DownloadTree(Connected(), Dn("empty"), local_.At("out"), false, &text_));
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_EQ(0, DownloadTree(Connected(), Dn("none"), local_.At("out"), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_OBJECT}, Connected().LastError());
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DownloadTreeTest, AServerThatCannotBeReachedCreatesNothing) {
    const unsigned port = test::ClosedPort();
    test::ForgetServer(port);
    auto location = server_.Location(base_).Clone();
    location->port = port;
    CLDAPItems items(location.get());
    EXPECT_EQ(0, DownloadTree(items, base_, local_.At("out"), true, &text_));
    EXPECT_FALSE(test::Exists(local_.At("out")));
    EXPECT_NE("junk", text_);
}

TEST_F(DownloadTreeTest, AFileThatCannotBeWrittenIsPassedOverAndReported) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    local_.MakeFolder("a.krc");
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_LOCAL_ERROR}, Connected().LastError());
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, AFileThatCannotBeReadLeavesTheLocalOneAndIsReported) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    for (const char* name : {"a.krc", "b.krc"}) local_.MakeFile(name, "old");
    FailSearchesFor("a.krc");
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_BUSY}, Connected().LastError());
    EXPECT_EQ("old", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, AFileWhoseBytesCannotBeSeenReplacesNothing) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    local_.MakeFile("a.krc", "old");
    Connected().Location().fileContentsAttributeName = "description";
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_ATTRIBUTE}, Connected().LastError());
    EXPECT_EQ("old", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("", test::FileBytes(local_.At("b.krc")));
}

TEST_F(DownloadTreeTest, AFolderThatCannotBeListedIsPassedOverAndReported) {
    server_.AddFolder("deep", base_);
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    FailSearchesFor("deep");
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_BUSY}, Connected().LastError());
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
    EXPECT_TRUE(test::Exists(local_.At("deep")));
}

TEST_F(DownloadTreeTest, ASubfolderThatCannotBeMadeIsReportedAndItsFilesCome) {
    server_.AddFolder("sub", base_);
    server_.AddFile("b.krc", Dn("sub"), "two");
    local_.MakeFile("sub", "a file");
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_LOCAL_ERROR}, Connected().LastError());
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
    EXPECT_EQ(0, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ(std::uint32_t{LDAP_NAMING_VIOLATION}, Connected().LastError());
    EXPECT_EQ(kSharedNamesText, text_);
    // Each folder with all that is below it comes before the next one.
    EXPECT_EQ("deep", test::FileBytes(local_.At("a.krc")));
    EXPECT_EQ("2", test::FileBytes(local_.At("b.krc")));
}

}  // namespace
}  // namespace depot
