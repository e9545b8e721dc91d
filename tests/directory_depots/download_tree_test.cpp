// Downloading a subtree into a local folder.
#include "model/local_mirror.h"
#include "support/directory_fixture.h"
#include "support/scratch.h"

namespace depot {
namespace {

class DownloadTreeTest : public test::DirectoryFixture {
protected:
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

TEST_F(DownloadTreeTest, AFileThatCannotBeWrittenIsSkipped) {
    server_.AddFile("a.krc", base_, "one");
    server_.AddFile("b.krc", base_, "two");
    local_.MakeFolder("a.krc");
    EXPECT_EQ(1, DownloadTree(Connected(), base_, local_.Path(), false, &text_));
    EXPECT_EQ("two", test::FileBytes(local_.At("b.krc")));
}

}  // namespace
}  // namespace depot
