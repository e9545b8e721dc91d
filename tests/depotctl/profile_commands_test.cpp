#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

constexpr char kProfile[] = "<Work>\\office.kre";

class ProfileTest : public ToolTest {
protected:
    // The profile that is worked with has text of the system\'s code page.
    const SystemCodePageScope systemCodePage_;

    ProfileTest() {
        folder_.MakeFile("work\\office.kre",
                         "[Host]\r\nName=mail\r\nPort=992\r\n[Screen]\r\nFont=Gr\xF6\xDF"
                         "e\r\n");
    }
};

TEST_F(ProfileTest, CatWritesTheBytesAsTheyAre) {
    std::string bytes;
    for (int value = 0; value < 256; ++value) bytes.push_back(static_cast<char>(value));
    folder_.MakeFile("work\\raw.kra", bytes);
    EXPECT_EQ(bytes, RunTool({"cat", "<Work>\\raw.kra"}).output);
    EXPECT_EQ(bytes, RunTool({"cat", folder_.At("work\\raw.kra")}).output);
}

TEST_F(ProfileTest, CatOfAFolderOrOfNothingIsRefused) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"cat", "<Work>\\"}).exitCode);
    const ToolRun run = RunTool({"cat", "<Work>\\none.kre"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is not there"));
}

TEST_F(ProfileTest, GetWritesTheValue) {
    EXPECT_EQ("mail\n", RunTool({"get", kProfile, "Host", "Name"}).output);
    EXPECT_EQ(
        "Gr\xC3\xB6\xC3\x9F"
        "e\n",
        RunTool({"get", kProfile, "screen", "FONT"}).output);
    EXPECT_EQ("992", RunTool({"get", "--json", kProfile, "Host", "Port"}).Json()["value"]);
}

TEST_F(ProfileTest, GetOfAMissingValueIsRefusedUnlessThereIsADefault) {
    const ToolRun run = RunTool({"get", kProfile, "Host", "None"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("has no value \"None\" in section \"Host\""));
    const ToolRun defaulted = RunTool({"get", kProfile, "Host", "None", "--default", "x \xC3\xA4"});
    EXPECT_EQ(ExitCode::kDone, defaulted.exitCode);
    EXPECT_EQ("x \xC3\xA4\n", defaulted.output);
}

TEST_F(ProfileTest, GetWithoutAKeyListsValues) {
    EXPECT_EQ("SECTION  KEY   VALUE\nHost     Name  mail\nHost     Port  992\n",
              RunTool({"get", kProfile, "Host"}).output);
    EXPECT_EQ(3u, RunTool({"get", "--json", kProfile}).Json().size());
}

TEST_F(ProfileTest, SetWritesAValueThatReadsBackExactly) {
    for (const std::string value : {"plain", "  blanks  ", "'quoted'", "\xC3\xBC\xE2\x82\xAC"}) {
        const ToolRun run = RunTool({"set", kProfile, "New", "Key", value});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_EQ(value + "\n", RunTool({"get", kProfile, "New", "Key"}).output);
    }
    EXPECT_THAT(FileBytes(folder_.At("work\\office.kre")), HasSubstr("Key=\xFC\x80"));
}

TEST_F(ProfileTest, SetRemoveTakesTheValueAway) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", "--remove", kProfile, "Host", "Port"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"get", kProfile, "Host", "Port"}).exitCode);
    EXPECT_EQ("mail\n", RunTool({"get", kProfile, "Host", "Name"}).output);
}

TEST_F(ProfileTest, SetNeedsEitherAValueOrRemove) {
    EXPECT_EQ(ExitCode::kUsage, RunTool({"set", kProfile, "Host", "Port"}).exitCode);
    EXPECT_EQ(ExitCode::kUsage,
              RunTool({"set", "--remove", kProfile, "Host", "Port", "1"}).exitCode);
}

TEST_F(ProfileTest, SetOfAMissingProfileIsRefusedUnlessItIsToBeCreated) {
    EXPECT_EQ(ExitCode::kRefused, RunTool({"set", "<Team>\\new.kre", "S", "K", "V"}).exitCode);
    EXPECT_FALSE(Exists(folder_.At("team\\new.kre")));
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"set", "--create", "<Team>\\new.kre", "S", "K", "V"}).exitCode);
    EXPECT_EQ("V\n", RunTool({"get", "<Team>\\new.kre", "S", "K"}).output);
}

TEST_F(ProfileTest, SetOfAFileThatCannotBeWrittenIsRefused) {
    const HANDLE opened = CreateFileA(folder_.At("work\\office.kre").c_str(), GENERIC_READ,
                                      FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const ToolRun run = RunTool({"set", kProfile, "Host", "Name", "other"});
    CloseHandle(opened);
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("cannot write \"<Work>\\office.kre\""));
    EXPECT_EQ("mail\n", RunTool({"get", kProfile, "Host", "Name"}).output);
}

TEST_F(ProfileTest, SetOfAValueOfTwoLinesIsRefusedAndTheProfileStays) {
    const std::string before = FileBytes(folder_.At("work\\office.kre"));
    const ToolRun run = RunTool({"set", kProfile, "Host", "Name", "one\ntwo"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("would not read back"));
    EXPECT_EQ(before, FileBytes(folder_.At("work\\office.kre")));
}

TEST_F(ProfileTest, Utf16InTheOtherOrderIsRefused) {
    const std::string swapped("\xFE\xFF\0[\0S\0]", 8);
    folder_.MakeFile("work\\office.kre", swapped);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"get", kProfile, "S", "K"}).exitCode);
    const ToolRun run = RunTool({"set", kProfile, "S", "K", "V"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is no text that applications read as a profile"));
    EXPECT_EQ(swapped, FileBytes(folder_.At("work\\office.kre")));
}

TEST_F(ProfileTest, PlainProfilesAreReadAndWrittenToo) {
    const std::string path = folder_.MakeFile("plain.kre", "[A]\r\nB=C\r\n");
    EXPECT_EQ("C\n", RunTool({"get", path, "A", "B"}).output);
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", path, "A", "B", "D"}).exitCode);
    EXPECT_EQ("D\n", RunTool({"get", path, "A", "B"}).output);
}

TEST_F(ProfileTest, PlainProfileOfAVeryShortPathIsThatFile) {
    const std::string path = "C:\\z.k";
    const HANDLE made =
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    CloseHandle(made);
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", path, "A", "B", "D"}).exitCode);
    EXPECT_THAT(FileBytes(path), HasSubstr("B=D"));
    DeleteFileA(path.c_str());
}

TEST_F(ProfileTest, ValueThatBeginsWithADashFollowsADoubleDash) {
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", kProfile, "Host", "Offset", "--", "-5"}).exitCode);
    EXPECT_EQ("-5\n", RunTool({"get", kProfile, "Host", "Offset"}).output);
}

}  // namespace
}  // namespace depot::test
