// What check shows of settings and policies.
#include "config/directory_defaults.h"
#include "depotctl/tool.h"
#include "platform/managed_key.h"
#include "platform/trace.h"
#include "platform/trace_settings.h"
#include "platform/user_presence.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

nlohmann::json RowIn(const nlohmann::json& rows, const std::string& name) {
    for (const auto& row : rows) {
        if (row["name"] == name) return row;
    }
    return {};
}

class SettingsTest : public ToolTest {
protected:
    SettingsTest() {
        key_.Text("Far", "Path1", "dc=x");
        key_.Dword("Far", "Type1", kDirectoryLocation);
        key_.Dword("Far", "Offline1", 1);
        key_.Dword("Far", "OfflineSize1", 7);
        key_.Text("Far", "Host1", "h");
    }

    static nlohmann::json Check() { return RunTool({"check", "--offline", "--json"}).Json(); }
    static nlohmann::json Values() {
        const auto answer = RunTool({"check", "--offline", "--json", "Far"}).Json();
        return answer["depots"][0]["locations"][0]["values"];
    }

    const ScratchKey policies_{HKEY_LOCAL_MACHINE, PolicyKeyOf(kDefaultsKey)};
    const ScratchKey users_{HKEY_CURRENT_USER, kDefaultsKey};
};

TEST_F(SettingsTest, WithoutAnyNoLineIsShownAndAllAreDefaults) {
    // Tests allow traces.
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kTraceKey, kTraceElevated);
    EXPECT_THAT(RunTool({"check", "--offline"}).output, Not(HasSubstr("settings\n")));
    const auto settings = Check()["settings"];
    for (const char* name :
         {"Trace", "TraceSize", "TraceFiles", "OfflineAllowed", "OfflineSize", "KeepConnection"}) {
        EXPECT_EQ("default", RowIn(settings, name)["from"]) << name;
    }
    EXPECT_EQ("off", RowIn(settings, "Trace")["value"]);
    EXPECT_EQ("100", RowIn(settings, "OfflineSize")["value"]);
    WriteRegistryDword(HKEY_LOCAL_MACHINE, kTraceKey, kTraceElevated, 1);
}

TEST_F(SettingsTest, EachIsShownWithThePlaceThatItComesFrom) {
    users_.Dword("", "KeepConnection", 60);
    users_.Dword("", "TraceSize", 5);
    policies_.Dword("", "TraceSize", 3);
    EXPECT_THAT(RunTool({"check", "--offline"}).output,
                HasSubstr("settings\n"
                          "  ok           TraceSize: 3 (machine policy)\n"
                          "  ok           KeepConnection: 60 (user)\n"));
    const auto settings = Check()["settings"];
    EXPECT_EQ("HKEY_LOCAL_MACHINE\\Software\\Policies\\Quillon\\Farrow\\13.00\\DepotIntr",
              RowIn(settings, "TraceSize")["key"]);
    EXPECT_EQ("HKEY_CURRENT_USER\\Software\\Quillon\\Farrow\\13.00\\DepotIntr",
              RowIn(settings, "KeepConnection")["key"]);
}

TEST_F(SettingsTest, TraceOfTheEnvironmentIsNamedUnlessAPolicyWins) {
    const std::string path = folder_.At("t.txt");
    SetEnvironmentVariableA(kTraceVariable, path.c_str());
    EXPECT_EQ("environment", RowIn(Check()["settings"], "Trace")["from"]);
    policies_.Text("", "Trace", "off");
    const auto row = RowIn(Check()["settings"], "Trace");
    SetEnvironmentVariableA(kTraceVariable, nullptr);
    EXPECT_EQ("machine policy", row["from"]);
    EXPECT_EQ("off", row["value"]);
}

TEST_F(SettingsTest, ValueThatDoesNotCountIsAProblemThatNamesWhatCounts) {
    users_.Dword("", "TraceSize", 5000);
    users_.Text("", "TraceFiles", "3");
    policies_.Dword("", "KeepConnection", 4000);
    users_.Dword("", "KeepConnection", 60);
    const ToolRun run = RunTool({"check", "--offline"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.output, HasSubstr("problem      TraceSize: 5000, which is out of range, is "
                                      "ignored (user): 10 counts (default)\n"
                                      "               -> write a number from 1 to 1024\n"));
    EXPECT_THAT(run.output, HasSubstr("TraceFiles: \"3\", which is no number (REG_DWORD), is "
                                      "ignored (user): 1 counts (default)\n"));
    EXPECT_THAT(run.output, HasSubstr("ok           KeepConnection: 60 (user)\n"));
    EXPECT_THAT(run.output, HasSubstr("KeepConnection: 4000, which is out of range, is ignored "
                                      "(machine policy): 60 counts (user)\n"));
}

TEST_F(SettingsTest, TraceThatCountsAsOffIsAProblem) {
    for (const char* const target : {"trace.txt", "on", "%NO_SUCH_VARIABLE%\\t.txt"}) {
        users_.Text("", "Trace", target);
        EXPECT_THAT(RunTool({"check", "--offline"}).output,
                    HasSubstr(std::string("problem      Trace: ") + target +
                              " (user) is neither an absolute path nor \"debugger\" and counts "
                              "as off\n"));
    }
    users_.Text("", "Trace", "OFF");
    EXPECT_THAT(RunTool({"check", "--offline"}).output,
                HasSubstr("ok           Trace: OFF (user)\n"));
}

TEST_F(SettingsTest, ElevatedTraceThatIsNeitherNumberCountsAsNone) {
    policies_.Dword("", kTraceElevated, 2);
    EXPECT_THAT(
        RunTool({"check", "--offline"}).output,
        HasSubstr("TraceElevated: 2 (machine policy) is neither 0 nor 1 and counts as 0\n"));
}

TEST_F(SettingsTest, ValuesOfALocationNameTheirOrigin) {
    EXPECT_THAT(RunTool({"check", "--offline", "Far"}).output, Not(HasSubstr("OfflineSize1")));
    auto values = Values();
    EXPECT_EQ("definition", RowIn(values, "Offline1")["from"]);
    EXPECT_EQ("default", RowIn(values, "KeepConnection1")["from"]);
    policies_.Dword("", "KeepConnection", 30);
    policies_.Dword("", "OfflineSize", 9);
    users_.Dword("", kOfflineAllowed, 0);
    values = Values();
    EXPECT_EQ("0", RowIn(values, "Offline1")["value"]);
    EXPECT_EQ("user", RowIn(values, "Offline1")["from"]);
    EXPECT_EQ("7", RowIn(values, "OfflineSize1")["value"]);
    EXPECT_EQ("definition", RowIn(values, "OfflineSize1")["from"]);
    EXPECT_EQ("30", RowIn(values, "KeepConnection1")["value"]);
    EXPECT_EQ("machine policy", RowIn(values, "KeepConnection1")["from"]);
    EXPECT_THAT(RunTool({"check", "--offline", "Far"}).output,
                HasSubstr("KeepConnection1: 30 (machine policy)\n"));
}

TEST_F(SettingsTest, QuietHostsAreNamedEach) {
    const ScratchKey policy(HKEY_LOCAL_MACHINE, AnsiFromWide(kQuietHostsPolicy));
    const ScratchKey machine(HKEY_LOCAL_MACHINE, AnsiFromWide(kQuietHostsKey));
    policy.Text("", "batch.exe", "batch.exe");
    machine.Dword("", "BATCH.EXE", 0);
    machine.Dword("", "night.exe", 1);
    const std::string output = RunTool({"check", "--offline"}).output;
    EXPECT_THAT(output, HasSubstr("QuietHosts: batch.exe (machine policy)\n"));
    EXPECT_THAT(output, HasSubstr("QuietHosts: night.exe (machine)\n"));
    EXPECT_THAT(output, Not(HasSubstr("BATCH.EXE")));
}

}  // namespace
}  // namespace depot::test
