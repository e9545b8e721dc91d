// Credentials that a user at a terminal is asked for.
#include "depotctl/console.h"
#include "depotctl/directory_tool.h"
#include "support/relay.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class LogOnTest : public ToolTest {
protected:
    LogOnTest() {
        key_.Dword("Dir", "Port1", relay_.Port());
        key_.Text("Dir", "Username1", "");
        key_.Text("Dir", "Password1", "");
        ForgetServer(relay_.Port());
        relay_.Mark();
    }

    // Waits for the two questions and answers them.
    void Answer(const std::wstring& userName, const std::wstring& password) {
        ASSERT_TRUE(console_.WaitFor("User name:"));
        console_.Type(userName + L"\r");
        ASSERT_TRUE(console_.WaitFor("Password:"));
        console_.Type(password + L"\r");
    }
    void AnswerRightly() { Answer(L"cn=editor,dc=farrow,dc=test", L"editor-secret"); }

    DirectoryDepot dir_{key_};
    Relay relay_{dir_.server.Port()};
    TestConsole console_{80};
};

TEST_F(LogOnTest, ConnectionThatWasAskedForServesTheCommand) {
    console_.Start({"ls", "<Dir>\\"});
    AnswerRightly();
    EXPECT_EQ(ExitCode::kDone, console_.Finish());
    EXPECT_THAT(console_.Screen(), HasSubstr("Sessions  folder"));
    EXPECT_THAT(console_.Screen(), Not(HasSubstr(kEditorPassword)));
    // The first one looks whether there is a server that wants the credentials.
    EXPECT_EQ(2, relay_.Counts().connections);
}

TEST_F(LogOnTest, WrongAnswerIsAskedForAgain) {
    key_.Text("Dir", "Username1", kEditor);
    console_.Start({"ls", "<Dir>\\"});
    ASSERT_TRUE(console_.WaitFor("User name [cn=editor"));
    console_.Type(L"\r");
    ASSERT_TRUE(console_.WaitFor("Password:"));
    console_.Type(L"wrong\r\r");
    for (int wait = 0; wait < 100 && relay_.Counts().requests < 1; ++wait) Sleep(50);
    console_.Type(L"editor-secret\r");
    EXPECT_EQ(ExitCode::kDone, console_.Finish()) << console_.Screen();
    EXPECT_THAT(console_.Screen(), HasSubstr("Sessions  folder"));
}

TEST_F(LogOnTest, UserIsAskedBeforeALaterLocationIsUsed) {
    key_.Text("Dir", "Path2", folder_.MakeFolder("second"));
    console_.Start({"ls", "<Dir>\\"});
    AnswerRightly();
    EXPECT_EQ(ExitCode::kDone, console_.Finish());
    EXPECT_THAT(console_.Screen(), HasSubstr("Sessions  folder"));
}

TEST_F(LogOnTest, DeadServerIsNotAskedFor) {
    key_.Dword("Dir", "Port1", ClosedPort());
    EXPECT_EQ(ExitCode::kUnreachable, console_.Run({"ls", "<Dir>\\"}));
    EXPECT_THAT(console_.Screen(), Not(HasSubstr("User name")));
}

TEST_F(LogOnTest, CheckAsksAndContinues) {
    console_.Start({"check", "Dir"});
    AnswerRightly();
    EXPECT_EQ(ExitCode::kDone, console_.Finish());
    EXPECT_THAT(console_.Screen(), HasSubstr("rights: reading and writing"));
}

TEST_F(LogOnTest, CheckReportsTheLogOnThatWasNotAnswered) {
    EXPECT_THAT(RunTool({"check", "Dir"}).output, HasSubstr("and none are stored"));
}

}  // namespace
}  // namespace depot::test
