// What is tried without a prompt, and what happens where nobody can be asked.
#include <functional>

#include "directory/taken_block.h"
#include "platform/user_notice.h"
#include "support/child_process.h"
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

// What happens elsewhere while a message of this test waits for the user. Replaces the boxes.
class WhileMessagesAreOpen {
public:
    explicit WhileMessagesAreOpen(std::function<void()> happens) {
        happens_ = std::move(happens);
        texts_.clear();
        InstallNoticeReceiver([](const std::string& text) {
            texts_.push_back(text);
            happens_();
        });
    }
    ~WhileMessagesAreOpen() { InstallNoticeReceiver(nullptr); }
    WhileMessagesAreOpen(const WhileMessagesAreOpen&) = delete;
    WhileMessagesAreOpen& operator=(const WhileMessagesAreOpen&) = delete;

    const std::vector<std::string>& Texts() const { return texts_; }

private:
    static inline std::function<void()> happens_;
    static inline std::vector<std::string> texts_;
};

// The prompt of a process whose windows no person sees.
class UnseenPrompt final : public test::ScriptedPrompt {
public:
    bool CanBeAnswered() const override { return false; }
};

// Another process needs a password for the server. The exit code counts its prompts.
int AskForAPassword(const test::Arguments& arguments) {
    const test::BoxLog boxes;
    test::ScriptedPrompt prompt;
    CDepotPath location(nullptr);
    location.host = "127.0.0.1";
    location.port = static_cast<std::uint32_t>(std::stoul(arguments.at(0)));
    location.username = "anna";
    CLDAPItems items(&location);
    items.Connection().SetPrompt(&prompt);
    static_cast<void>(items.PromptAndConnect(nullptr));
    return static_cast<int>(prompt.shown.size());
}
const test::RoleRegistration askForAPassword("ask-for-a-password", &AskForAPassword);

class UnaskedTest : public test::DirectoryFixture {
protected:
    // Another object, as another process has one, logs on to the same server.
    void LogOnElsewhere() const {
        CDepotPath location = server_.Location();
        CLDAPItems other(&location);
        EXPECT_THAT(other.ConnectLocation(nullptr), IsDone());
    }
    // Somebody types these into a prompt elsewhere; nobody has tried them yet.
    void TypeElsewhere(const std::string& userName, const std::string& password) const {
        CDepotPath location = server_.Location();
        CLDAPItems other(&location);
        other.SetUserName(userName);
        other.SetPassword(password);
        other.Connection().Shared().Block().Access()->lastError = 0;
    }
};

TEST_F(UnaskedTest, WrongPasswordIsAskedForAlsoWhenSomebodyLogsOnWhileItsMessageIsOpen) {
    CLDAPItems& items = Make(test::kReader, "wrong");
    prompt_.Type(test::kReader, "wrong again");
    prompt_.Type(test::kReader, test::kReaderPassword);
    const WhileMessagesAreOpen elsewhere([this] { LogOnElsewhere(); });
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    ASSERT_EQ(2u, prompt_.shown.size());
    EXPECT_EQ("wrong", prompt_.shown[0].password);
    EXPECT_EQ("wrong again", prompt_.shown[1].password);
    // The same credentials are not tried twice.
    EXPECT_THAT(elsewhere.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS),
                                               MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(UnaskedTest, CancelAfterSuchALogOnIsACancel) {
    CLDAPItems& items = Make(test::kReader, "wrong");
    const WhileMessagesAreOpen elsewhere([this] { LogOnElsewhere(); });
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(1u, Info().noPrompt);
    EXPECT_TRUE(items.IsUsable());
}

TEST_F(UnaskedTest, CredentialsTypedElsewhereMeanwhileAreTriedBeforeTheUserIsAsked) {
    CLDAPItems& items = Make(test::kReader, "wrong");
    const WhileMessagesAreOpen elsewhere(
        [this] { TypeElsewhere(test::kEditor, test::kEditorPassword); });
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_EQ(test::kEditor, items.GetUserName());
    EXPECT_THAT(elsewhere.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(UnaskedTest, SecondFailureInARowThatNothingWasAskedForShowsThePrompt) {
    CLDAPItems& items = Make(test::kReader, "wrong");
    prompt_.Type(test::kReader, test::kReaderPassword);
    int round = 0;
    const WhileMessagesAreOpen elsewhere(
        [&] { TypeElsewhere(test::kReader, "wrong " + std::to_string(++round)); });
    EXPECT_THAT(items.ConnectLocation(&text_), IsDone());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ("wrong 1", prompt_.shown[0].password);
    EXPECT_EQ(2, round);
}

TEST_F(UnaskedTest, SharedCredentialsThatFailAreAskedFor) {
    TypeElsewhere(test::kReader, "outdated");
    CLDAPItems& items = Make("", "");
    prompt_.Type(test::kReader, test::kReaderPassword);
    const WhileMessagesAreOpen elsewhere([this] { LogOnElsewhere(); });
    EXPECT_THAT(items.PromptAndConnect(&text_), IsDone());
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ("outdated", prompt_.shown[0].password);
    EXPECT_THAT(elsewhere.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(UnaskedTest, WithoutASharedBlockAWrongPasswordIsAskedFor) {
    Make(test::kEditor, "wrong");
    const UniqueHandle taken = test::TakeTheBlocksName(place_);
    prompt_.Type(test::kEditor, test::kEditorPassword);
    server_.Mark();
    EXPECT_THAT(items_->ConnectLocation(&text_), IsDone());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(2, server_.Counts().binds);
}

TEST_F(UnaskedTest, KnownCredentialsAreUsedWhilePromptingIsOff) {
    TypeElsewhere(test::kEditor, test::kEditorPassword);
    const struct {
        const char* userName;
        const char* password;
    } rows[] = {{"", ""}, {test::kEditor, ""}, {test::kEditor, test::kEditorPassword}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.userName << "/" << row.password);
        CLDAPItems& items = Make(row.userName, row.password);
        Info().noPrompt = 1;
        EXPECT_THAT(items.PromptAndConnect(&text_), IsDone());
        EXPECT_EQ(1u, Info().noPrompt);
    }
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(UnaskedTest, LocationThatNeedsNoCredentialsConnectsWhilePromptingIsOff) {
    CDepotPath location = server_.Location();
    location.authentication = kAnonymousAuthentication;
    CLDAPItems& items = Make(location);
    Info().noPrompt = 1;
    EXPECT_THAT(items.PromptAndConnect(&text_), IsDone());
}

TEST_F(UnaskedTest, WhatWouldHaveToBeAskedFailsWithoutABoxWhilePromptingIsOff) {
    const struct {
        const char* password;
        std::uint32_t recorded;
    } rows[] = {{"", 0}, {test::kEditorPassword, 49}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.recorded);
        CLDAPItems& items = Make(test::kEditor, row.password);
        Info().noPrompt = 1;
        Info().lastError = row.recorded;
        server_.Mark();
        EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
        EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
        EXPECT_EQ(row.recorded, Info().lastError);
        EXPECT_EQ("", server_.Log());
    }
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(UnaskedTest, PromptAndConnectWithPromptingOffHandsOutTheReason) {
    CLDAPItems& items = Make(test::kEditor, "");
    Info().noPrompt = 1;
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    EXPECT_EQ(MessageFor(LDAP_USER_CANCELLED), text_);
}

TEST_F(UnaskedTest, AnyNumberButZeroTurnsPromptingOff) {
    CLDAPItems& items = Make(test::kEditor, "wrong");
    Info().noPrompt = 2;
    EXPECT_THAT(items.ConnectLocation(nullptr), Fails());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(UnaskedTest, WithoutAPromptNoneAppearsAndPromptingStaysOnForOthers) {
    CLDAPItems& items = Make("anna", "");
    items.Connection().SetPrompt(nullptr);
    EXPECT_THAT(items.PromptForCredentials(), Fails());
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(UnaskedTest, WithoutAPromptAFailedBindEndsTheConnectionAndPromptingStaysOnForOthers) {
    CLDAPItems& items = Make(test::kEditor, "wrong");
    items.Connection().SetPrompt(nullptr);
    server_.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_EQ(1, server_.Counts().binds);
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ("wrong", items.GetPassword());
    EXPECT_FALSE(items.IsUsable());
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
}

TEST_F(UnaskedTest, WithoutAPromptAServerThatDoesNotAnswerIsReportedAsThatAndNotAsACancel) {
    UnseenPrompt unseen;
    for (test::ScriptedPrompt* const prompt : {static_cast<test::ScriptedPrompt*>(nullptr),
                                               static_cast<test::ScriptedPrompt*>(&unseen)}) {
        CLDAPItems& items = Make(test::kEditor, test::kEditorPassword);
        items.Connection().SetPrompt(prompt);
        server_.Stop();
        EXPECT_THAT(items.ConnectLocation(&text_), Fails());
        server_.Continue();
        EXPECT_THAT(items.LastError(), IsCode(LDAP_SERVER_DOWN));
        EXPECT_EQ(MessageFor(LDAP_SERVER_DOWN), text_);
        EXPECT_EQ(0u, Info().noPrompt);
    }
}

TEST_F(UnaskedTest, WithPromptingOffAServerThatDoesNotAnswerIsReportedAsACancel) {
    CLDAPItems& items = Make(test::kEditor, test::kEditorPassword);
    Info().noPrompt = 1;
    server_.Stop();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    server_.Continue();
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

TEST_F(UnaskedTest, InstalledPromptServesEveryConnectionAsLongAsItIsInstalled) {
    CDepotPath location = server_.Location();
    location.password.clear();
    CLDAPItems items(&location);
    InstallCredentialsPrompt(&prompt_);
    items.PromptForCredentials();
    EXPECT_EQ(1u, prompt_.shown.size());
    ForgetServer(location.port);
    InstallCredentialsPrompt(nullptr);
    EXPECT_THAT(items.PromptForCredentials(), Fails());
    EXPECT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ(0u, items.Connection().Shared().Block().Access()->noPrompt);
}

// A probe is answered by what is known, and leaves no trace of a failure.
class QuietConnectionTest : public test::DirectoryFixture {
protected:
    void ExpectQuietFailure(CLDAPItems& items, std::uint32_t code) {
        EXPECT_THAT(items.ConnectQuietly(), Fails());
        EXPECT_EQ(code, items.LastError());
        EXPECT_FALSE(items.IsUsable());
        EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
        EXPECT_EQ(0u, Info().noPrompt);
        EXPECT_THAT(prompt_.shown, IsEmpty());
        EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    }
};

TEST_F(QuietConnectionTest, WrongCredentialsFailUnseen) {
    ExpectQuietFailure(Make(test::kEditor, "wrong"), 49);
    ExpectQuietFailure(Make(test::kEditor, ""), 53);
}

TEST_F(QuietConnectionTest, EveryOtherFailureIsUnseenToo) {
    CDepotPath location = server_.Location();
    location.authentication = kAnonymousAuthentication;
    location.connectTimeout = 5;
    CLDAPItems* items = &Make(location);
    items->Client().ldap_init = [](PCHAR, ULONG) -> LDAP* { return nullptr; };
    items->Client().LdapGetLastError = []() -> ULONG { return LDAP_NO_MEMORY; };
    ExpectQuietFailure(*items, 90);
    EXPECT_THAT(items->ConnectQuietly(), Fails());
    EXPECT_THAT(items->LastError(), IsCode(LDAP_SERVER_DOWN));
    items = &Make(location);
    items->Client().ldap_connect = [](LDAP*, l_timeval*) -> ULONG { return LDAP_TIMEOUT; };
    ExpectQuietFailure(*items, 85);
    items = &Make(location);
    items->Client().ldap_simple_bind_s = [](LDAP*, PCHAR, PCHAR) -> ULONG {
        return LDAP_INAPPROPRIATE_AUTH;
    };
    ExpectQuietFailure(*items, 48);
}

TEST_F(QuietConnectionTest, SuccessClearsTheServersLastErrorAndLeavesTheRecordAlone) {
    CLDAPItems& items = Make("", "");
    items.SetUserName(test::kReader);
    items.SetPassword(test::kReaderPassword);
    items.Location().username.clear();
    items.Location().password.clear();
    Info().lastError = 49;
    server_.Mark();
    EXPECT_THAT(items.ConnectQuietly(), IsDone());
    EXPECT_TRUE(items.IsConnected());
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"cn=reader,dc=farrow,dc=test\""));
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ("", items.GetUserName());
    EXPECT_EQ("", items.GetPassword());
    server_.Mark();
    EXPECT_THAT(items.ConnectQuietly(), IsDone());
    EXPECT_EQ(test::OperationCounts(), server_.Counts());
}

TEST_F(UnaskedTest, PromptThatNoPersonSeesCountsAsNoneAndLeavesOthersAlone) {
    UnseenPrompt unseen;
    CLDAPItems& items = Make("anna", "");
    items.Connection().SetPrompt(&unseen);
    EXPECT_THAT(items.PromptForCredentials(), Fails());
    EXPECT_THAT(items.PromptAndConnect(&text_), Fails());
    EXPECT_THAT(items.LastError(), IsCode(LDAP_USER_CANCELLED));
    EXPECT_EQ(2u, unseen.shown.size());
    EXPECT_EQ("127.0.0.1", unseen.shown.front().server);
    EXPECT_THAT(Info().lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    const test::ChildProcess seen("ask-for-a-password", {std::to_string(server_.Port())});
    EXPECT_EQ(1, seen.ExitCode());
}

TEST_F(UnaskedTest, PromptThatNoPersonSeesKeepsThePasswordThatWasRefused) {
    UnseenPrompt unseen;
    CLDAPItems& items = Make(test::kEditor, "wrong");
    items.Connection().SetPrompt(&unseen);
    server_.Mark();
    EXPECT_THAT(items.ConnectLocation(&text_), Fails());
    EXPECT_EQ(1, server_.Counts().binds);
    EXPECT_EQ("wrong", items.GetPassword());
    EXPECT_EQ(0u, Info().noPrompt);
}

TEST_F(UnaskedTest, PromptThatNoPersonSeesCombinesNoNameWithAnothersPassword) {
    TypeElsewhere("berta", "secret");
    UnseenPrompt unseen;
    CLDAPItems& items = Make("anna", "");
    items.Connection().SetPrompt(&unseen);
    EXPECT_THAT(items.PromptForCredentials(), Fails());
    EXPECT_EQ("", items.GetPassword());
}

}  // namespace
}  // namespace depot
