// Runs client scripts as their users do and compares all they print.
#include "scripts/script_fixture.h"

namespace depot::test {
namespace {

TEST_F(ScriptTest, FirstUserReadsAndWritesAProfile) {
    EXPECT_EQ((Lines{"default <Work>\\", "PROFILE.Title {Office}", "Host.Name {host.example}",
                     "Screen.Font {Courier New}", "Screen.Absent {(not set)}", "Host.Port 24",
                     "Notes.Indented {   three blanks before}",
                     "Notes.Quoted {\"in double quotes\"}", "end"}),
              Run("first_user.vbs"));
    const std::string written = FileBytes(folder_.At("Work\\Sessions\\office.kre"));
    EXPECT_NE(std::string::npos, written.find("Indented='   three blanks before'\r\n"));
    EXPECT_NE(std::string::npos, written.find("Quoted=\"\"in double quotes\"\"\r\n"));
    EXPECT_NE(std::string::npos, written.find("; kept by the office\r\n"));
}

TEST_F(ScriptTest, VariablesOfEveryKindServeAsHandlesAndTexts) {
    EXPECT_EQ((Lines{"Long True", "<Work>\\Sessions\\other.kre True", "String one", "Long True",
                     "default", "on", "gone", "session True", "end"}),
              Run("variables.vbs"));
}

TEST_F(ScriptTest, PathsAreAnsweredWithoutASession) {
    const std::string file = folder_.At("Work\\Sessions\\office.kre").substr(2);
    folder_.MakeFile("Work\\team.kra", "");
    EXPECT_EQ((Lines{"<Work>\\", "<My Depot of Work>\\Sessions\\", "<Work>\\Sessions\\office.kre",
                     file, "{}", "{<Work>\\}", "listed 1 <Work>\\team.kra", "end"}),
              Run("paths.vbs"));
}

TEST_F(ScriptTest, RefusedOperationsAreNoErrorsAndWrongCallsAre) {
    EXPECT_EQ((Lines{"refusals 0", "unknown method True", "too few arguments True",
                     "too many arguments True", "no number True", "session True", "end"}),
              Run("errors.vbs"));
}

TEST_F(ScriptTest, SecondInterfaceAnswersAndSaysWhy) {
    EXPECT_EQ((Lines{"before False, then True", "missing {} 2", "text True", "found 0 0",
                     "no folder True 3", "chosen -1", "stale False 6", "written True",
                     "stopped False 1223 after 1", "no method False 87", "errors 0",
                     "depots 1 Work My Depot of Work", "errors 0", "no depot True", "too few True",
                     "an object True", "ended Work False 6", "end"}),
              Run("second.vbs"));
}

TEST_F(ScriptTest, SampleCopiesFindsAndWritesAnywhere) {
    EXPECT_EQ((Lines{"Work is My Depot of Work, reachable: True", "There: True", "Copied: 1 files",
                     "<Work>\\Copies\\Sessions\\office.kre", "Moved in June", "Failed with 80",
                     "Session ended."}),
              Run("anywhere.vbs"));
}

TEST_F(ScriptTest, JScriptClientReadsAndWritesAProfile) {
    EXPECT_EQ((Lines{"session true", "default <Work>\\", "Host.Port 24", "Host.Absent 7",
                     "Host.Port 99", "end"}),
              Run("first_user.js"));
}

}  // namespace
}  // namespace depot::test
