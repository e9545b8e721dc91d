// Deleting an entry only while it holds what it is believed to hold.
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

Digest DigestOfText(const std::string& text) {
    return DigestOf(text.data(), text.size());
}

DirectoryClient genuine;

class ConditionalDeletionTest : public test::DirectoryFixture {
protected:
    ConditionalDeletionTest() {
        server_.AddFile("a.krc", base_, "old");
        genuine = Connected().Client();
    }
    std::uint32_t Remove(const std::string& contents) {
        return CodeOf(Connected().Entries().RemoveUnchanged(Dn("a.krc"), DigestOfText(contents)));
    }
};

TEST_F(ConditionalDeletionTest, UnchangedEntryIsDeleted) {
    EXPECT_THAT(Remove("old"), IsDone());
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
}

TEST_F(ConditionalDeletionTest, ChangedEntryStays) {
    EXPECT_EQ(kContentsChanged, Remove("other"));
    EXPECT_TRUE(server_.Holds(Dn("a.krc")));
}

TEST_F(ConditionalDeletionTest, FileWithoutBytesIsTheOneThatHoldsABlank) {
    Connected().AddFileEntry(Dn("b.krc"), "b.krc", nullptr, 0);
    EXPECT_THAT(CodeOf(Connected().Entries().RemoveUnchanged(Dn("b.krc"), DigestOfText(" "))),
                IsDone());
    EXPECT_FALSE(server_.Holds(Dn("b.krc")));
}

TEST_F(ConditionalDeletionTest, MissingEntryAndEntryThatIsNoFileReportTheirCodes) {
    server_.AddFolder("sub", base_);
    EXPECT_THAT(CodeOf(Connected().Entries().RemoveUnchanged(Dn("none.krc"), DigestOfText(""))),
                Fails(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(kContentsChanged,
              CodeOf(Connected().Entries().RemoveUnchanged(Dn("sub"), DigestOfText(""))));
    EXPECT_TRUE(server_.Holds(Dn("sub")));
}

// The change comes after the look, just before the deletion.
TEST_F(ConditionalDeletionTest, ChangeAfterTheLookIsSeenByTheServer) {
    static test::DirectoryServer* server;
    static std::string dn;
    server = &server_;
    dn = Dn("a.krc");
    Connected().Client().ldap_delete_ext_s = [](LDAP* connection, const PCHAR name,
                                                PLDAPControlA* controls,
                                                PLDAPControlA* clientControls) -> ULONG {
        server->Apply("dn: " + dn +
                      "\nchangetype: modify\nreplace: quillonFileContentsBinary\n"
                      "quillonFileContentsBinary: new\n");
        return genuine.ldap_delete_ext_s(connection, name, controls, clientControls);
    };
    EXPECT_EQ(kContentsChanged, Remove("old"));
    EXPECT_TRUE(server_.Holds(Dn("a.krc")));
}

TEST_F(ConditionalDeletionTest, ServerThatCannotCompareDeletesWhatWasLookedAt) {
    for (const ULONG code : {ULONG{kContentsChanged}, ULONG{LDAP_UNAVAILABLE_CRIT_EXTENSION}}) {
        SCOPED_TRACE(code);
        static ULONG answer;
        answer = code;
        Connected().Client().ldap_delete_ext_s = [](LDAP*, const PCHAR, PLDAPControlA*,
                                                    PLDAPControlA*) -> ULONG { return answer; };
        EXPECT_THAT(Remove("old"), IsDone());
        EXPECT_FALSE(server_.Holds(Dn("a.krc")));
        server_.AddFile("a.krc", base_, "old");
    }
}

TEST_F(ConditionalDeletionTest, LargeContentsAreNoConditionOfTheRequest) {
    const std::string bytes(kLargestCondition + 1, 'x');
    Connected().ReplaceFileContents(Dn("a.krc"), bytes.data(),
                                    static_cast<std::uint32_t>(bytes.size()));
    Connected().Client().ldap_delete_ext_s = [](LDAP*, const PCHAR, PLDAPControlA*,
                                                PLDAPControlA*) -> ULONG { return LDAP_BUSY; };
    EXPECT_THAT(Remove(bytes), IsDone());
    EXPECT_FALSE(server_.Holds(Dn("a.krc")));
}

}  // namespace
}  // namespace depot
