// A server that sends the client on to another one.
#include "support/directory_fixture.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::IsCode;
using test::IsDone;

// The second server, which sees whether anyone comes.
class ReferralsTest : public test::DirectoryFixture {
protected:
    ReferralsTest() {
        other_.AddFolder("Away", test::kSuffix);
        other_.AddFolder("Inside", kAway);
        const std::string address = "ldap://127.0.0.1:" + std::to_string(other_.Port());
        server_.Apply("dn: cn=There," + base_ +
                      "\nobjectClass: referral\nobjectClass: extensibleObject\ncn: There\nref: " +
                      address + "/" + kAway + "\n");
        other_.Mark();
    }

    CLDAPItems& Open(std::uint32_t security, std::uint32_t followReferrals) {
        CDepotPath location = server_.Location(base_);
        location.security = security;
        location.followReferrals = followReferrals;
        CLDAPItems& items = Make(location);
        EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
        return items;
    }

    static constexpr char kAway[] = "cn=Away,dc=farrow,dc=test";
    DirectoryServer other_;
};

TEST_F(ReferralsTest, NobodyIsFollowedUnlessTheLocationSaysSo) {
    for (const std::uint32_t setting : {0u, 2u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(setting);
        CLDAPItems& items = Open(0, setting);
        EXPECT_THAT(CodeOf(items.Entries().Find(Dn("There"))), IsCode(LDAP_REFERRAL));
        FileBuffer buffer;
        EXPECT_THAT(items.ReadFileContents(Dn("There"), buffer), Fails());
        EXPECT_THAT(items.ReplaceFileContents(Dn("There"), "x", 1), IsCode(LDAP_REFERRAL));
        LdapItemList found;
        items.ListChildren(base_, found);
        EXPECT_EQ("", other_.Log());
    }
}

TEST_F(ReferralsTest, LocationThatSaysSoIsFollowed) {
    CLDAPItems& items = Open(0, 1);
    EXPECT_THAT(CodeOf(items.Entries().Find(Dn("There"))), IsDone());
    EXPECT_LT(0, other_.Counts().searches);
}

TEST_F(ReferralsTest, KeptConnectionServesNoOtherSetting) {
    CLDAPItems& items = Open(0, 1);
    items.Close();
    items.Location().followReferrals = 0;
    const CallConnections call;
    bool taken = false;
    ASSERT_TRUE(items.Connection().Acquire(taken));
    items.Connection().Release();
    items.Location().followReferrals = 1;
    ASSERT_TRUE(items.Connection().Acquire(taken));
    EXPECT_THAT(CodeOf(items.Entries().Find(Dn("There"))), IsDone());
    items.Connection().Release();
}

TEST_F(ReferralsTest, SecuredLocationFollowsNobody) {
    DirectoryServer secured("tls");
    secured.Apply(
        "dn: cn=There,dc=farrow,dc=test\nobjectClass: referral\n"
        "objectClass: extensibleObject\ncn: There\nref: ldap://127.0.0.1:" +
        std::to_string(other_.Port()) + "/" + kAway + "\n");
    for (const std::uint32_t security : {1u, 2u, 7u}) {
        SCOPED_TRACE(security);
        CDepotPath location = secured.Location();
        location.host = "localhost";
        location.port = security == 2 ? secured.TlsPort() : secured.Port();
        location.security = security;
        location.followReferrals = 1;
        CLDAPItems& items = Make(location);
        ASSERT_THAT(items.ConnectLocation(&text_), IsDone());
        EXPECT_THAT(CodeOf(items.Entries().Find("cn=There,dc=farrow,dc=test")),
                    IsCode(LDAP_REFERRAL));
        EXPECT_EQ("", other_.Log());
    }
}

TEST_F(ReferralsTest, ProbeFollowsNobodyEither) {
    CLDAPItems& items = Make(server_.Location(base_));
    ASSERT_THAT(items.ConnectQuietly(), IsDone());
    EXPECT_THAT(CodeOf(items.Entries().Find(Dn("There"))), IsCode(LDAP_REFERRAL));
    EXPECT_EQ("", other_.Log());
}

}  // namespace
}  // namespace depot
