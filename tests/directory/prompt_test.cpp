#include <algorithm>
#include <cstring>
#include <random>

#include "directory/taken_block.h"
#include "support/child_process.h"
#include "support/hostile_server.h"
#include "support/others_object.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::ElementsAre;
using testing::IsEmpty;

using PromptTest = test::DirectoryFixture;

// Another process connects anonymously. The exit code holds what it saw: 1 for a connection, 2 for
// each prompt.
int ConnectAnonymously(const test::Arguments& arguments) {
    const test::BoxLog boxes;
    test::ScriptedPrompt prompt;
    CDepotPath location(nullptr);
    location.host = "127.0.0.1";
    location.port = static_cast<std::uint32_t>(std::stoul(arguments.at(0)));
    location.authentication = kAnonymousAuthentication;
    CLDAPItems items(&location);
    items.Connection().SetPrompt(&prompt);
    const int connected = items.ConnectLocation(nullptr);
    return connected + 2 * static_cast<int>(prompt.shown.size());
}
const test::RoleRegistration connectAnonymously("connect-anonymously", &ConnectAnonymously);

TEST_F(PromptTest, OtherAuthenticationsNeverShowTheDialog) {
    for (const std::uint32_t kind :
         {kAnonymousAuthentication, kNegotiateAuthentication, AuthenticationKind{5}}) {
        CDepotPath location = server_.Location();
        location.authentication = kind;
        location.username.clear();
        CLDAPItems& items = Make(location);
        Info().lastError = 49;
        EXPECT_THAT(items.PromptForCredentials(), IsDone());
    }
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(PromptTest, KnownCredentialsWithoutARecordedErrorAreUsedAsTheyAre) {
    CLDAPItems& items = Make("anna", "secret");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_EQ("anna", items.GetUserName());
    EXPECT_EQ("secret", items.GetPassword());
}

TEST_F(PromptTest, SharedCredentialsFillAnEmptyRecord) {
    Make("", "").SetUserName("shared name");
    items_->SetPassword("shared word");
    CLDAPItems& items = Make("", "");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_EQ("shared name", items.GetUserName());
    EXPECT_EQ("shared word", items.GetPassword());
}

TEST_F(PromptTest, RecordsCredentialsPrecedeTheSharedOnes) {
    Make("", "").SetUserName("shared name");
    items_->SetPassword("shared word");
    CLDAPItems& items = Make("anna", "");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    EXPECT_EQ("anna", items.GetUserName());
    EXPECT_EQ("shared word", items.GetPassword());
}

TEST_F(PromptTest, RecordedErrorOpensTheDialogFilledWithWhatIsKnown) {
    CLDAPItems& items = Make("anna", "secret");
    Info().lastError = 49;
    prompt_.Type("berta", "new secret");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ("127.0.0.1", prompt_.shown[0].server);
    EXPECT_EQ("anna", prompt_.shown[0].userName);
    EXPECT_EQ("secret", prompt_.shown[0].password);
}

TEST_F(PromptTest, RecordedErrorOpensTheDialogFilledWithSharedCredentials) {
    CLDAPItems& items = Make("", "");
    items.SetUserName("anna");
    items.SetPassword("secret");
    items.Location().username.clear();
    items.Location().password.clear();
    Info().lastError = 49;
    prompt_.Type("berta", "new secret");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ("anna", prompt_.shown[0].userName);
    EXPECT_EQ("secret", prompt_.shown[0].password);
}

TEST_F(PromptTest, MissingCredentialsOpenTheDialogAlsoWithoutAnError) {
    Make("anna", "").PromptForCredentials();
    ForgetServer(server_.Port());
    Make("", "secret").PromptForCredentials();
    EXPECT_EQ(2u, prompt_.shown.size());
}

TEST_F(PromptTest, ConfirmedDialogIsKeptInTheRecordAndInTheSharedBlock) {
    CLDAPItems& items = Make("", "");
    prompt_.Type("berta", "new secret");
    EXPECT_THAT(items.PromptForCredentials(), IsDone());
    EXPECT_EQ("berta", items.GetUserName());
    EXPECT_EQ("new secret", items.GetPassword());
    EXPECT_EQ("berta", items.GetSharedUserName());
    EXPECT_EQ("new secret", items.GetSharedPassword());
    EXPECT_EQ(0u, Info().noPrompt);
}

TEST_F(PromptTest, CancelledDialogEmptiesThePasswordAndTurnsPromptingOff) {
    CLDAPItems& items = Make("anna", "secret");
    Info().lastError = 49;
    EXPECT_THAT(items.PromptForCredentials(), Fails());
    EXPECT_EQ("anna", items.GetUserName());
    EXPECT_EQ("", items.GetPassword());
    EXPECT_EQ(1u, Info().noPrompt);
}

TEST_F(PromptTest, TypedTextsAreCutToTheSharedFields) {
    CLDAPItems& items = Make("", "");
    items.SetUserName(std::string(259, 'u'));
    items.SetPassword(std::string(260, 'p'));
    EXPECT_EQ(std::string(259, 'u'), items.GetSharedUserName());
    EXPECT_EQ(std::string(259, 'p'), items.GetSharedPassword());
    EXPECT_EQ(std::string(260, 'p'), items.GetPassword());
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    items.SetUserName("short");
    EXPECT_EQ("short", items.GetSharedUserName());
    EXPECT_EQ(std::string(259, 'p'), items.GetSharedPassword());
}

TEST_F(PromptTest, FieldWithoutATerminatorIsReadWithinItsBounds) {
    CLDAPItems& items = Make("", "");
    std::fill_n(Info().userName, sizeof(DirectoryInfo::userName), 'x');
    std::fill_n(Info().password, sizeof(DirectoryInfo::password), 'y');
    EXPECT_EQ(std::string(260, 'x'), items.GetSharedUserName());
    EXPECT_EQ(std::string(260, 'y'), items.GetSharedPassword());
}

TEST_F(PromptTest, WrongPasswordIsAskedForUntilItIsRight) {
    CLDAPItems& items = Make(test::kEditor, "wrong");
    prompt_.Type(test::kEditor, "wrong again");
    prompt_.Type(test::kEditor, test::kEditorPassword);
    server_.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_TRUE(items.IsConnected());
    EXPECT_EQ(2u, prompt_.shown.size());
    EXPECT_EQ("wrong again", prompt_.shown[1].password);
    EXPECT_EQ(3, server_.Counts().binds);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS),
                                            MessageFor(LDAP_INVALID_CREDENTIALS)));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ(test::kEditorPassword, items.GetSharedPassword());
}

TEST_F(PromptTest, CancelledPromptIsReportedAsCancelled) {
    CLDAPItems& items = Make(test::kEditor, "wrong");
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(MessageFor(LDAP_USER_CANCELLED), text_);
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_EQ("", items.GetPassword());
    EXPECT_FALSE(items.IsConnected());
    EXPECT_TRUE(items.IsUsable());
    EXPECT_THAT(boxes_.Texts(),
                ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS), MessageFor(LDAP_USER_CANCELLED)));
    const test::ShownBox box = boxes_.Boxes()[1];
    EXPECT_EQ("Quillon", box.caption);
    EXPECT_TRUE(box.hasErrorIcon);
}

TEST_F(PromptTest, AfterACancelNoPromptAppearsAgainForThatServer) {
    Make(test::kEditor, "wrong").ConnectLocation(nullptr);
    CLDAPItems& items = Make(test::kEditor, "wrong");
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(3u, boxes_.Boxes().size());
}

TEST_F(PromptTest, PromptAndConnectUsesKnownCredentialsUnasked) {
    CLDAPItems& items = Make(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(items.PromptAndConnect(&text_), IsDone());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(PromptTest, WhatOneLocationLearnsServesTheOthersOfItsServer) {
    prompt_.Type(test::kEditor, test::kEditorPassword);
    ASSERT_THAT(Make("", "").PromptAndConnect(nullptr), IsDone());
    CLDAPItems& other = Make("", "");
    EXPECT_THAT(other.PromptAndConnect(nullptr), IsDone());
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(PromptTest, SecondFailureThatNoPromptCouldChangeIsFinal) {
    CDepotPath location = server_.Location();
    location.authentication = 5;
    location.password = "wrong";
    CLDAPItems& items = Make(location);
    server_.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_EQ(2, server_.Counts().binds);
    EXPECT_THAT(items.LastError(), IsCode(LDAP_INVALID_CREDENTIALS));
    EXPECT_FALSE(items.IsUsable());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(PromptTest, WithoutASharedBlockTheRecordStillServes) {
    Make(test::kEditor, "wrong");
    const UniqueHandle taken = test::TakeTheBlocksName(place_);
    items_->SetUserName("anna");
    items_->SetPassword("secret");
    EXPECT_EQ("anna", items_->GetUserName());
    EXPECT_EQ("secret", items_->GetPassword());
    EXPECT_EQ("", items_->GetSharedUserName());
    EXPECT_EQ("", items_->GetSharedPassword());
    items_->SetUserName(test::kEditor);
    items_->SetPassword(test::kEditorPassword);
    EXPECT_THAT(items_->ConnectLocation(&text_), IsDone());
}

TEST_F(PromptTest, LogOnThatSomebodyElsePlantedIsNotUsed) {
    DirectoryInfo planted = {};
    std::strcpy(planted.userName, test::kEditor);
    std::strcpy(planted.password, test::kEditorPassword);
    CDepotPath location = server_.Location();
    // A name of its own: no block of an earlier test stands in the way.
    location.host = "LOCALHOST.";
    location.username.clear();
    location.password.clear();
    Make(location);
    // Somebody else was there before, with a block for this server.
    const test::OthersBlock others(
        "Quillon - Depot - LDAP Info - " + ServerKey(location_->host, location_->port),
        test::kOfSomebodyElse,
        std::string(reinterpret_cast<const char*>(&planted), sizeof(planted)));
    EXPECT_EQ("", items_->GetSharedUserName());
    EXPECT_EQ("", items_->GetSharedPassword());
    items_->SetPassword("secret");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&planted), sizeof(planted)),
              others.Contents(sizeof(planted)));
}

TEST_F(PromptTest, RandomSharedBlockGivesBoundedTexts) {
    // Another seed comes with --gtest_shuffle --gtest_random_seed.
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    Make(test::kEditor, "");
    DirectoryInfo& info = Info();
    for (int round = 0; round < 200; ++round) {
        auto* const bytes = reinterpret_cast<unsigned char*>(&info);
        std::generate_n(bytes, sizeof(info),
                        [&] { return static_cast<unsigned char>(1 + random() % 255); });
        EXPECT_EQ(DirectoryInfo::kTextBytes, items_->GetSharedUserName().size());
        EXPECT_EQ(DirectoryInfo::kTextBytes, items_->GetSharedPassword().size());
        EXPECT_TRUE(items_->Connection().Shared().PromptingIsOff());
    }
    info = {};
}

TEST_F(PromptTest, AnonymousBindThatSucceedsInAnotherProcessShowsNoPromptAndChangesNothing) {
    CLDAPItems& items = Make(test::kEditor, "wrong");
    EXPECT_EQ(0u, Info().noPrompt);
    const test::ChildProcess other("connect-anonymously", {std::to_string(server_.Port())});
    EXPECT_EQ(1, other.ExitCode());
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    // A wrong password is still asked about here.
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(PromptTest, AnonymousBindThatFailsInAnotherProcessEndsPromptingHere) {
    test::DirectoryServer server("global disallow bind_anon");
    CDepotPath location = server.Location();
    location.password = "wrong";
    ForgetServer(location.port);
    CLDAPItems& items = Make(location);
    EXPECT_EQ(0u, Info().noPrompt);
    const test::ChildProcess other("connect-anonymously", {std::to_string(server.Port())});
    EXPECT_EQ(0, other.ExitCode());
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(PromptTest, ServerThatIsDownIsAskedForLikeAWrongPassword) {
    CDepotPath location = server_.Location();
    location.port = test::ClosedPort();
    ForgetServer(location.port);
    CLDAPItems& items = Make(location);
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(2u, prompt_.shown.size());
    EXPECT_THAT(boxes_.Texts(),
                ElementsAre(MessageFor(LDAP_SERVER_DOWN), MessageFor(LDAP_SERVER_DOWN),
                            MessageFor(LDAP_USER_CANCELLED)));
}

// Whether the prompt has an example depends on who asks, so that the others cost no request.
TEST_F(PromptTest, PromptThatShowsExamplesHasThatOfTheServer) {
    constexpr char kOfTheServer[] = "cn=Mary Walker,dc=farrow,dc=test";
    CLDAPItems& items = Make("", "");
    prompt_.showsExamples = true;
    prompt_.Type(test::kEditor, "wrong");
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(items.Connection().Open(), IsDone());
    EXPECT_THAT(prompt_.examples, ElementsAre(kOfTheServer, kOfTheServer));
    EXPECT_TRUE(items.Connection().IsConnected());
}

TEST_F(PromptTest, ServerIsNotAskedForAnExampleThatNoPromptShows) {
    CLDAPItems& items = Make("", "");
    prompt_.Type(test::kEditor, test::kEditorPassword);
    server_.Mark();
    EXPECT_THAT(items.Connection().Open(), IsDone());
    EXPECT_THAT(server_.Log(), testing::Not(testing::HasSubstr("SRCH")));
}

// The user is asked all the same, and soon.
TEST_F(PromptTest, ServerThatAcceptsAndSaysNothingHasNoExample) {
    const test::HostileServer silent([](const test::LdapMessage& /*request*/) {
        return test::HostileServer::Answer{"", false};
    });
    CDepotPath location = server_.Location();
    location.port = silent.Port();
    location.username = {};
    CLDAPItems& items = Make(location);
    prompt_.showsExamples = true;
    EXPECT_THAT(items.Connection().Open(), Fails(LDAP_USER_CANCELLED));
    EXPECT_THAT(prompt_.examples, ElementsAre(""));
    ForgetServer(silent.Port());
}

TEST_F(PromptTest, ServerThatDoesNotAnswerHasNoExample) {
    CDepotPath location = server_.Location();
    location.port = 1;  // none listens there
    location.username = {};
    CLDAPItems& items = Make(location);
    prompt_.showsExamples = true;
    prompt_.Type(test::kEditor, test::kEditorPassword);
    EXPECT_THAT(items.Connection().Open(), Fails(LDAP_USER_CANCELLED));
    // The second prompt knows already that there is none.
    EXPECT_THAT(prompt_.examples, ElementsAre(""));
    EXPECT_EQ(2u, prompt_.shown.size());
    ForgetServer(1);
}

}  // namespace
}  // namespace depot
