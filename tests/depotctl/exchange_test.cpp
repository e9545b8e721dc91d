// Definitions in files, as the program writes and reads them.
#include "depotctl/tool.h"
#include "platform/registry_key.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kHead[] = "Windows Registry Editor Version 5.00\r\n\r\n";

class ExchangeTest : public ToolTest {
protected:
    static std::string Text(const std::string& key, const std::string& name,
                            HKEY root = HKEY_CURRENT_USER) {
        const auto opened = RegistryKey::Open(root, std::string(kDepotsKey) + "\\" + key);
        return opened ? opened->ReadString(name).value_or("(absent)") : "(no key)";
    }

    ToolRun Import(const std::string& bytes, const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = {"depots", "import",
                                              folder_.MakeFile("import.txt", bytes)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunTool(arguments);
    }
    // A directory, which alone has a password.
    void DefineFar() const {
        key_.Text("Far", "Path1", "cn=x,dc=example,dc=com");
        key_.Dword("Far", "Type1", 1);
        key_.Text("Far", "Host1", "h");
        key_.Text("Far", "Username1", "cn=a,dc=example,dc=com");
    }
    static std::string Key(const std::string& key, const std::string& hive = "HKEY_CURRENT_USER") {
        return "[" + hive + "\\" + kDepotsKey + "\\" + key + "]\r\n";
    }

    const ScratchKey machine_{HKEY_LOCAL_MACHINE, kDepotsKey};
};

TEST_F(ExchangeTest, WhatIsExportedIsImportedBackInEitherForm) {
    key_.Text("Work", "DisplayName.deu", "B\xFCro & \"1\"");
    key_.Raw("Team", "Icon", REG_EXPAND_SZ, std::string("%A%\\x\0", 7));
    for (const char* form : {"reg", "gpp"}) {
        const std::string file = folder_.At("depots");
        ASSERT_EQ(ExitCode::kDone,
                  RunTool({"depots", "export", "--as", form, "--output", file}).exitCode);
        const std::string before = RunTool({"depots", "export"}).output;
        RegDeleteTreeA(HKEY_CURRENT_USER, kDepotsKey);
        const ToolRun run = RunTool({"depots", "import", file});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_EQ("added <Team> for the user\nadded <Work> for the user\n", run.output);
        EXPECT_EQ(folder_.At("work"), Text("Work", "Path1"));
        EXPECT_EQ("B\xFCro & \"1\"", Text("Work", "DisplayName.deu"));
        EXPECT_EQ(before, RunTool({"depots", "export"}).output) << form;
    }
}

TEST_F(ExchangeTest, ExportNamesDepotsHivesAndWhatItLeavesOut) {
    machine_.Text("Far", "Path1", "C:\\far");
    key_.Raw("Work", "Extra", REG_BINARY, "x");
    const ToolRun run = RunTool({"depots", "export", "<Work>", "--as", "gpp"});
    EXPECT_THAT(run.output, HasSubstr("hive=\"HKEY_CURRENT_USER\""));
    EXPECT_THAT(run.output, Not(HasSubstr("Team")));
    EXPECT_THAT(run.errors, HasSubstr("<Work> Extra is left out"));
    EXPECT_THAT(RunTool({"depots", "export", "--machine", "--json"}).output,
                HasSubstr("HKEY_LOCAL_MACHINE"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "export", "Work", "--machine"}).exitCode);
    EXPECT_EQ(ExitCode::kUsage, RunTool({"depots", "export", "--as", "xml"}).exitCode);
}

TEST_F(ExchangeTest, PasswordIsNeitherExportedNorKept) {
    DefineFar();
    key_.Text("Far", "Password1", "secret");
    const ToolRun run = RunTool({"depots", "export", "--as", "gpp", "--output", folder_.At("f")});
    EXPECT_EQ(ExitCode::kDone, run.exitCode);
    EXPECT_THAT(Bytes("f"), Not(HasSubstr("secret")));
    EXPECT_EQ(ExitCode::kDone, RunTool({"depots", "import", folder_.At("f")}).exitCode);
    EXPECT_EQ("(absent)", Text("Far", "Password1"));
    const ToolRun with = Import(kHead + Key("Far") + "\"Password1\"=\"other\"\r\n", {"-v"});
    EXPECT_THAT(with.output, HasSubstr("set <Far> Password1=(not shown)\n"));
    EXPECT_EQ("other", Text("Far", "Password1"));
}

TEST_F(ExchangeTest, NothingIsWrittenUnlessAllOfAFileIsInOrder) {
    const std::string good = kHead + Key("New") + "\"Path1\"=\"C:\\\\new\"\r\n";
    for (const std::string& bad :
         {Key("Other") + "\"Path1\"=\"relative\"\r\n", Key("Other") + "\"Hots1\"=\"x\"\r\n",
          std::string("[HKEY_CURRENT_USER\\Software\\Other]\r\n"), Key("Work\\Below"),
          Key("Work") + "\"Port1\"=hex:00\r\n"}) {
        const ToolRun run = Import(good + bad);
        EXPECT_EQ(ExitCode::kRefused, run.exitCode) << bad;
        EXPECT_EQ("", run.output);
        EXPECT_EQ("(no key)", Text("New", "Path1")) << bad;
    }
    EXPECT_EQ(ExitCode::kRefused, RunTool({"depots", "import", folder_.At("none")}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, Import("").exitCode);
    EXPECT_EQ(ExitCode::kRefused, Import(kHead).exitCode);
}

TEST_F(ExchangeTest, ImportChangesRemovesAndAddsAsTheFileSays) {
    const std::string file = kHead + Key("Work") + "\"Path1\"=\"C:\\\\other\"\r\n" +
                             "\"OrderIndex\"=-\r\n[-" + Key("Team").substr(1) + Key("New") +
                             "\"Path1\"=\"C:\\\\new\"\r\n";
    const ToolRun shown = Import(file, {"--dry-run"});
    EXPECT_THAT(shown.output, HasSubstr("would unset <Work> OrderIndex\n"
                                        "would set <Work> Path1=C:\\other\n"
                                        "would remove <Team>\n"
                                        "would set <New> Path1=C:\\new\n"));
    EXPECT_EQ(folder_.At("work"), Text("Work", "Path1"));
    const ToolRun run = Import(file);
    EXPECT_EQ(
        "changed <Work> for the user\nremoved <Team> for the user\nadded <New> for the user\n",
        run.output)
        << run.errors;
    EXPECT_EQ("C:\\other", Text("Work", "Path1"));
    EXPECT_EQ("Travail", Text("Work", "DisplayName.eng"));
    EXPECT_EQ("(absent)", Text("Work", "OrderIndex"));
    EXPECT_EQ("(no key)", Text("Team", "Path1"));
}

TEST_F(ExchangeTest, HiveIsThatOfTheFileUnlessTheCommandNamesOne) {
    const std::string file =
        kHead + Key("New", "HKEY_LOCAL_MACHINE") + "\"Path1\"=\"C:\\\\new\"\r\n";
    EXPECT_EQ("added <New> for the machine\n", Import(file).output);
    EXPECT_EQ("C:\\new", Text("New", "Path1", HKEY_LOCAL_MACHINE));
    EXPECT_EQ("added <New> for the user\n", Import(file, {"--user"}).output);
    EXPECT_EQ("C:\\new", Text("New", "Path1"));
    EXPECT_EQ(ExitCode::kUsage, Import(file, {"--user", "--machine"}).exitCode);
}

TEST_F(ExchangeTest, VerboseDefinitionsShowEachValue) {
    const ToolRun added =
        RunTool({"depots", "add", "New", "--path", "C:\\new", "--order", "3", "-v"});
    EXPECT_THAT(added.output, HasSubstr("set <New> OrderIndex=3\nset <New> Path1=C:\\new\n"
                                        "added <New> for the user\n"));
    const auto changed =
        RunTool({"depots", "set", "New", "--unset", "OrderIndex", "-v", "--json"}).Json();
    EXPECT_EQ("unset", changed["steps"][0]["step"]);
    EXPECT_EQ("<New> OrderIndex", changed["steps"][0]["to"]);
    EXPECT_EQ("remove <New>\nremoved <New> for the user\n",
              RunTool({"depots", "remove", "New", "--verbose"}).output);
    EXPECT_FALSE(
        RunTool({"depots", "add", "New", "--path", "C:\\new", "--json"}).Json().contains("steps"));
}

TEST_F(ExchangeTest, VerboseShowsNoPassword) {
    DefineFar();
    const ToolRun run = RunTool({"depots", "set", "Far", "--ask-password", "-v"}, "secret\n");
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("set <Far> Password1=(not shown)\n"));
    EXPECT_THAT(run.output, Not(HasSubstr("secret")));
}

}  // namespace
}  // namespace depot::test
