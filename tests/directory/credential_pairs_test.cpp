// Which user names and passwords are used together.
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/stored_credential.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kBob[] = "cn=bob,dc=farrow,dc=test";

// What a user typed at a prompt for this server, which nobody has used yet.
void TypeFor(CDepotPath location, const std::string& userName, const std::string& password) {
    CLDAPItems other(&location);
    other.SetUserName(userName);
    other.SetPassword(password);
    other.Connection().Shared().SetLastError(LDAP_SUCCESS);
}

CDepotPath Secured(std::uint32_t security) {
    CDepotPath location = test::SharedServer().Location();
    location.username.clear();
    location.password.clear();
    location.security = security;
    return location;
}

using CredentialPairsTest = test::DirectoryFixture;

TEST_F(CredentialPairsTest, ProbeTriesNoPasswordOfSomebodyElse) {
    TypeFor(server_.Location(), test::kEditor, test::kEditorPassword);
    CLDAPItems& items = Make(kBob, "");
    EXPECT_EQ("", items.Connection().Shared().Paired().password);
    items.Connection().Client().ldap_bind_s = [](LDAP*, PCHAR name, PCHAR password,
                                                 ULONG) -> ULONG {
        EXPECT_STREQ(kBob, name);
        EXPECT_STREQ("", password);
        return LDAP_INVALID_CREDENTIALS;
    };
    EXPECT_THAT(items.ConnectQuietly(), Fails());
}

TEST_F(CredentialPairsTest, PairServesItsOwnUserAndARecordWithoutAny) {
    TypeFor(server_.Location(), test::kEditor, test::kEditorPassword);
    for (const char* userName : {test::kEditor, ""}) {
        EXPECT_THAT(Make(userName, "").ConnectQuietly(), IsDone()) << userName;
    }
    const Credentials other = Make("", "own").Connection().Shared().Paired();
    EXPECT_EQ("", other.userName);
    EXPECT_EQ("own", other.password);
}

TEST_F(CredentialPairsTest, WithoutAPromptNothingIsFilledFromTwoSources) {
    TypeFor(server_.Location(), test::kEditor, test::kEditorPassword);
    for (const bool hasPrompt : {false, true}) {
        CLDAPItems& items = Make(kBob, "");
        if (!hasPrompt) items.Connection().SetPrompt(nullptr);
        if (hasPrompt) Info().noPrompt = 1;
        server_.Mark();
        EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
        EXPECT_EQ(0, server_.Counts().binds);
        EXPECT_EQ("", items.GetPassword());
    }
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(CredentialPairsTest, PromptFillsWhatIsMissingOnce) {
    TypeFor(server_.Location(), test::kEditor, test::kEditorPassword);
    CLDAPItems& items = Make(kBob, "");
    server_.Mark();
    // The filling is tried, and then shown to the user, who cancels.
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    EXPECT_EQ(1, server_.Counts().binds);
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(kBob, prompt_.shown[0].userName);
    EXPECT_EQ(test::kEditorPassword, prompt_.shown[0].password);
    EXPECT_EQ("", items.GetPassword());
    // Somebody logs on elsewhere, and prompts are allowed again: the user is asked, nothing tried.
    Info().noPrompt = 0;
    Info().lastError = 0;
    server_.Mark();
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    EXPECT_EQ(0, server_.Counts().binds);
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(CredentialPairsTest, WhatWasTypedForASecuredLocationServesNoOpenOne) {
    TypeFor(Secured(1), test::kEditor, test::kEditorPassword);
    EXPECT_EQ("", Make(Secured(0)).Connection().Shared().Paired().userName);
    EXPECT_EQ("", items_->Connection().Shared().Known().password);
    EXPECT_EQ(test::kEditor, Make(Secured(1)).Connection().Shared().Paired().userName);
    EXPECT_EQ(test::kEditor, Make(Secured(7)).Connection().Shared().Paired().userName);
}

class StoredCredentialsTest : public test::DirectoryFixture {
protected:
    CLDAPItems& MakeStored(std::uint32_t security = 0) {
        CDepotPath location = Secured(security);
        location.credentialTarget = stored_.Target();
        return Make(location);
    }
    std::string Key() const { return ServerKey("127.0.0.1", server_.Port()); }

    test::CredentialScope stored_{"DepotTests/2"};
};

TEST_F(StoredCredentialsTest, LocationWithoutAPasswordLogsOnWithThePair) {
    stored_.Store(test::kEditor, test::kEditorPassword, Key());
    server_.Mark();
    CLDAPItems& items = MakeStored();
    items.Location().username = test::kReader;
    EXPECT_THAT(CodeOf(items.Connection().Open()), IsDone());
    EXPECT_THAT(server_.Log(), HasSubstr(test::kEditor));
    EXPECT_EQ("", items.GetPassword()) << "it does not stay in memory";
    EXPECT_THAT(MakeStored().ConnectQuietly(), IsDone());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(StoredCredentialsTest, WhatTheUserWantsStoredIsStoredOnceItWasAccepted) {
    prompt_.answers.push_back(Credentials{{}, test::kEditor, "wrong", 0, false, false, true});
    prompt_.answers.push_back(
        Credentials{{}, test::kEditor, test::kEditorPassword, 0, false, false, true});
    EXPECT_THAT(MakeStored().PromptAndConnect(&text_), IsDone());
    ASSERT_EQ(2u, prompt_.shown.size());
    EXPECT_TRUE(prompt_.shown[0].mayBeStored);
    EXPECT_FALSE(prompt_.shown[0].isSecured);
    const auto stored = ReadCredential(stored_.Target());
    ASSERT_TRUE(stored);
    EXPECT_EQ(test::kEditor, stored->userName);
    EXPECT_EQ(test::kEditorPassword, stored->password);
    EXPECT_EQ(Key(), stored->server);
}

TEST_F(StoredCredentialsTest, WhatWasRefusedOrIsNotWantedIsNotStored) {
    prompt_.answers.push_back(Credentials{{}, test::kEditor, "wrong", 0, false, false, true});
    EXPECT_THAT(MakeStored().PromptAndConnect(&text_), Fails());
    EXPECT_FALSE(ReadCredential(stored_.Target()));
    Info().noPrompt = 0;
    Info().lastError = 0;
    // The wish holds for what it was given with alone.
    prompt_.answers.push_back(Credentials{{}, test::kEditor, "wrong", 0, false, false, true});
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(MakeStored().PromptAndConnect(&text_), IsDone());
    EXPECT_FALSE(ReadCredential(stored_.Target()));
}

TEST_F(StoredCredentialsTest, CancelEndsTheWishToStore) {
    prompt_.answers.push_back(Credentials{{}, test::kEditor, "wrong", 0, false, false, true});
    CLDAPItems& items = MakeStored();
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    items.SetUserName(test::kEditor);
    items.SetPassword(test::kEditorPassword);
    EXPECT_THAT(items.ConnectQuietly(), IsDone());
    EXPECT_FALSE(ReadCredential(stored_.Target()));
}

TEST_F(StoredCredentialsTest, LocationWithoutATargetOffersNoStoring) {
    prompt_.answers.push_back(
        Credentials{{}, test::kEditor, test::kEditorPassword, 0, false, false, true});
    EXPECT_THAT(Make(Secured(0)).PromptAndConnect(&text_), IsDone());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_FALSE(prompt_.shown[0].mayBeStored);
    EXPECT_FALSE(ReadCredential(stored_.Target()));
}

TEST_F(StoredCredentialsTest, PasswordOfTheDefinitionComesFirst) {
    stored_.Store(test::kEditor, "wrong", Key());
    CDepotPath location = server_.Location();
    location.credentialTarget = stored_.Target();
    EXPECT_THAT(Make(location).ConnectQuietly(), IsDone());
}

TEST_F(StoredCredentialsTest, PairOfAnotherServerOrOfASecuredOneIsNotUsed) {
    const std::string secured = SecuredServerKey("127.0.0.1", server_.Port());
    for (const std::string& server : {secured, std::string("other:389")}) {
        stored_.Store(test::kEditor, test::kEditorPassword, server);
        EXPECT_EQ("", MakeStored().Connection().Shared().Own().password) << server;
    }
    stored_.Store(test::kEditor, test::kEditorPassword, secured);
    EXPECT_EQ(test::kEditorPassword, MakeStored(1).Connection().Shared().Own().password);
    stored_.Store(test::kEditor, test::kEditorPassword);
    EXPECT_EQ(test::kEditorPassword, MakeStored().Connection().Shared().Own().password);
}

TEST_F(StoredCredentialsTest, UserIsAskedWhereNothingIsStoredOrItIsRefused) {
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(CodeOf(MakeStored().Connection().Open()), IsDone());
    EXPECT_EQ(1u, prompt_.shown.size());
    test::ForgetServer(server_.Port());
    stored_.Store(test::kEditor, "outdated", Key());
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(CodeOf(MakeStored().Connection().Open()), IsDone());
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(StoredCredentialsTest, RefusedPairIsNotTriedAgainAfterACancel) {
    stored_.Store(test::kEditor, "outdated", Key());
    CLDAPItems& items = MakeStored();
    EXPECT_THAT(CodeOf(items.Connection().Open()), Not(IsDone()));
    server_.Mark();
    EXPECT_THAT(CodeOf(items.Connection().Open()), Not(IsDone()));
    EXPECT_EQ(0, server_.Counts().binds);
}

TEST_F(StoredCredentialsTest, AnonymousLocationLooksNothingUp) {
    stored_.Store(test::kEditor, test::kEditorPassword, Key());
    CLDAPItems& items = MakeStored();
    for (const std::uint32_t kind : {kAnonymousAuthentication, kNegotiateAuthentication}) {
        items.Location().authentication = kind;
        EXPECT_EQ("", items.Connection().Shared().Own().password);
    }
}

}  // namespace
}  // namespace depot
