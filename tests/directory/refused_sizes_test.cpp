#include "directory/refused_sizes.h"

#include "support/directory_fixture.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::IsDone;
using testing::HasSubstr;

TEST(RefusedSizesTest, NameIsBlamedWhereItIsLongAndTheServerRefusesAValue) {
    for (const std::uint32_t code : {LDAP_CONSTRAINT_VIOLATION, LDAP_INVALID_SYNTAX}) {
        EXPECT_FALSE(RefusedName(code, "short.kra", 64));
        const std::optional<Error> refused = RefusedName(code, "long.kra", 65);
        ASSERT_TRUE(refused);
        EXPECT_EQ(code, refused->code);
        EXPECT_EQ(Reason::kBadName, refused->reason);
        EXPECT_EQ(
            "\"long.kra\": the directory does not take this name of 65 characters. "
            "Some take 64 at most.",
            refused->text);
    }
    EXPECT_FALSE(RefusedName(LDAP_INSUFFICIENT_RIGHTS, "long.kra", 65));
    EXPECT_FALSE(RefusedName(LDAP_SUCCESS, "long.kra", 65));
}

// The server's part is played by the client's entry points.
class RefusedContentsTest : public test::DirectoryFixture {
protected:
    static ULONG LDAPAPI LoseConnection(LDAP*, PCHAR, LDAPModA**) { return LDAP_SERVER_DOWN; }

    Result Add(CLDAPItems& items, std::uint32_t length) {
        const std::string bytes(length, 'x');
        return items.Entries().AddFile(Dn("a.kra"), "a.kra", bytes.data(), length);
    }
};

TEST_F(RefusedContentsTest, LargeFileIsBlamedWhereTheServerAnswersAgain) {
    CLDAPItems& items = Connected();
    items.Client().ldap_add_s = &LoseConnection;
    items.Client().ldap_modify_s = &LoseConnection;
    const Result added = Add(items, kLargeContents + 1);
    EXPECT_THAT(added, Fails(LDAP_ADMIN_LIMIT_EXCEEDED));
    EXPECT_THAT(added.Text(), HasSubstr("\"a.kra\": the directory ended the connection over these "
                                        "1048577 bytes"));
    const std::string bytes(kLargeContents + 1, 'x');
    EXPECT_THAT(items.Entries().Replace(Dn("a.kra"), bytes.data(), kLargeContents + 1),
                Fails(LDAP_ADMIN_LIMIT_EXCEEDED));
    // The connection is another one, and serves on.
    EXPECT_THAT(items.Entries().Find(base_), IsDone());
}

TEST_F(RefusedContentsTest, SmallerFileIsNotBlamed) {
    Connected().Client().ldap_add_s = &LoseConnection;
    EXPECT_THAT(Add(Connected(), kLargeContents), Fails(LDAP_SERVER_DOWN));
}

TEST_F(RefusedContentsTest, LargeFileIsNotBlamedWhereTheServerIsAway) {
    DirectoryServer server;
    const auto location = server.Location(test::kSuffix).Clone();
    CLDAPItems items(location.get());
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    items.Client().ldap_add_s = &LoseConnection;
    server.Stop();
    EXPECT_THAT(Add(items, kLargeContents + 1), Fails(LDAP_SERVER_DOWN));
}

TEST_F(RefusedContentsTest, FilesBesideALargeOneAreStored) {
    CLDAPItems& items = Connected();
    items.Client().ldap_add_s = &LoseConnection;
    FileBuffer small = {1, std::make_unique<std::uint8_t[]>(1 + kFileBufferReserve)};
    FileBuffer large = {kLargeContents + 1,
                        std::make_unique<std::uint8_t[]>(kLargeContents + 1 + kFileBufferReserve)};
    std::vector<ContentsWrite> files;
    files.push_back({Dn("a.kra"), "a.kra", &small});
    files.push_back({Dn("large.kra"), "large.kra", &large});
    files.push_back({Dn("b.kra"), "b.kra", &small});
    items.Entries().AddFilesTogether(files);
    EXPECT_THAT(files[0].result, IsDone());
    EXPECT_THAT(files[1].result, Fails(LDAP_ADMIN_LIMIT_EXCEEDED));
    EXPECT_THAT(files[2].result, IsDone());
    EXPECT_TRUE(Holds(Dn("b.kra")));
}

}  // namespace
}  // namespace depot
