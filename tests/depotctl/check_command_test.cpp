// What check says of folders, of definitions and of the installation.
#include <aclapi.h>

#include <algorithm>

#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// Returns the state of a step, with its text behind a colon; of a depot's definition or of one of
// its locations. Empty when there is no such step.
std::string StepIn(const nlohmann::json& steps, const std::string& name) {
    for (const auto& step : steps) {
        if (step["step"] != name) continue;
        return step["state"].get<std::string>() + ": " + step["text"].get<std::string>();
    }
    return {};
}

std::string Definition(const nlohmann::json& answer, const std::string& step) {
    return StepIn(answer["depots"][0]["definition"], step);
}

std::string Location(const nlohmann::json& answer, const std::string& step) {
    return StepIn(answer["depots"][0]["locations"][0]["steps"], step);
}

class CheckTest : public ToolTest {};

TEST_F(CheckTest, DepotsInOrderPassEveryStep) {
    const ToolRun run = RunTool({"check", "--json", "Work"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.output << run.errors;
    const auto answer = run.Json();
    ASSERT_EQ(1u, answer["depots"].size());
    EXPECT_EQ("Work", answer["depots"][0]["key"]);
    EXPECT_EQ("the user", answer["depots"][0]["definedFor"]);
    EXPECT_EQ("ok: 3 values, all of them in order", Definition(answer, "definition"));
    EXPECT_EQ("ok: nothing to expand", Location(answer, "macros"));
    EXPECT_EQ("ok: it is there", Location(answer, "folder"));
    EXPECT_EQ("ok: reading and writing", Location(answer, "rights"));
    EXPECT_EQ(0, answer["problems"]);
    EXPECT_FALSE(Exists(folder_.At("work\\____Test____Writable____File___.twr")));
}

TEST_F(CheckTest, WithoutAKeyAllDepotsAreChecked) {
    EXPECT_EQ(2u, RunTool({"check", "--json"}).Json()["depots"].size());
    const ToolRun run = RunTool({"check"});
    EXPECT_THAT(run.output, HasSubstr("installation\n"));
    EXPECT_THAT(run.output, HasSubstr("<Work>, defined for the user\n"));
    EXPECT_THAT(run.output, HasSubstr("<Team>, defined for the user\n"));
    EXPECT_THAT(run.output, HasSubstr("  ok           rights: reading and writing\n"));
}

TEST_F(CheckTest, KeysAreTakenInAnyCaseAndInBrackets) {
    for (const char* key : {"work", "<Work>", "<WORK>\\"}) {
        EXPECT_EQ("Work", RunTool({"check", "--json", key}).Json()["depots"][0]["key"]) << key;
    }
    const ToolRun run = RunTool({"check", "Unknown"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_EQ("depotctl: no depot is defined under the key \"Unknown\"\n", run.errors);
}

TEST_F(CheckTest, ProblemsAreReportedWithAdviceAndExitCodeOne) {
    key_.Text("Work", "Hots1", "server");
    const ToolRun run = RunTool({"check", "Work"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_EQ("depotctl: 1 problem found\n", run.errors);
    EXPECT_THAT(run.output,
                HasSubstr("  problem      Hots1: there is no value of this name; it is ignored\n"
                          "               -> write Host1 if that is meant\n"));
}

TEST_F(CheckTest, EveryKindOfMistakeInTheRegistryIsRead) {
    key_.Text("Bad", "Path1", folder_.At("team"));
    key_.Text("Bad", "Port1", "389");
    key_.Raw("Bad", "OrderIndex", REG_QWORD, std::string(8, '\1'));
    key_.Raw("Bad", "Icon", REG_MULTI_SZ, std::string("a\0b\0\0", 5));
    key_.Raw("Bad", "Path3", REG_SZ, "C:\\unterminated");
    key_.Text("Bad", "DisplayName.fra", std::string(261, 'x'));
    key_.Text("Bad\\Inner", "Path1", "C:\\x");
    const ToolRun run = RunTool({"check", "--json", "Bad"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    const auto answer = run.Json();
    EXPECT_THAT(Definition(answer, "Port1"), HasSubstr("ignored"));
    EXPECT_THAT(Definition(answer, "OrderIndex"), HasSubstr("a long number (REG_QWORD)"));
    EXPECT_THAT(Definition(answer, "Icon"), HasSubstr("a list of texts (REG_MULTI_SZ)"));
    EXPECT_THAT(Definition(answer, "Path3"), HasSubstr("numbered from 1 without a gap"));
    EXPECT_THAT(Definition(answer, "DisplayName.fra"), HasSubstr("longer than 260"));
    EXPECT_THAT(Definition(answer, "Key"), HasSubstr("keys below this one"));
    EXPECT_EQ("ok: reading and writing", Location(answer, "rights"));
}

TEST_F(CheckTest, KeysThatAreNoDepotsAreChecked) {
    key_.Text("Empty", "DisplayName.eng", "x");
    const ToolRun run = RunTool({"check", "--json", "Empty"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_EQ("problem: this is no depot: it has no Path1", Definition(run.Json(), "Path1"));
    EXPECT_EQ(3u, RunTool({"check", "--json"}).Json()["depots"].size());
}

TEST_F(CheckTest, ValueBesideTheDepotsIsNamed) {
    key_.Text("", "Path1", "C:\\x");
    const auto answer = RunTool({"check", "--json"}).Json();
    EXPECT_EQ("problem: it stands beside the depots of the user and is never read",
              StepIn(answer["registry"], "Path1"));
}

TEST_F(CheckTest, CharactersThatTheCodePageLacksAreNamed) {
    const SystemCodePageScope systemCodePage;
    const std::wstring name = L"Software\\Quillon\\Farrow\\Depots\\Work";
    RegSetKeyValueW(HKEY_CURRENT_USER, name.c_str(), L"Icon", REG_SZ, L"\x0416.ico", 12);
    EXPECT_THAT(Definition(RunTool({"check", "--json", "Work"}).Json(), "Icon"),
                HasSubstr("code page does not have"));
}

TEST_F(CheckTest, KeyThatTheCodePageLacksIsNoDepotAndIsNamed) {
    const SystemCodePageScope systemCodePage;
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Quillon\\Farrow\\Depots\\\x0416", L"Path1",
                    REG_SZ, L"C:\\x", 10);
    EXPECT_THAT(Definition(RunTool({"check", "--json", "\xD0\x96"}).Json(), "Key"),
                HasSubstr("code page does not have"));
    EXPECT_EQ(2u, RunTool({"depots", "--json", "--offline"}).Json().size());
}

TEST_F(CheckTest, ReaderThatStopsEarlyEndsItQuietly) {
    key_.Text("Work", "Hots1", "a problem that is not asked for");
    const ToolRun run = RunToolAndStopReading({"check"}, 0);
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    EXPECT_EQ("", run.errors);
}

TEST_F(CheckTest, MissingFolderIsAProblemAndAMissingServerUnreachable) {
    DefineFolder("Work", folder_.At("missing"));
    const ToolRun missing = RunTool({"check", "--json", "Work"});
    EXPECT_EQ(ExitCode::kRefused, missing.exitCode);
    EXPECT_THAT(Location(missing.Json(), "folder"), testing::StartsWith("problem: the folder"));
    DefineFolder("Work", folder_.MakeFile("file.kre", ""));
    EXPECT_EQ("problem: it is a file",
              Location(RunTool({"check", "--json", "Work"}).Json(), "folder"));
    DefineFolder("Work", "\\\\no-such-server\\share\\folder");
    const ToolRun unreachable = RunTool({"check", "--json", "Work"});
    EXPECT_EQ(ExitCode::kUnreachable, unreachable.exitCode);
    EXPECT_EQ("{\"error\":{\"code\":3,\"text\":\"1 location cannot be reached\"}}\n",
              unreachable.errors);
}

TEST_F(CheckTest, MacrosAreExpandedAndThoseThatStandNamed) {
    DefineFolder("Work", "%TEMP%\\$X64$");
    EXPECT_THAT(Location(RunTool({"check", "--json", "--offline", "Work"}).Json(), "macros"),
                testing::EndsWith("\\x64"));
    DefineFolder("Work", "$UserDir$\\x");
    const ToolRun run = RunTool({"check", "--json", "Work"});
    EXPECT_EQ("problem: $UserDir$ is not expanded: letter case counts",
              Location(run.Json(), "macros"));
    EXPECT_EQ("", Location(run.Json(), "folder")) << "nothing is tried behind a problem";
    DefineFolder("Work", "%NO_SUCH_VARIABLE%\\x");
    EXPECT_EQ("problem: the environment variable %NO_SUCH_VARIABLE% is not set",
              Location(RunTool({"check", "--json", "Work"}).Json(), "macros"));
    DefineFolder("Work", "$FATUSERDIR$\\x");
    EXPECT_EQ("problem: it begins with a macro that stands for nothing on this machine",
              Location(RunTool({"check", "--json", "Work"}).Json(), "macros"));
}

TEST_F(CheckTest, OfflineTriesNothing) {
    DefineFolder("Work", folder_.At("missing"));
    const ToolRun run = RunTool({"check", "--offline", "--json", "Work"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("", Location(run.Json(), "folder"));
}

TEST_F(CheckTest, DepotsAreComparedInTheOrderOfTheList) {
    key_.Text("Team", "DisplayName.eng", "Work");
    key_.Dword("Work", "DefaultDepot", 1);
    key_.Dword("Team", "DefaultDepot", 1);
    DefineFolder("Team", folder_.MakeFolder("work\\inner"));
    const auto answer = RunTool({"check", "--json", "Team"}).Json();
    EXPECT_THAT(Definition(answer, "DisplayName"), HasSubstr("is the key of <Work>"));
    EXPECT_THAT(Definition(answer, "DefaultDepot"), HasSubstr("<Work> stands before it"));
    EXPECT_THAT(Definition(answer, "Path"), HasSubstr("its folder lies in that of <Work>"));
    EXPECT_EQ("ok",
              RunTool({"check", "--json", "Work"}).Json()["depots"][0]["definition"][0]["state"]);
}

TEST_F(CheckTest, SameKeyInBothHivesIsNamed) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE, kDepotsKey);
    machine.Text("Work", "Path1", folder_.At("team"));
    machine.Text("Work", "DisplayName.eng", "Other");
    const auto answer = RunTool({"check", "--json", "Work"}).Json();
    ASSERT_EQ(2u, answer["depots"].size());
    EXPECT_EQ("the machine", answer["depots"][1]["definedFor"]);
    EXPECT_THAT(StepIn(answer["depots"][1]["definition"], "Key"),
                HasSubstr("the user's depot of the same key stands before it"));
}

TEST_F(CheckTest, DepotsWhere32BitProgramsHaveThemAreNamed) {
    const ScratchKey other(HKEY_LOCAL_MACHINE, "Software\\WOW6432Node\\Quillon\\Farrow\\Depots");
    other.Text("Work", "Path1", "C:\\x");
    EXPECT_THAT(StepIn(RunTool({"check", "--json"}).Json()["registry"], "registry"),
                HasSubstr("WOW6432Node"));
}

TEST_F(CheckTest, DepotThatOnly32BitProgramsHaveIsNamedByItsKey) {
    const ScratchKey other(HKEY_LOCAL_MACHINE, "Software\\WOW6432Node\\Quillon\\Farrow\\Depots");
    other.Text("Old", "Path1", "C:\\x");
    const ToolRun run = RunTool({"check", "<OLD>"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, testing::StartsWith("depotctl: no depot is defined under the key "
                                                "\"OLD\"; there is one in the part"));
    EXPECT_THAT(run.errors, HasSubstr("WOW6432Node"));
    EXPECT_THAT(RunTool({"check", "New"}).errors, Not(HasSubstr("WOW6432Node")));
}

TEST_F(CheckTest, OneValueIsNotSeveral) {
    key_.Text("Single", "Path1", folder_.MakeFolder("single"));
    EXPECT_THAT(RunTool({"check", "--offline", "Single"}).output,
                HasSubstr("definition: 1 value, in order\n"));
}

TEST_F(CheckTest, WithoutDefinitionsTheBuiltInDepotIsChecked) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kDepotsKey);
    const auto answer = RunTool({"check", "--json"}).Json();
    ASSERT_EQ(1u, answer["depots"].size());
    EXPECT_EQ("nobody", answer["depots"][0]["definedFor"]);
}

TEST_F(CheckTest, PasswordsAreNeverShown) {
    key_.Text("Work", "Password1", "top-secret");
    const ToolRun run = RunTool({"check", "--json", "Work"});
    EXPECT_THAT(run.output + run.errors, Not(HasSubstr("top-secret")));
    EXPECT_THAT(run.output, HasSubstr("Password1"));
}

// The keys by which the component is known, as an installation leaves them.
class CheckInstallationTest : public ToolTest {
protected:
    static std::string OwnFolder() { return ToolPath().substr(0, ToolPath().rfind('\\') + 1); }

    CheckInstallationTest() { Register(OwnFolder() + "DepotIntr.dll"); }

    void Register(const std::string& library) const {
        name_.Text("", "", "x");
        name_.Text("CLSID", "", kClass);
        class_.Text("InprocServer32", "", library);
        library_.Text("1.0\\0\\win64", "", OwnFolder() + "DepotIntr.dll");
    }

    static std::string Installed(const std::string& step) {
        return StepIn(RunTool({"check", "--json"}).Json()["installation"], step);
    }

    static constexpr char kClass[] = "{38A373C9-E31B-4505-A763-B14081A1332B}";
    ScratchKey name_{HKEY_CLASSES_ROOT, "DepotIntr.DepotIntrApi"};
    ScratchKey class_{HKEY_CLASSES_ROOT, std::string("CLSID\\") + kClass};
    ScratchKey library_{HKEY_CLASSES_ROOT, "TypeLib\\{F83FE105-A22E-4399-9B89-1A6C8CB957DD}"};
};

TEST_F(CheckInstallationTest, WholeInstallationIsInOrder) {
    EXPECT_THAT(Installed("registration"), testing::StartsWith("ok: "));
    EXPECT_THAT(Installed("user folder"), testing::StartsWith("ok: "));
    EXPECT_THAT(Installed("texts"), testing::StartsWith("ok: "));
}

TEST_F(CheckInstallationTest, RegisteredLibraryThatIsNotThereIsAProblem) {
    Register("C:\\missing\\DepotIntr.dll");
    EXPECT_EQ(
        "problem: the component is registered as \"C:\\missing\\DepotIntr.dll\", which is not "
        "there",
        Installed("registration"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"check"}).exitCode);
}

// Gives every user these rights, and whoever owns the folder all.
void AllowEveryone(const std::string& folder, DWORD rights) {
    EXPLICIT_ACCESSA access[2] = {};
    char everyone[] = "EVERYONE", owner[] = "CREATOR OWNER";
    BuildExplicitAccessWithNameA(&access[0], everyone, rights, GRANT_ACCESS, NO_INHERITANCE);
    BuildExplicitAccessWithNameA(&access[1], owner, GENERIC_ALL, GRANT_ACCESS, NO_INHERITANCE);
    ACL* list = nullptr;
    ASSERT_EQ(DWORD{ERROR_SUCCESS}, SetEntriesInAclA(2, access, nullptr, &list));
    std::string path = folder;
    EXPECT_EQ(DWORD{ERROR_SUCCESS},
              SetNamedSecurityInfoA(path.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                    nullptr, list, nullptr));
    LocalFree(list);
}

TEST_F(CheckInstallationTest, HalfARegistrationIsAProblem) {
    RegDeleteTreeA(HKEY_CLASSES_ROOT, name_.Path().c_str());
    EXPECT_THAT(Installed("registration"), HasSubstr("by which scripts create objects"));
    Register(OwnFolder() + "DepotIntr.dll");
    RegDeleteTreeA(HKEY_CLASSES_ROOT, library_.Path().c_str());
    EXPECT_THAT(Installed("registration"), HasSubstr("the type library is not registered"));
    Register(OwnFolder() + "DepotIntr.dll");
    RegDeleteTreeA(HKEY_CLASSES_ROOT, class_.Path().c_str());
    EXPECT_THAT(Installed("registration"), HasSubstr("the registration names no library"));
}

TEST_F(CheckInstallationTest, NoRegistrationAtAllIsRemarked) {
    RegDeleteTreeA(HKEY_CLASSES_ROOT, name_.Path().c_str());
    RegDeleteTreeA(HKEY_CLASSES_ROOT, class_.Path().c_str());
    EXPECT_THAT(Installed("registration"), testing::StartsWith("note: the component is not"));
}

TEST_F(CheckInstallationTest, UpgradeThatWaitsForARestartIsRemarked) {
    EXPECT_EQ("", Installed("upgrade"));
    const std::string manager = "SYSTEM\\CurrentControlSet\\Control\\Session Manager";
    const std::string list("\\??\\C:\\x.tmp\0!\\??\\C:\\Product\\depotintr.DLL\0", 44);
    WriteRegistry(HKEY_LOCAL_MACHINE, manager, "PendingFileRenameOperations", REG_MULTI_SZ,
                  list + '\0');
    EXPECT_THAT(Installed("upgrade"), testing::StartsWith("note: it waits for the next start"));
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, manager.c_str(), "PendingFileRenameOperations");
}

TEST_F(CheckInstallationTest, FolderThatOrdinaryUsersMayWriteToIsRemarked) {
    CopyFileA((OwnFolder() + "DepotIntr.dll").c_str(), folder_.At("DepotIntr.dll").c_str(), FALSE);
    Register(folder_.At("DepotIntr.dll"));
    AllowEveryone(folder_.Path(), GENERIC_READ);
    EXPECT_EQ("", Installed("folder"));
    AllowEveryone(folder_.Path(), GENERIC_ALL);
    EXPECT_THAT(Installed("folder"), testing::StartsWith("note: ordinary users may write to \""));
}

TEST_F(CheckInstallationTest, MissingLanguageLibrariesAreAProblem) {
    const ScratchKey product(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\Wharfside");
    product.Text("", "HomeDir64", folder_.MakeFolder("home"));
    EXPECT_THAT(Installed("texts"), HasSubstr("DepotIntr.NLS\" is not there: users see a message"));
}

TEST_F(CheckInstallationTest, UserFolderThatIsNotThereIsNamed) {
    const ScratchKey product(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\Wharfside");
    product.Text("", "UserDir", "Q:\\Users\\Anna");
    EXPECT_EQ(
        "problem: \"Q:\\Users\\Anna\" is out of reach, because there is no \"Q:\\\" here: depots "
        "below "
        "it are, too",
        Installed("user folder"));
    product.Text("", "UserDir", folder_.At("none"));
    EXPECT_THAT(Installed("user folder"), HasSubstr("none\" is not there"));
    product.Text("", "UserDir", folder_.MakeFile("file", "x"));
    EXPECT_THAT(Installed("user folder"), HasSubstr("file\" is a file"));
}

// The program in a folder of its own, without the library that knows the folders.
TEST_F(CheckInstallationTest, AdviceIsOneThatHelpsWithoutTheLibraryOfTheFolders) {
    const std::string alone = folder_.At("depotctl.exe");
    ASSERT_TRUE(CopyFileA(ToolPath().c_str(), alone.c_str(), FALSE));
    RegDeleteTreeA(HKEY_CLASSES_ROOT, name_.Path().c_str());
    RegDeleteTreeA(HKEY_CLASSES_ROOT, class_.Path().c_str());
    const ToolRun run = RunProgram("\"" + alone + "\" check --offline --json");
    for (const auto& step : run.Json()["installation"]) {
        if (step["step"] != "user folder" && step["step"] != "texts") continue;
        EXPECT_EQ("put qdirsvc.dll beside this program", step["advice"]) << step;
    }
}

TEST_F(CheckInstallationTest, MissingLibraryOfTheUserFolderIsAProblem) {
    CopyFileA((OwnFolder() + "DepotIntr.dll").c_str(), folder_.At("DepotIntr.dll").c_str(), FALSE);
    Register(folder_.At("DepotIntr.dll"));
    EXPECT_THAT(Installed("user folder"),
                HasSubstr("qdirsvc.dll is neither beside DepotIntr.dll nor in the system folder"));
}

}  // namespace
}  // namespace depot::test
