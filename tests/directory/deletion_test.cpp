// Deleting entries with what is below them.
#include <algorithm>

#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

using DeletionTest = test::DirectoryFixture;

TEST_F(DeletionTest, OfAFileIsDone) {
    server_.AddFile("a.krc", base_, "x");
    EXPECT_THAT(Connected().DeleteTree(Dn("a.krc"), &text_), IsDone());
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
    EXPECT_EQ("junk", text_);
}

TEST_F(DeletionTest, OfAFolderTakesEachFolderAfterWhatItHolds) {
    server_.AddFolder("tree", base_);
    server_.AddFolder("empty", Dn("tree"));
    server_.AddFolder("full", Dn("tree"));
    server_.AddFile("b.krc", "cn=full," + Dn("tree"), "b");
    server_.AddFile("a.krc", Dn("tree"), "a");
    Connected();
    server_.Mark();
    EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), IsDone());
    const std::string log = server_.Log();
    EXPECT_EQ(3, server_.Counts().searches);
    std::vector<std::string> deleted;
    constexpr std::string_view kDeletion = "DEL dn=\"cn=";
    for (std::size_t at = log.find(kDeletion); at != std::string::npos;
         at = log.find(kDeletion, at + 1)) {
        const std::size_t name = at + kDeletion.size();
        deleted.push_back(log.substr(name, log.find(',', name) - name));
    }
    // What is sent together the server is free to delete, and to note, in any order.
    EXPECT_THAT(deleted, UnorderedElementsAre("a.krc", "b.krc", "empty", "full", "tree"));
    EXPECT_LT(std::find(deleted.begin(), deleted.end(), "b.krc"),
              std::find(deleted.begin(), deleted.end(), "full"));
    EXPECT_EQ("tree", deleted.back());
    EXPECT_FALSE(server_.Holds(Dn("tree")));
}

TEST_F(DeletionTest, OfNothingIsAParameterError) {
    EXPECT_THAT(Connected().DeleteTree("", &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_PARAM_ERROR));
    EXPECT_EQ(MessageFor(LDAP_PARAM_ERROR), text_);
    EXPECT_THAT(Connected().DeleteTree("", nullptr), Fails());
}

TEST_F(DeletionTest, OfAMissingEntryFails) {
    EXPECT_THAT(Connected().DeleteTree(Dn("missing"), &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(MessageFor(LDAP_NO_SUCH_OBJECT), text_);
}

TEST_F(DeletionTest, LeavesAFolderThatHoldsOtherEntries) {
    server_.AddFolder("tree", base_);
    server_.AddFile("a.krc", Dn("tree"), "a");
    server_.Apply("dn: cn=p," + Dn("tree") + "\nobjectClass: person\ncn: p\nsn: p\n");
    EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), Fails());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NOT_ALLOWED_ON_NONLEAF));
    EXPECT_FALSE(server_.Holds("cn=a.krc," + Dn("tree")));
    EXPECT_TRUE(server_.Holds("cn=p," + Dn("tree")));
}

TEST_F(DeletionTest, ContinuesBehindAChildThatCannotBeDeleted) {
    server_.AddFolder("tree", base_);
    for (const char* name : {"a.krc", "b.krc", "c.krc"}) server_.AddFile(name, Dn("tree"), "x");
    for (const char* name : {"d", "e", "f"}) {
        server_.AddFolder(name, Dn("tree"));
        server_.AddFile("x.krc", std::string("cn=") + name + "," + Dn("tree"), "x");
    }
    // One file and one folder resist, whatever their place in the server's order.
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    Connected().Client().ldap_delete_ext = [](LDAP* connection, PCHAR dn, PLDAPControlA* conditions,
                                              PLDAPControlA* controls, ULONG* id) -> ULONG {
        const std::string name(dn);
        const bool resists = name.find("=b.krc,") != std::string::npos || name.starts_with("CN=e,");
        return resists ? ULONG{LDAP_INSUFFICIENT_RIGHTS}
                       : genuine.ldap_delete_ext(connection, dn, conditions, controls, id);
    };
    EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), Fails());
    const std::string left = server_.Show(Dn("tree"), "sub", "1.1");
    EXPECT_THAT(left, HasSubstr("cn=b.krc,"));
    EXPECT_THAT(left, HasSubstr("cn=e,"));
    for (const char* name : {"a.krc", "c.krc", "d", "f", "x.krc"}) {
        EXPECT_THAT(left, testing::Not(HasSubstr(std::string("cn=") + name + ","))) << name;
    }
    // The tree itself still holds two; the failure of the file was told before.
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NOT_ALLOWED_ON_NONLEAF));
    EXPECT_EQ(MessageFor(LDAP_NOT_ALLOWED_ON_NONLEAF), text_);
}

TEST_F(DeletionTest, FailureOfAFileIsReportedAlsoWhenTheFolderItselfIsDeleted) {
    server_.AddFolder("tree", base_);
    server_.AddFile("a.krc", Dn("tree"), "x");
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    // Deleted, but the client says otherwise.
    Connected().Client().ldap_delete_s = [](LDAP* connection, PCHAR dn) -> ULONG {
        const ULONG code = genuine.ldap_delete_s(connection, dn);
        return std::string(dn).starts_with("CN=a.krc,") ? ULONG{LDAP_BUSY} : code;
    };
    EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), IsDone());
    EXPECT_EQ(MessageFor(LDAP_BUSY).empty() ? "junk" : MessageFor(LDAP_BUSY), text_);
    EXPECT_FALSE(server_.Holds(Dn("tree")));
}

TEST_F(DeletionTest, OfATreeDeeperThanAnyStackLeavesNothing) {
    constexpr int kDepth = 1'000;
    std::string dn = base_, tree;
    for (int level = 0; level < kDepth; ++level) {
        dn = "cn=d," + dn;
        tree += "dn: " + dn + "\nobjectClass: quillonFolder\ncn: d\n\n";
    }
    server_.Apply(tree);
    server_.AddFile("a.krc", dn, "x");
    ASSERT_TRUE(server_.Holds(dn));
    EXPECT_THAT(Connected().DeleteTree(Dn("d"), &text_), IsDone());
    EXPECT_FALSE(server_.Holds(Dn("d")));
    EXPECT_EQ("junk", text_);
}

// The server lists the same folder again below each folder.
TEST_F(DeletionTest, OfATreeWithoutAnEndIsAFailure) {
    server_.AddFolder(std::string(200, 'd'), base_);
    static DirectoryClient genuine;
    static std::string base;
    base = base_;
    genuine = Connected().Client();
    Connected().Client().ldap_search_s = [](LDAP* connection, PCHAR, ULONG scope, PCHAR filter,
                                            PCHAR* attributes, ULONG typesOnly,
                                            LDAPMessage** result) -> ULONG {
        return genuine.ldap_search_s(connection, base.data(), scope, filter, attributes, typesOnly,
                                     result);
    };
    Connected().Client().ldap_delete_s = [](LDAP*, PCHAR) -> ULONG {
        return LDAP_NOT_ALLOWED_ON_NONLEAF;
    };
    const auto fails = [&](std::uint32_t code) {
        EXPECT_THAT(Connected().DeleteTree(base_, &text_), Fails());
        EXPECT_EQ(code, Connected().LastError());
        EXPECT_EQ(MessageFor(code), text_);
    };
    fails(LDAP_SIZELIMIT_EXCEEDED);  // by the length of the names
    Connected().Bounds().entries = 50;
    fails(LDAP_SIZELIMIT_EXCEEDED);
    Connected().Bounds().entries = 100'000;
    Connected().Bounds().nameBytes = 100'000;
    fails(LDAP_SIZELIMIT_EXCEEDED);
    Connected().Bounds().listingTime = std::chrono::milliseconds(20);
    Connected().Bounds().nameBytes = 1'000'000'000;
    fails(LDAP_TIMELIMIT_EXCEEDED);
}

TEST_F(DeletionTest, OfATreeWithinTheBoundsIsDone) {
    server_.AddFolder("tree", base_);
    server_.AddFolder("sub", Dn("tree"));
    server_.AddFile("a.krc", "cn=sub," + Dn("tree"), "x");
    TreeBounds& bounds = Connected().Bounds();
    for (const TreeBounds& tooSmall : {TreeBounds{.entries = 1}, TreeBounds{.depth = 1}}) {
        bounds = tooSmall;
        EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), Fails());
        EXPECT_THAT(Connected().LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
        EXPECT_TRUE(server_.Holds("cn=a.krc,cn=sub," + Dn("tree")));
    }
    bounds = {.entries = 2, .depth = 2};
    EXPECT_THAT(Connected().DeleteTree(Dn("tree"), &text_), IsDone());
    EXPECT_FALSE(server_.Holds(Dn("tree")));
}

}  // namespace
}  // namespace depot
