// Writing definitions.
#include <set>

#include "depotctl/tool.h"
#include "platform/handles.h"
#include "platform/registry_key.h"
#include "platform/wide_text.h"
#include "support/program_start.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// All values of a key: names, types and bytes.
std::set<std::string> ValuesOf(HKEY root, const std::string& path) {
    std::set<std::string> values;
    HKEY opened = nullptr;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return values;
    const UniqueHkey key(opened);
    for (DWORD index = 0;; ++index) {
        char name[300] = {}, data[2000] = {};
        DWORD length = sizeof(name), type = 0, bytes = sizeof(data);
        if (RegEnumValueA(opened, index, name, &length, nullptr, &type,
                          reinterpret_cast<BYTE*>(data), &bytes) != ERROR_SUCCESS) {
            return values;
        }
        values.insert(std::string(name) + "/" + std::to_string(type) + "/" +
                      std::string(data, bytes));
    }
}

class DefineTest : public ToolTest {
protected:
    static std::string Depot(const std::string& key) {
        return std::string(kDepotsKey) + "\\" + key;
    }
    static std::set<std::string> Values(const std::string& key) {
        return ValuesOf(HKEY_CURRENT_USER, Depot(key));
    }
    static std::string Text(const std::string& key, const std::string& name) {
        const auto opened = RegistryKey::Open(HKEY_CURRENT_USER, Depot(key));
        return opened ? opened->ReadString(name).value_or("(absent)") : "(no key)";
    }
    static int Number(const std::string& key, const std::string& name) {
        const auto opened = RegistryKey::Open(HKEY_CURRENT_USER, Depot(key));
        return opened ? static_cast<int>(opened->ReadDword(name).value_or(-1u)) : -2;
    }

    // As an administrator imports a file, with regedit.
    void Import(const std::string& bytes) const {
        const std::string file = folder_.MakeFile("import.reg", bytes);
        RunProgram({.command = WideFromAnsi("regedit.exe /S \"" + file + "\"")});
    }

    static const std::vector<std::string> kCompany;
};

const std::vector<std::string> DefineTest::kCompany = {"depots",
                                                       "add",
                                                       "Company",
                                                       "--name",
                                                       "B\xC3\xBCro \"1\"",
                                                       "--name",
                                                       "deu=Firma",
                                                       "--path",
                                                       "cn=Profiles,dc=example,dc=com",
                                                       "--host",
                                                       "ldap.example.com backup:1389",
                                                       "--port",
                                                       "636",
                                                       "--security",
                                                       "ldaps",
                                                       "--authentication",
                                                       "simple",
                                                       "--username",
                                                       "cn=reader,dc=example,dc=com",
                                                       "--order",
                                                       "7",
                                                       "--contains",
                                                       "4294967295",
                                                       "--default",
                                                       "--icon",
                                                       "C:\\icons\\x.ico,2",
                                                       "--detect-conflicts",
                                                       "--connect-timeout",
                                                       "15",
                                                       "--protocol-version",
                                                       "3",
                                                       "--folder-attribute",
                                                       "ou"};

TEST_F(DefineTest, AddWritesAFolderDepotThatWorksAtOnce) {
    const ToolRun run = RunTool({"depots", "add", "New", "--path", folder_.MakeFolder("new")});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("added <New> for the user\n"));
    EXPECT_EQ(folder_.At("new"), Text("New", "Path1"));
    EXPECT_EQ(1u, Values("New").size());
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls", "<New>\\"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"check", "New"}).exitCode);
}

TEST_F(DefineTest, AddWritesEveryValue) {
    const ToolRun run = RunTool(kCompany);
    ASSERT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("B\xFCro \"1\"", Text("Company", "DisplayName.eng"));
    EXPECT_EQ("Firma", Text("Company", "DisplayName.deu"));
    EXPECT_EQ("ldap.example.com backup:1389", Text("Company", "Host1"));
    EXPECT_EQ(1, Number("Company", "Type1"));
    EXPECT_EQ(636, Number("Company", "Port1"));
    EXPECT_EQ(2, Number("Company", "Security1"));
    EXPECT_EQ(1, Number("Company", "Authentication1"));
    EXPECT_EQ(7, Number("Company", "OrderIndex"));
    EXPECT_EQ(-1, Number("Company", "Contains"));
    EXPECT_EQ(1, Number("Company", "DefaultDepot"));
    EXPECT_EQ(1, Number("Company", "DetectConflicts1"));
    EXPECT_EQ(15, Number("Company", "ConnectTimeout1"));
    EXPECT_EQ("ou", Text("Company", "FolderAttributeName1"));
    EXPECT_EQ(17u, Values("Company").size());
}

TEST_F(DefineTest, MistakesAreRefusedOneALineAndNothingIsWritten) {
    const SystemCodePageScope systemCodePage;
    const std::vector<std::vector<std::string>> mistakes = {
        {"depots", "add", "Bad"},
        {"depots", "add", "Bad", "--path", "relative"},
        {"depots", "add", "Bad", "--path", "C:\\"},
        {"depots", "add", "Bad", "--path", "$UserDir$\\x"},
        {"depots", "add", "Bad", "--path", "$NOSUCH$"},
        {"depots", "add", "Bad", "--path", "C:\\x", "--port", "389"},
        {"depots", "add", "Bad", "--path", "dc=x", "--host", "ldap://server"},
        {"depots", "add", "Bad", "--path", "dc=x", "--host", "server", "--port", "0"},
        {"depots", "add", "Bad", "--path", "dc=x", "--host", "server", "--security", "ldaps"},
        {"depots", "add", "Bad", "--path", "C:\\x", "--location", "2"},
        {"depots", "add", "Bad", "--path", "C:\\x", "--name", "\xD0\x96"},
        {"depots", "add", "Bad", "--path", "C:\\" + std::string(300, 'x')},
        {"depots", "add", "Bad<", "--path", "C:\\x"},
        {"depots", "add", "Bad\xD0\x96", "--path", "C:\\x"},
        {"depots", "add", "Bad\\Inner", "--path", "C:\\x"},
        {"depots", "add", " Bad", "--path", "C:\\x"},
        {"depots", "add", "", "--path", "C:\\x"}};
    for (const auto& arguments : mistakes) {
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kRefused, run.exitCode) << testing::PrintToString(arguments);
        EXPECT_THAT(run.errors, testing::EndsWith("depotctl: nothing was written\n"));
        EXPECT_EQ("", run.output);
    }
    EXPECT_EQ(2u, RunTool({"depots", "--json", "--offline"}).Json().size());
    EXPECT_EQ("(no key)", Text("Bad", "Path1"));
}

TEST_F(DefineTest, WrongUsageGivesExitCodeTwo) {
    const std::vector<std::vector<std::string>> mistakes = {
        {"depots", "add"},
        {"depots", "add", "X", "--port", "many"},
        {"depots", "add", "X", "--port", "-1"},
        {"depots", "add", "X", "--security", "some"},
        {"depots", "add", "X", "--location", "0"},
        {"depots", "add", "X", "--password", "secret"},
        {"depots", "remove"}};
    for (const auto& arguments : mistakes) {
        EXPECT_EQ(ExitCode::kUsage, RunTool(arguments).exitCode)
            << testing::PrintToString(arguments);
    }
}

TEST_F(DefineTest, AddOfADepotThatIsThereAndSetOfOneThatIsNotAreRefused) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "add", "work", "--path", "C:\\x"}).exitCode);
    EXPECT_EQ(folder_.At("work"), Text("Work", "Path1"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "set", "Unknown", "--order", "1"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "remove", "Unknown"}).exitCode);
    EXPECT_EQ("(no key)", Text("Unknown", "OrderIndex"));
}

TEST_F(DefineTest, SetChangesOnlyWhatIsGiven) {
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"depots", "set", "<Work>", "--order", "9", "--no-default"}).exitCode);
    EXPECT_EQ(9, Number("Work", "OrderIndex"));
    EXPECT_EQ(0, Number("Work", "DefaultDepot"));
    EXPECT_EQ("Travail", Text("Work", "DisplayName.eng"));
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"depots", "set", "Work", "--unset", "orderindex"}).exitCode);
    EXPECT_EQ(-1, Number("Work", "OrderIndex"));
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"depots", "set", "Work", "--unset", "OrderIndex"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "set", "Work", "--unset", "Path1"}).exitCode);
    EXPECT_EQ(folder_.At("work"), Text("Work", "Path1"));
}

TEST_F(DefineTest, SetAddsAndRemovesLocations) {
    const std::vector<std::string> second = {"depots", "set",  "Work",   "--location", "2",
                                             "--path", "dc=x", "--host", "server"};
    EXPECT_EQ(ExitCode::kDone, RunTool(second).exitCode);
    EXPECT_EQ(1, Number("Work", "Type2"));
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"depots", "set", "Work", "--remove-location", "1"}).exitCode);
    EXPECT_EQ("dc=x", Text("Work", "Path1"));
    EXPECT_EQ("server", Text("Work", "Host1"));
    EXPECT_EQ("(absent)", Text("Work", "Path2"));
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"depots", "set", "Work", "--remove-location", "1"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused,
              RunTool({"depots", "set", "Work", "--remove-location", "5"}).exitCode);
    EXPECT_EQ("dc=x", Text("Work", "Path1"));
}

TEST_F(DefineTest, SetOfADefinitionWithOldMistakesIsDone) {
    key_.Text("Work", "Hots1", "x");
    EXPECT_EQ(ExitCode::kDone, RunTool({"depots", "set", "Work", "--order", "2"}).exitCode);
    EXPECT_EQ(2, Number("Work", "OrderIndex"));
}

TEST_F(DefineTest, RemoveTakesTheDefinitionAndLeavesTheFiles) {
    const std::string file = folder_.MakeFile("work\\a.kre", "x");
    EXPECT_EQ("removed <Work> for the user\n", RunTool({"depots", "remove", "Work"}).output);
    EXPECT_EQ("(no key)", Text("Work", "Path1"));
    EXPECT_NE("(no key)", Text("Team", "Path1"));
    EXPECT_TRUE(Exists(file));
}

TEST_F(DefineTest, KeysThatWouldReachOtherKeysAreRefused) {
    for (const char* command : {"remove", "set"}) {
        for (const char* key : {"", "<>", "Work\\", "Work\\Inner", "..", "\\"}) {
            EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", command, key}).exitCode)
                << command << " " << key;
        }
    }
    EXPECT_NE("(no key)", Text("Work", "Path1"));
}

TEST_F(DefineTest, MachineDefinesForAllUsers) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE, kDepotsKey);
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"depots", "add", "All", "--machine", "--path", "C:\\all"}).exitCode);
    EXPECT_EQ(1u, ValuesOf(HKEY_LOCAL_MACHINE, Depot("All")).size());
    EXPECT_EQ("(no key)", Text("All", "Path1"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "remove", "All"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"depots", "remove", "All", "--machine"}).exitCode);
    EXPECT_EQ(0u, ValuesOf(HKEY_LOCAL_MACHINE, Depot("All")).size());
}

TEST_F(DefineTest, NamesThatLeadToAnotherDepotAreNoted) {
    const ToolRun run = RunTool({"depots", "add", "New", "--path", "C:\\n", "--name", "Team"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("note: DisplayName: "));
}

TEST_F(DefineTest, PasswordComesFromRedirectedInputAndIsNeverShown) {
    std::vector<std::string> arguments = {"depots", "add",           "Dir",    "--path",
                                          "dc=x",   "--host",        "server", "--username",
                                          "cn=a",   "--ask-password"};
    const ToolRun run = RunTool(arguments, "s\xC3\xBC \"secret\"\r\nmore\r\n");
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("s\xFC \"secret\"", Text("Dir", "Password1"));
    EXPECT_THAT(run.output + run.errors, Not(HasSubstr("secret")));
    EXPECT_THAT(run.output, HasSubstr("everyone who can read the key"));
    arguments[2] = "Other";
    EXPECT_EQ(ExitCode::kRefused, RunTool(arguments).exitCode);
    EXPECT_EQ("(no key)", Text("Other", "Path1"));
}

// A printed file in UTF-16, as far as it is ASCII.
std::string WithoutZeros(std::string bytes) {
    std::erase(bytes, '\0');
    return bytes;
}

TEST_F(DefineTest, DryRunLeavesPasswordsOut) {
    key_.Text("Work", "Path2", "dc=x");
    key_.Dword("Work", "Type2", 1);
    key_.Text("Work", "Host2", "server");
    key_.Text("Work", "Username2", "cn=a");
    key_.Text("Work", "Password1", "old secret");
    key_.Text("Work", "Password2", "secret");
    for (const bool json : {false, true}) {
        std::vector<std::string> arguments = {"depots", "set",      "Work", "--remove-location",
                                              "1",      "--dry-run"};
        if (json) arguments.insert(arguments.begin(), "--json");
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        const std::string shown = WithoutZeros(run.output) + run.errors;
        EXPECT_THAT(shown, HasSubstr("Host1"));
        EXPECT_THAT(shown, Not(HasSubstr("secret")));
        EXPECT_THAT(shown, HasSubstr(json ? "\"Password1\\\"=-" : "\"Password1\"=-"));
    }
    const ToolRun typed =
        RunTool({"depots", "set", "Work", "--location", "2", "--ask-password", "--dry-run"},
                "new secret\r\n");
    EXPECT_EQ(ExitCode::kDone, typed.exitCode) << typed.errors;
    EXPECT_THAT(WithoutZeros(typed.output) + typed.errors, Not(HasSubstr("secret")));
}

TEST_F(DefineTest, PasswordIsNotShownByAnyReport) {
    key_.Text("Work", "Path2", "dc=x");
    key_.Text("Work", "Password1", "stored secret \x01 " + std::string(300, 'x'));
    key_.Text("Work", "Password2", "stored secret");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"depots"},
                                                      {"--json", "depots"},
                                                      {"check"},
                                                      {"--json", "check"}}) {
        const ToolRun run = RunTool(arguments);
        EXPECT_THAT(run.output + run.errors, Not(HasSubstr("stored secret"))) << arguments.back();
    }
}

// What an import of the printed file makes is what the command itself would have written.
TEST_F(DefineTest, DryRunPrintsAFileWhoseImportMakesTheSameValues) {
    ASSERT_EQ(ExitCode::kDone, RunTool(kCompany).exitCode);
    const std::set<std::string> written = Values("Company");
    ASSERT_EQ(ExitCode::kDone, RunTool({"depots", "remove", "Company"}).exitCode);

    std::vector<std::string> dry = kCompany;
    dry.push_back("--dry-run");
    const ToolRun run = RunTool(dry);
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("(no key)", Text("Company", "Path1"));
    EXPECT_THAT(run.output, testing::StartsWith("\xFF\xFE"
                                                "W"));
    Import(run.output);
    EXPECT_EQ(written, Values("Company"));

    Import(RunTool({"depots", "set", "Company", "--unset", "Icon", "--order", "3", "--dry-run"})
               .output);
    EXPECT_EQ("(absent)", Text("Company", "Icon"));
    EXPECT_EQ(3, Number("Company", "OrderIndex"));

    Import(RunTool({"depots", "remove", "Company", "--dry-run"}).output);
    EXPECT_EQ("(no key)", Text("Company", "Path1"));
    EXPECT_NE("(no key)", Text("Work", "Path1"));
}

TEST_F(DefineTest, DryRunOfAKeyWithBracketsAndQuotesIsImportedToo) {
    const std::string key = "A] \"B\" [\xC3\xBC";
    Import(RunTool({"depots", "add", key, "--path", "C:\\x", "--dry-run"}).output);
    EXPECT_EQ("C:\\x", Text("A] \"B\" [\xFC", "Path1"));
}

// What the first session of the guide does.
TEST_F(DefineTest, DepotIsDefinedCheckedFilledAndRead) {
    const std::string old = folder_.MakeFile("office.kre", "[Host]\r\nName=mail\r\n");
    SetEnvironmentVariableA("PLACE", folder_.Path().c_str());
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"depots", "add", "First", "--path", "%PLACE%\\first"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"check", "First"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "<First>\\Sessions", "-p"}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"upload", old, "<First>\\Sessions"}).exitCode);
    EXPECT_EQ("mail\n", RunTool({"get", "<First>\\Sessions\\office.kre", "Host", "Name"}).output);
    EXPECT_EQ(ExitCode::kDone, RunTool({"check", "First"}).exitCode);
    SetEnvironmentVariableA("PLACE", nullptr);
}

TEST_F(DefineTest, DryRunInJsonHoldsTheText) {
    const auto answer = RunTool({"depots", "remove", "Work", "--dry-run", "--json"}).Json();
    EXPECT_EQ(
        "Windows Registry Editor Version 5.00\r\n\r\n[-HKEY_CURRENT_USER\\Software\\Quillon\\"
        "Farrow\\Depots\\Work]\r\n",
        answer["file"]);
}

}  // namespace
}  // namespace depot::test
