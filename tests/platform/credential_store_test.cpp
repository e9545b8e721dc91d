#include "platform/credential_store.h"

#include "platform/secret_text.h"
#include "platform/win32.h"
#include "platform/wipe.h"
#include "support/stored_credential.h"

// Behind the system's own types.
#include <wincred.h>

namespace depot {
namespace {

class CredentialStoreTest : public testing::Test {
protected:
    test::CredentialScope scope_{"DepotTests/1"};
};

TEST_F(CredentialStoreTest, WhatIsStoredIsReadAndRemoved) {
    EXPECT_FALSE(ReadCredential(scope_.Target()));
    scope_.Store("cn=anna", "s3cret", "server:389");
    const auto stored = ReadCredential(scope_.Target());
    ASSERT_TRUE(stored);
    EXPECT_EQ("cn=anna", stored->userName);
    EXPECT_EQ("s3cret", stored->password);
    EXPECT_EQ("server:389", stored->server);
    EXPECT_EQ(0u, DeleteCredential(scope_.Target()));
    EXPECT_FALSE(ReadCredential(scope_.Target()));
    EXPECT_EQ(DWORD{ERROR_NOT_FOUND}, DeleteCredential(scope_.Target()));
}

TEST_F(CredentialStoreTest, LaterPasswordReplacesTheFormerOne) {
    scope_.Store("cn=anna", "first");
    scope_.Store("cn=berta", "");
    const auto stored = ReadCredential(scope_.Target());
    ASSERT_TRUE(stored);
    EXPECT_EQ("cn=berta", stored->userName);
    EXPECT_EQ("", stored->password);
}

TEST_F(CredentialStoreTest, EntriesOfOtherProgramsAreOutOfReach) {
    wchar_t target[] = L"DepotTests/1", user[] = L"anna";
    BYTE secret[] = {'x', 0};
    CREDENTIALW entry = {};
    entry.Type = CRED_TYPE_GENERIC;
    entry.TargetName = target;
    entry.UserName = user;
    entry.Persist = CRED_PERSIST_SESSION;
    entry.CredentialBlob = secret;
    entry.CredentialBlobSize = sizeof(secret);
    ASSERT_TRUE(CredWriteW(&entry, 0));
    EXPECT_FALSE(ReadCredential(scope_.Target()));
    CredDeleteW(target, CRED_TYPE_GENERIC, 0);
}

TEST_F(CredentialStoreTest, BytesThatAreNoTextOfTheCodePageAreNothing) {
    std::wstring target = StoreTarget(scope_.Target());
    wchar_t user[] = L"anna";
    wchar_t lone[] = {0xD800};
    CREDENTIALW entry = {};
    entry.Type = CRED_TYPE_GENERIC;
    entry.TargetName = target.data();
    entry.UserName = user;
    entry.Persist = CRED_PERSIST_SESSION;
    entry.CredentialBlob = reinterpret_cast<BYTE*>(lone);
    for (const DWORD size : {DWORD{sizeof(lone)}, DWORD{1}, DWORD{0}}) {
        entry.CredentialBlobSize = size;
        ASSERT_TRUE(CredWriteW(&entry, 0));
        const auto stored = ReadCredential(scope_.Target());
        EXPECT_EQ(size < sizeof(lone), stored.has_value());
        if (stored) {
            EXPECT_EQ("", stored->password);
        }
    }
}

TEST(WipeTest, MemoryOfATextIsOverwritten) {
    std::string text(100, 'x');
    const char* const bytes = text.data();
    Wipe(text);
    EXPECT_TRUE(text.empty());
    // The text still owns them.
    for (int at = 0; at < 100; ++at) EXPECT_EQ('\0', bytes[at]);
}

TEST(WipeTest, WhatALongerTextLeftBehindIsOverwritten) {
    std::string text(100, 'x');
    const char* const bytes = text.data();
    text.resize(1);
    Wipe(text);
    for (int at = 0; at < 100; ++at) EXPECT_EQ('\0', bytes[at]);
}

TEST(WipeTest, ShortSecretLeavesNothingWhereItWasMovedFrom) {
    std::string text = "p4ssw0rd";
    const char* const bytes = text.data();
    const SecretText first = std::move(text);
    for (int at = 0; at < 8; ++at) EXPECT_EQ('\0', bytes[at]);
    SecretText second = first;
    const char* const others = second.Plain().data();
    const SecretText third = std::move(second);
    for (int at = 0; at < 8; ++at) EXPECT_EQ('\0', others[at]);
    EXPECT_EQ("p4ssw0rd", third);
}

}  // namespace
}  // namespace depot
