// The system handles that working with a directory leaves open.
#include "support/directory_fixture.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

using HandlesTest = test::DirectoryFixture;

constexpr std::size_t kRounds = 20;

// How many handles more are open after so many calls, the first ones apart: they fill what the
// system and the client keep for the life of the process.
template <class Call>
std::size_t Leftover(const Call& call) {
    for (int round = 0; round < 3; ++round) call();
    const std::size_t before = test::CountOpenHandles();
    for (int round = 0; round < static_cast<int>(kRounds); ++round) call();
    const std::size_t after = test::CountOpenHandles();
    return after > before ? after - before : 0;
}

TEST_F(HandlesTest, OpenConnectionIsSeenByTheCount) {
    const std::size_t before = test::CountOpenHandles();
    Connected();
    EXPECT_GT(test::CountOpenHandles(), before);
}

TEST_F(HandlesTest, ConnectingListingReadingAndClosingLeaveNoneOpen) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "text");
    CDepotPath location = server_.Location(base_);
    EXPECT_EQ(0u, Leftover([&] {
                  CLDAPItems items(&location);
                  EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
                  LdapItemList children;
                  EXPECT_THAT(items.ListChildren(base_, children), IsDone());
                  EXPECT_EQ(2u, children.Count());
                  FileBuffer buffer;
                  EXPECT_THAT(items.ReadFileContents("cn=a.krc," + base_, buffer), IsDone());
                  EXPECT_EQ(4u, buffer.length);
                  EXPECT_THAT(items.Close(), IsDone());
              }));
}

int unbinds = 0;

ULONG LDAPAPI CountUnbind(LDAP* /*connection*/) {
    ++unbinds;
    return LDAP_SUCCESS;
}

TEST_F(HandlesTest, ConnectionThatIsLeftIsNeverUnbound) {
    CDepotPath location = server_.Location(base_);
    for (const bool isLeft : {true, false}) {
        unbinds = 0;
        {
            CLDAPItems items(&location);
            EXPECT_FALSE(items.Connection().Leave());
            EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
            items.Client().ldap_unbind_s = &CountUnbind;
            if (isLeft) {
                EXPECT_TRUE(items.Connection().Leave());
                EXPECT_FALSE(items.IsConnected());
                EXPECT_FALSE(items.Connection().Leave());
            }
        }
        EXPECT_EQ(isLeft ? 0 : 1, unbinds);
    }
}

TEST_F(HandlesTest, ObjectsThatAreNeverClosedLeaveNoneOpen) {
    CDepotPath location = server_.Location(base_);
    EXPECT_EQ(0u, Leftover([&] {
                  CLDAPItems items(&location);
                  EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
                  FileBuffer buffer;
                  EXPECT_THAT(items.ReadFileContents("cn=missing," + base_, buffer), Fails());
              }));
}

// Every access to the server's shared block keeps one handle, and the object closes the last one
// only; nothing else may be left over.
TEST_F(HandlesTest, ReopeningOneObjectLeavesTheHandleOfEachAccessOnly) {
    constexpr std::size_t kAccesses = 1;  // the cleared error
    CDepotPath location = server_.Location(base_);
    CLDAPItems items(&location);
    EXPECT_EQ(kRounds * kAccesses, Leftover([&] {
                  EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
                  EXPECT_THAT(items.Close(), IsDone());
              }));
}

TEST_F(HandlesTest, AbsentServerLeavesTheHandlesOfTheAccessesButTheLast) {
    constexpr std::size_t kAccesses = 3;  // no prompts, the error, its text
    CDepotPath location = server_.Location(base_);
    location.port = test::ClosedPort();
    location.authentication = kAnonymousAuthentication;
    const std::size_t leftover = Leftover([&] {
        CLDAPItems items(&location);
        EXPECT_THAT(items.ConnectLocation(nullptr), Fails());
    });
    // The message boxes may add a handle or two of their own, but none for each of them.
    EXPECT_GE(leftover, kRounds * (kAccesses - 1));
    EXPECT_LT(leftover, kRounds * kAccesses);
    test::ForgetServer(location.port);
}

// A call that goes wrong, and how often it opens the server's shared block on its way.
struct Fault {
    const char* name;
    std::uint32_t authentication;
    void (*cause)(DirectoryClient& client);
    std::size_t accesses;
};

class FaultHandlesTest : public test::DirectoryFixture {
protected:
    // One connection and one reading, as far as they get.
    void Work(const Fault& fault, CDepotPath& location) {
        test::ForgetServer(location.port);
        CLDAPItems items(&location);
        items.Connection().SetPrompt(&prompt_);
        fault.cause(items.Client());
        items.ConnectLocation(nullptr);
        LdapItemList children;
        items.ListChildren(base_, children);
        FileBuffer buffer;
        items.ReadFileContents("cn=a.krc," + base_, buffer);
        items.DeleteTree("cn=missing," + base_, nullptr);
        items.Close();
    }
};

TEST_F(FaultHandlesTest, EveryFaultLeavesTheHandlesOfTheAccessesButTheLast) {
    constexpr std::size_t kReport = 2;  // the error, its text
    const Fault faults[] = {
        {"no connection", kAnonymousAuthentication,
         [](DirectoryClient& client) {
             client.ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
         },
         kReport},
        {"no version", kAnonymousAuthentication,
         [](DirectoryClient& client) {
             client.ldap_set_option = [](LDAP*, int, const void*) -> ULONG {
                 return LDAP_PARAM_ERROR;
             };
         },
         kReport},
        {"no anonymous bind", kAnonymousAuthentication,
         [](DirectoryClient& client) {
             client.ldap_simple_bind_s = [](LDAP*, PCHAR, PCHAR) -> ULONG {
                 return LDAP_INAPPROPRIATE_AUTH;
             };
         },
         1 + kReport},  // no prompts, the report
        {"no simple bind", kSimpleAuthentication,
         [](DirectoryClient& client) {
             client.ldap_bind_s = [](LDAP*, PCHAR, PCHAR, ULONG) -> ULONG {
                 return LDAP_INVALID_CREDENTIALS;
             };
         },
         // The report, prompts wanted?, an error known?, no more prompts, the cancel's report.
         kReport + 1 + 1 + 1 + kReport},
        {"no search", kSimpleAuthentication,
         [](DirectoryClient& client) {
             client.ldap_search_s = [](LDAP*, PCHAR, ULONG, PCHAR, PCHAR*, ULONG,
                                       LDAPMessage** result) -> ULONG {
                 *result = nullptr;
                 return LDAP_BUSY;
             };
         },
         1},  // the cleared error
        {"no attributes", kSimpleAuthentication,
         [](DirectoryClient& client) {
             client.ldap_first_attribute = [](LDAP*, LDAPMessage*, BerElement**) -> PCHAR {
                 return nullptr;
             };
         },
         1},
        {"no values", kSimpleAuthentication,
         [](DirectoryClient& client) {
             client.ldap_get_values = [](LDAP*, LDAPMessage*, PCHAR) -> PCHAR* { return nullptr; };
             client.ldap_get_values_len = [](LDAP*, LDAPMessage*, PCHAR) -> berval** {
                 return nullptr;
             };
         },
         1},
    };
    server_.AddFile("a.krc", base_, "text");
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        CDepotPath location = server_.Location(base_);
        location.authentication = fault.authentication;
        const std::size_t leftover = Leftover([&] { Work(fault, location); });
        // The message boxes may add a handle or two of their own, but none for each of them.
        EXPECT_GE(leftover, kRounds * (fault.accesses - 1));
        EXPECT_LT(leftover, kRounds * (fault.accesses - 1) + kRounds);
    }
}

TEST_F(FaultHandlesTest, ServerThatStopsBetweenTheCallsLeavesNoneOpen) {
    test::DirectoryServer server;
    CDepotPath location = server.Location();
    EXPECT_EQ(0u, Leftover([&] {
                  CLDAPItems items(&location);
                  ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
                  server.Stop();
                  LdapItemList children;
                  EXPECT_THAT(items.ListChildren(test::kSuffix, children), Fails());
                  items.Close();
                  server.Continue();
              }));
}

}  // namespace
}  // namespace depot
