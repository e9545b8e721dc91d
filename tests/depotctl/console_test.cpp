// The program at a terminal.
#include "depotctl/console.h"

#include <algorithm>

#include "depotctl/tool.h"
#include "platform/registry_key.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ConsoleTest : public ToolTest {
protected:
    static std::string Text(const std::string& key, const std::string& name) {
        const auto opened =
            RegistryKey::Open(HKEY_CURRENT_USER, std::string(kDepotsKey) + "\\" + key);
        return opened ? opened->ReadString(name).value_or("(absent)") : "(no key)";
    }

    // A tree of so many files in the depot "Work".
    void MakeTree(int files) const {
        folder_.MakeFolder("work\\tree");
        for (int number = 0; number < files; ++number) {
            folder_.MakeFile("work\\tree\\f" + std::to_string(number) + ".kre", "contents");
        }
    }

    // The names of the files in the copy of the tree that are not whole, and how many are.
    int WholeFiles(std::string& broken) const {
        int whole = 0;
        WIN32_FIND_DATAA data = {};
        const HANDLE search = FindFirstFileA(folder_.At("team\\tree\\*.kre").c_str(), &data);
        if (search == INVALID_HANDLE_VALUE) return 0;
        do {
            if (data.nFileSizeLow == 8) {
                ++whole;
            } else {
                broken += data.cFileName;
            }
        } while (FindNextFileA(search, &data));
        FindClose(search);
        return whole;
    }

    static const std::vector<std::string> kAsk;
};

const std::vector<std::string> ConsoleTest::kAsk = {
    "depots", "add",    "Dir",        "--path", "dc=x",
    "--host", "server", "--username", "cn=a",   "--ask-password"};

TEST_F(ConsoleTest, TablesFitFortyColumns) {
    folder_.MakeFile("work\\a rather long name of a session profile.kre", "12345");
    folder_.MakeFile("work\\b.kre", "");
    TestConsole console(40);
    EXPECT_EQ(ExitCode::kDone, console.Run({"ls", "-l", "<Work>\\"}));
    const auto lines = console.Lines();
    ASSERT_EQ(3u, lines.size()) << "a line that is too wide would take two\n" << console.Screen();
    EXPECT_THAT(lines[1], HasSubstr("\xE2\x80\xA6"));
    EXPECT_THAT(lines[2], testing::StartsWith("b.kre"));
}

TEST_F(ConsoleTest, ChecksAreWrappedBetweenWordsAtFortyColumns) {
    key_.Text("Work", "Hots1", "x");
    TestConsole console(40);
    EXPECT_EQ(ExitCode::kRefused, console.Run({"check", "--offline", "Work"}));
    EXPECT_THAT(console.Screen(), HasSubstr("\n  problem      Hots1: there is no value\n"
                                            "               of this name; it is\n"
                                            "               ignored\n"
                                            "               -> write Host1 if that\n"
                                            "               is meant\n"));
}

TEST_F(ConsoleTest, NamesBeyondAsciiAreShownAsCharacters) {
    folder_.MakeFile(
        "team\\B\xFC"
        "ro \x80.kre",
        "");
    TestConsole console(80);
    EXPECT_EQ(ExitCode::kDone, console.Run({"ls", "<Team>\\"}));
    EXPECT_THAT(console.Screen(), HasSubstr("\nB\xC3\xBCro \xE2\x82\xAC.kre  file\n"));
}

TEST_F(ConsoleTest, PasswordIsAskedForTwiceAndNeverShown) {
    TestConsole console(80);
    console.Start(kAsk);
    ASSERT_TRUE(console.WaitFor("Password:"));
    console.Type(L"top-secret\r");
    ASSERT_TRUE(console.WaitFor("Once more:"));
    console.Type(L"top-secret\r");
    EXPECT_EQ(ExitCode::kDone, console.Finish());
    EXPECT_THAT(console.Screen(), Not(HasSubstr("secret")));
    EXPECT_EQ("top-secret", Text("Dir", "Password1"));
}

TEST_F(ConsoleTest, PasswordsThatDifferAreRefused) {
    TestConsole console(80);
    console.Start(kAsk);
    ASSERT_TRUE(console.WaitFor("Password:"));
    console.Type(L"one\r");
    ASSERT_TRUE(console.WaitFor("Once more:"));
    console.Type(L"two\r");
    EXPECT_EQ(ExitCode::kRefused, console.Finish());
    EXPECT_THAT(console.Screen(), HasSubstr("the two passwords differ"));
    EXPECT_EQ("(no key)", Text("Dir", "Password1"));
}

TEST_F(ConsoleTest, PromptStaysOnTheScreenWhileTheOutputIsRedirected) {
    // The console's own process would keep a file that is there before.
    TestConsole console(80);
    const std::string path = folder_.At("output.txt");
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    UniqueHandle file =
        OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, 0, &inherited, CREATE_ALWAYS, 0, nullptr));
    std::vector<std::string> arguments = kAsk;
    arguments.push_back("--dry-run");
    console.Start(arguments, file.get());
    ASSERT_TRUE(console.WaitFor("Password:"));
    console.Type(L"secret\r");
    ASSERT_TRUE(console.WaitFor("Once more:"));
    console.Type(L"secret\r");
    EXPECT_EQ(ExitCode::kDone, console.Finish());
    file.reset();
    EXPECT_THAT(FileBytes(path), testing::StartsWith("\xFF\xFE"));
    EXPECT_THAT(console.Screen(), Not(HasSubstr("Windows Registry Editor")));
}

TEST_F(ConsoleTest, FileOfADryRunIsReadableOnATerminal) {
    TestConsole console(80);
    EXPECT_EQ(ExitCode::kDone, console.Run({"depots", "remove", "Work", "--dry-run"}));
    EXPECT_THAT(console.Screen(), HasSubstr("[-HKEY_CURRENT_USER\\Software\\Quillon\\Farrow\\"
                                            "Depots\\Work]\n"));
}

TEST_F(ConsoleTest, CtrlCStopsALongTransferBetweenTwoFiles) {
    constexpr int kFiles = 1500;
    MakeTree(kFiles);
    TestConsole console(40);
    console.Start({"cp", "-r", "<Work>\\tree", "<Team>\\"});
    EXPECT_TRUE(console.WaitFor("/1500 files")) << console.Screen();
    TestConsole::PressCtrlC();
    EXPECT_EQ(ExitCode::kRefused, console.Finish());
    std::string broken;
    const int whole = WholeFiles(broken);
    EXPECT_EQ("", broken);
    EXPECT_LT(0, whole);
    EXPECT_LT(whole, kFiles);
    // Without the line breaks of the terminal.
    std::string said;
    for (const std::string& line : console.Lines()) said += line;
    said.erase(std::remove(said.begin(), said.end(), ' '), said.end());
    EXPECT_THAT(said, HasSubstr("stoppedafter" + std::to_string(whole) + "of1500files"));
    EXPECT_THAT(console.Screen(), Not(HasSubstr("[#"))) << "the bar is wiped";
}

TEST_F(ConsoleTest, CtrlCStopsALongRemovalBetweenTwoFiles) {
    constexpr int kFiles = 5000;
    MakeTree(kFiles);
    TestConsole console(80);
    console.Start({"rm", "-r", "<Work>\\tree"});
    EXPECT_TRUE(console.WaitFor("/5000 files")) << console.Screen();
    TestConsole::PressCtrlC();
    EXPECT_EQ(ExitCode::kRefused, console.Finish());
    EXPECT_THAT(console.Screen(), HasSubstr("of 5000 files; the others stay"));
    EXPECT_TRUE(Exists(folder_.At("work\\tree")));
    EXPECT_THAT(console.Screen(), Not(HasSubstr("[#"))) << "the bar is wiped";
    EXPECT_EQ(ExitCode::kDone, console.Run({"rm", "-r", "<Work>\\tree"}));
    EXPECT_FALSE(Exists(folder_.At("work\\tree")));
}

TEST_F(ConsoleTest, ProgressIsShownInOneLineAndGoneAtTheEnd) {
    MakeTree(600);
    TestConsole console(40);
    console.Start({"cp", "-r", "<Work>\\tree", "<Team>\\"});
    EXPECT_TRUE(console.WaitFor("/600 files"));
    EXPECT_EQ(ExitCode::kDone, console.Finish());
    EXPECT_EQ("copied 600 files to <Team>\\tree\n", console.Screen());
}

TEST_F(ConsoleTest, LongListingReachesTheEndOfTheScreen) {
    for (int number = 0; number < 400; ++number) {
        folder_.MakeFile("team\\f" + std::to_string(1000 + number) + ".kre", "");
    }
    TestConsole console(40);
    EXPECT_EQ(ExitCode::kDone, console.Run({"ls", "<Team>\\"}));
    EXPECT_EQ(401u, console.Lines().size());
    EXPECT_EQ("f1399.kre  file", console.Lines().back());
}

}  // namespace
}  // namespace depot::test
