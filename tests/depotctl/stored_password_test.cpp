// Passwords that are kept in the user's credential store.
#include "depotctl/directory_tool.h"
#include "platform/registry_key.h"
#include "support/stored_credential.h"

namespace depot::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class StoredPasswordTest : public ToolTest {
protected:
    std::string Value(const std::string& name) const {
        const auto key = RegistryKey::Open(HKEY_CURRENT_USER, std::string(kDepotsKey) + "\\Dir");
        return key ? key->ReadString(name).value_or("(absent)") : "(no key)";
    }

    DirectoryDepot dir_{key_};
    CredentialScope stored_{"Dir/1"};
};

TEST_F(StoredPasswordTest, PasswordMovesFromTheDefinitionIntoTheStore) {
    const ToolRun run =
        RunTool({"depots", "set", "Dir", "--store-password"}, std::string(kEditorPassword) + "\n");
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_THAT(run.output + run.errors, Not(HasSubstr(kEditorPassword)));
    EXPECT_EQ("(absent)", Value("Password1"));
    EXPECT_EQ("Dir/1", Value("CredentialTarget1"));
    const auto stored = ReadCredential("Dir/1");
    ASSERT_TRUE(stored);
    EXPECT_EQ(kEditor, stored->userName);
    EXPECT_EQ(kEditorPassword, stored->password);

    const ToolRun check = RunTool({"check", "Dir"});
    EXPECT_EQ(ExitCode::kDone, check.exitCode) << check.output;
    EXPECT_THAT(check.output, AllOf(HasSubstr("as cn=editor,dc=farrow,dc=test"),
                                    Not(HasSubstr(kEditorPassword))));
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls", "<Dir>\\"}).exitCode);
}

TEST_F(StoredPasswordTest, CheckAdvisesTheStore) {
    EXPECT_THAT(RunTool({"check", "Dir", "--offline"}).output,
                HasSubstr("depotctl depots set Dir --location 1 --store-password"));
}

TEST_F(StoredPasswordTest, CheckNamesPasswordsThatNoDepotNames) {
    const CredentialScope other("Gone/1");
    other.Store("anna", "secret");
    stored_.Store("anna", "secret");
    key_.Text("Dir", "CredentialTarget1", "dir/1");
    const std::string output = RunTool({"check", "--offline"}).output;
    EXPECT_THAT(output,
                HasSubstr("stored password: one is kept as \"Gone/1\", which no depot names"));
    EXPECT_THAT(output, HasSubstr("cmdkey /delete:\"Quillon - Depot - Gone/1\""));
    EXPECT_THAT(output, Not(HasSubstr("\"Dir/1\", which")));
    EXPECT_THAT(output, Not(HasSubstr("secret")));
}

TEST_F(StoredPasswordTest, AdviceOnADepotOfTheMachineIsForTheMachine) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE, kDepotsKey);
    machine.Text("All", "Path1", "dc=x");
    machine.Dword("All", "Type1", 1);
    machine.Text("All", "Host1", "h");
    machine.Text("All", "Username1", "cn=a");
    machine.Text("All", "Password1", "secret");
    EXPECT_THAT(RunTool({"check", "All", "--offline"}).output,
                HasSubstr("depotctl depots set All --location 1 --store-password --machine"));
    EXPECT_THAT(RunTool({"depots", "set", "All", "--order", "1"}).errors,
                HasSubstr("is not defined for the user, but for the machine: add --machine"));
    EXPECT_THAT(RunTool({"depots", "set", "Dir", "--machine", "--order", "1"}).errors,
                HasSubstr("but for the user: leave --machine out"));
}

TEST_F(StoredPasswordTest, DryRunAsksForNothingAndStoresNothing) {
    const ToolRun run = RunTool({"depots", "set", "Dir", "--store-password", "--dry-run"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_FALSE(ReadCredential("Dir/1"));
    EXPECT_EQ(kEditorPassword, Value("Password1"));
}

TEST_F(StoredPasswordTest, ForgettingRemovesPasswordAndTarget) {
    RunTool({"depots", "set", "Dir", "--store-password"}, "x\n");
    ASSERT_TRUE(ReadCredential("Dir/1"));
    const ToolRun run = RunTool({"depots", "set", "Dir", "--forget-password"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_FALSE(ReadCredential("Dir/1"));
    EXPECT_EQ("(absent)", Value("CredentialTarget1"));
}

TEST_F(StoredPasswordTest, LocationWithoutAUserOrWithoutALogOnIsRefused) {
    RunTool({"depots", "set", "Dir", "--unset", "Username1", "--unset", "Password1"});
    const auto refused = [this](const char* why) {
        const ToolRun run = RunTool({"depots", "set", "Dir", "--store-password"}, "x\n");
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr(why));
        EXPECT_FALSE(ReadCredential("Dir/1"));
    };
    refused("--username");
    key_.Dword("Dir", "Authentication1", 0);
    refused("nobody logs on");
    key_.Dword("Dir", "Type1", 0);
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"depots", "set", "Work", "--store-password"}, "x\n").exitCode);
    EXPECT_EQ(
        ExitCode::kRefused,
        RunTool({"depots", "set", "Dir", "--store-password", "--ask-password"}, "x\n").exitCode);
}

}  // namespace
}  // namespace depot::test
