// Whatever the client library hands out is given back, however a transfer ends.
#include "directory_files/directory_world.h"
#include "support/directory_transfer.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using test::kNo;

constexpr ExistingEntries kReplace = ExistingEntries::kReplace;

// What is out: handed out less given back.
struct Balance {
    int messages = 0, texts = 0, values = 0, bytes = 0, positions = 0;
    int handedOut = 0;
};
Balance balance;
DirectoryClient real;

template <class Pointer>
Pointer Out(int& count, Pointer pointer) {
    if (pointer != nullptr) ++count, ++balance.handedOut;
    return pointer;
}
template <class Pointer>
Pointer Back(int& count, Pointer pointer) {
    if (pointer != nullptr) --count;
    return pointer;
}

// Counts through the table of entry points.
void CountMessages(DirectoryClient& client) {
    client.ldap_search_s = [](LDAP* connection, PCHAR base, ULONG scope, PCHAR filter,
                              PCHAR* attributes, ULONG typesOnly, LDAPMessage** result) -> ULONG {
        const ULONG code =
            real.ldap_search_s(connection, base, scope, filter, attributes, typesOnly, result);
        Out(balance.messages, *result);
        return code;
    };
    client.ldap_result = [](LDAP* connection, ULONG id, ULONG all, l_timeval* limit,
                            LDAPMessage** result) -> ULONG {
        const ULONG kind = real.ldap_result(connection, id, all, limit, result);
        Out(balance.messages, *result);
        return kind;
    };
    client.ldap_msgfree = [](LDAPMessage* message) -> ULONG {
        return real.ldap_msgfree(Back(balance.messages, message));
    };
}

void CountTexts(DirectoryClient& client) {
    client.ldap_get_dn = [](LDAP* connection, LDAPMessage* entry) -> PCHAR {
        return Out(balance.texts, real.ldap_get_dn(connection, entry));
    };
    client.ldap_first_attribute = [](LDAP* connection, LDAPMessage* entry,
                                     BerElement** position) -> PCHAR {
        const PCHAR name = real.ldap_first_attribute(connection, entry, position);
        Out(balance.positions, *position);
        return Out(balance.texts, name);
    };
    client.ldap_next_attribute = [](LDAP* connection, LDAPMessage* entry,
                                    BerElement* position) -> PCHAR {
        return Out(balance.texts, real.ldap_next_attribute(connection, entry, position));
    };
    client.ldap_memfree = [](PCHAR text) { real.ldap_memfree(Back(balance.texts, text)); };
    client.ber_free = [](BerElement* position, INT buffer) {
        real.ber_free(Back(balance.positions, position), buffer);
    };
}

void CountValues(DirectoryClient& client) {
    client.ldap_get_values = [](LDAP* connection, LDAPMessage* entry, PCHAR attribute) -> PCHAR* {
        return Out(balance.values, real.ldap_get_values(connection, entry, attribute));
    };
    client.ldap_explode_dn = [](PCHAR dn, ULONG noTypes) -> PCHAR* {
        return Out(balance.values, real.ldap_explode_dn(dn, noTypes));
    };
    client.ldap_value_free = [](PCHAR* values) -> ULONG {
        return real.ldap_value_free(Back(balance.values, values));
    };
    client.ldap_get_values_len = [](LDAP* connection, LDAPMessage* entry,
                                    PCHAR attribute) -> berval** {
        return Out(balance.bytes, real.ldap_get_values_len(connection, entry, attribute));
    };
    client.ldap_value_free_len = [](berval** values) -> ULONG {
        return real.ldap_value_free_len(Back(balance.bytes, values));
    };
}

class ClientMemoryTest : public test::DirectoryWorldTest {
protected:
    ClientMemoryTest() {
        DirectoryClient& client = Directory().Client();
        real = client;
        CountMessages(client);
        CountTexts(client);
        CountValues(client);
        balance = {};
    }
    ~ClientMemoryTest() override {
        EXPECT_GT(balance.handedOut, 0);
        EXPECT_EQ(0, balance.messages);
        EXPECT_EQ(0, balance.texts);
        EXPECT_EQ(0, balance.values);
        EXPECT_EQ(0, balance.bytes);
        EXPECT_EQ(0, balance.positions);
    }
};

TEST_F(ClientMemoryTest, IsGivenBackByTransfersThatSucceed) {
    EXPECT_THAT(Upload(Directory(), MakeTree(), DN("cn=tree"), kReplace, &error_), IsDone());
    EXPECT_THAT(Download(Directory(), DN("cn=tree"), At("out"), &error_), IsDone());
    EXPECT_THAT(
        CopyEntry(Directory(), DN("cn=tree"), Directory(), DN("cn=copy"), kReplace, &error_),
        IsDone());
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=copy"), DN("cn=other"), &error_), IsDone());
    test::RefuseTreeRenames(Directory());
    EXPECT_THAT(MoveEntry(Directory(), DN("cn=other"), DN("cn=moved"), &error_), IsDone());
    EXPECT_THAT(Download(Directory(), DN("cn=a.kra,cn=moved"), At("a.kra"), &error_, {}, kReplace,
                         SourceFate::kGoes),
                IsDone());
    EXPECT_THAT(RemoveEntry(Directory(), DN("cn=moved"), &error_), IsDone());
}

TEST_F(ClientMemoryTest, IsGivenBackByTransfersThatFail) {
    const std::string tree = AddTree("tree");
    AddHostileEntries(tree);
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_), Fails());
    EXPECT_THAT(Download(Directory(), DN("cn=none"), At("x"), &error_), Fails());
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), kReplace, &error_),
                Fails());
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), "cn=x," + tree, kReplace, &error_),
                Fails());
    EXPECT_THAT(MoveEntry(Directory(), tree, "no name", &error_), Fails());
    EXPECT_THAT(Upload(Directory(), At("none"), DN("cn=b.kra"), kReplace, &error_), Fails());
    EXPECT_EQ(kNo, EntryExists(Directory(), DN("cn=none"), &error_));
}

}  // namespace
}  // namespace depot
