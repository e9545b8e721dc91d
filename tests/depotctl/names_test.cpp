// Names in every code page that the program can run in.
#include <algorithm>
#include <optional>

#include "depotctl/directory_tool.h"
#include "platform/handles.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;

// Names of the languages of the product, and of others, in UTF-8. Some have second bytes in a code
// page that are separators, bars or letters.
constexpr const char* kNames[] = {
    "plan.kra",
    "B\u00FCro.kra",
    "R\u00E9sum\u00E9.kra",
    "A\u00F1o.kra",
    "Citt\u00E0.kra",
    "Relat\u00F3rio.kra",
    "\u8868.kra",
    "\u5341.kra",
    "\u30BD.kra",
    "\u30EC\u30DD\u30FC\u30C8.kra",
    "\uBCF4\uACE0\uC11C.kra",
    "\u62A5\u544A.kra",
    "\u0130\u0131.kra",
    "\u041F\u043B\u0430\u043D.kra",
    "\U0001F600.kra",
};
constexpr char kJapaneseFolder[] = "\u4E88\u5B9A\u8868";
constexpr char kWesternFolder[] = "B\u00FCro";

// The program in the code page that it asks for, and in that of the system.
enum class Runs { kAsDeclared, kInSystemCodePage };

bool SystemHolds(const char* utf8) {
    return ExactAnsiFromUtf8(utf8).has_value();
}

// The name of a depot and its folder, not all ASCII.
std::string OwnName() {
    return SystemHolds(kJapaneseFolder) ? kJapaneseFolder : kWesternFolder;
}

std::vector<std::string> Listed(const std::string& place) {
    std::vector<std::string> names;
    for (const auto& row : RunTool({"ls", "--json", place}).Json()) names.push_back(row["name"]);
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> InOrder(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

// The program as the runs of one test start it.
class ProgramRuns {
public:
    explicit ProgramRuns(Runs runs) {
        if (runs == Runs::kInSystemCodePage) systemCodePage_.emplace();
    }

    unsigned CodePage() const { return systemCodePage_ ? GetACP() : CP_UTF8; }
    bool Holds(const char* utf8) const { return CodePage() == CP_UTF8 || SystemHolds(utf8); }
    std::vector<std::string> NamesOf(bool held) const {
        std::vector<std::string> names;
        for (const char* name : kNames) {
            if (Holds(name) == held) names.emplace_back(name);
        }
        return names;
    }

private:
    std::optional<SystemCodePageScope> systemCodePage_;
};

std::string NameOfRuns(const testing::TestParamInfo<Runs>& info) {
    return info.param == Runs::kAsDeclared ? "AsDeclared" : "InSystemCodePage";
}

class NamesTest : public ToolTest, public testing::WithParamInterface<Runs> {
protected:
    NamesTest() {
        const std::string name = ExactAnsiFromUtf8(OwnName()).value();
        DefineFolder(name, folder_.MakeFolder(name));
    }

    static std::string In(const std::string& name) { return "<" + OwnName() + ">\\" + name; }

    std::wstring Stored(const std::string& name) const {
        return WideFromAnsi(folder_.At(ExactAnsiFromUtf8(OwnName()).value())) + L"\\" +
               WideFromUtf8(name);
    }
    bool IsStored(const std::string& name) const {
        return GetFileAttributesW(Stored(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    void Store(const std::wstring& name) const {
        const UniqueHandle file = OwnFile(CreateFileW((Stored({}) + name).c_str(), GENERIC_WRITE, 0,
                                                      nullptr, CREATE_NEW, 0, nullptr));
        ASSERT_NE(nullptr, file.get());
    }

    const ProgramRuns runs_{GetParam()};
};

TEST_P(NamesTest, FilesAreMadeListedReadAndRemovedUnderTheirOwnNames) {
    const std::vector<std::string> names = runs_.NamesOf(true);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const ToolRun run = RunTool({"set", "--create", In(name), "Section", "Key", "Value"});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_TRUE(IsStored(name));
        EXPECT_EQ("Value\n", RunTool({"get", In(name), "Section", "Key"}).output);
    }
    EXPECT_THAT(Listed(In("")), ElementsAreArray(InOrder(names)));
    for (std::size_t removed = 0; removed < names.size(); ++removed) {
        EXPECT_EQ(ExitCode::kDone, RunTool({"rm", In(names[removed])}).exitCode) << names[removed];
        for (std::size_t index = 0; index < names.size(); ++index) {
            EXPECT_EQ(index > removed, IsStored(names[index])) << names[index];
        }
    }
}

TEST_P(NamesTest, FilesAreCopiedAndMovedUnderTheirOwnNames) {
    for (const std::string& name : runs_.NamesOf(true)) {
        SCOPED_TRACE(name);
        RunTool({"set", "--create", In(name), "S", "K", name});
        const std::string folder = "<Work>\\" + OwnName();
        EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", "-p", folder}).exitCode);
        const ToolRun copied = RunTool({"cp", In(name), folder + "\\"});
        EXPECT_EQ("copied 1 file to " + folder + "\\" + name + "\n", copied.output)
            << copied.errors;
        EXPECT_EQ(ExitCode::kDone, RunTool({"mv", folder + "\\" + name, In("2" + name)}).exitCode);
        EXPECT_TRUE(IsStored("2" + name));
        EXPECT_EQ(ExitCode::kDone, RunTool({"rm", In(name), In("2" + name)}).exitCode);
        EXPECT_EQ("", RunTool({"ls", folder}).output);
    }
}

TEST_P(NamesTest, TreesAreCopiedAndRemovedWhole) {
    const std::string folder = In(OwnName());
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", folder}).exitCode);
    for (const std::string& name : runs_.NamesOf(true)) {
        EXPECT_EQ(ExitCode::kDone,
                  RunTool({"set", "--create", folder + "\\" + name, "S", "K", "V"}).exitCode);
    }
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-r", folder, "<Work>\\copy"}).exitCode);
    EXPECT_THAT(Listed("<Work>\\copy"), ElementsAreArray(InOrder(runs_.NamesOf(true))));
    EXPECT_EQ(ExitCode::kDone, RunTool({"rm", "-r", folder}).exitCode);
    EXPECT_EQ("", RunTool({"ls", In("")}).output);
}

TEST_P(NamesTest, DepotsAreShownAndFoundByNamesInTheirOwnLetters) {
    const auto depots = RunTool({"depots", "--json", "--offline"}).Json();
    std::vector<std::string> keys;
    for (const auto& depot : depots) keys.push_back(depot["key"]);
    EXPECT_THAT(keys, testing::Contains(OwnName()));
    EXPECT_THAT(RunTool({"depots", "--offline"}).output, HasSubstr("<" + OwnName() + ">"));
    const ToolRun checked = RunTool({"check", "--offline", OwnName()});
    EXPECT_THAT(checked.output, HasSubstr(OwnName()));
}

TEST_P(NamesTest, NameThatTheCodePageLacksIsRefusedAndNothingIsTouched) {
    for (const std::string& name : runs_.NamesOf(false)) {
        SCOPED_TRACE(name);
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"set", "--create", In(name), "S", "K", "V"},
              std::vector<std::string>{"mkdir", In(name)}, std::vector<std::string>{"ls", In(name)},
              std::vector<std::string>{"rm", In(name)}}) {
            const ToolRun run = RunTool(command);
            EXPECT_EQ(ExitCode::kRefused, run.exitCode);
            EXPECT_THAT(run.errors, HasSubstr("code page " + std::to_string(runs_.CodePage())));
        }
    }
    EXPECT_EQ("", RunTool({"ls", In("")}).output);
}

TEST_P(NamesTest, LookAlikeNameDoesNotReachTheFileThatItLooksLike) {
    Store(L"A.kra");
    // One looks like A; the others look like a separator.
    for (const char* name : {"\u0100.kra", "x\uFF3CA.kra", "x\u2216A.kra",
                             ".\u00A5"
                             "A.kra"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ExitCode::kRefused, RunTool({"rm", In(name)}).exitCode);
        EXPECT_TRUE(IsStored("A.kra"));
    }
}

TEST_P(NamesTest, ArgumentWithHalfOfACharacterIsRefused) {
    for (const std::wstring& half : {std::wstring(L"\xD83D"), std::wstring(L"\xDE00")}) {
        const ToolRun run =
            RunToolWith({L"set", L"--create", L"<Work>\\a" + half + L".kra", L"S", L"K", L"V"});
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr("half of a character"));
        EXPECT_EQ("", RunTool({"ls", "<Work>\\"}).output);
    }
}

TEST_P(NamesTest, LsCountsTheNamesThatItCannotShow) {
    std::uint32_t foreign = 0;
    for (const char* name : kNames) {
        Store(WideFromUtf8(name));
        if (!runs_.Holds(name)) ++foreign;
    }
    const ToolRun text = RunTool({"ls", In("")});
    const ToolRun json = RunTool({"ls", "--json", In("")});
    EXPECT_EQ(ExitCode::kDone, text.exitCode);
    EXPECT_EQ(ExitCode::kDone, json.exitCode);
    if (foreign == 0) {
        EXPECT_EQ("", text.errors);
        EXPECT_EQ("", json.errors);
        return;
    }
    EXPECT_THAT(text.errors, testing::StartsWith("depotctl: " + std::to_string(foreign) + " name"));
    const auto report = nlohmann::json::parse(json.errors, nullptr, false);
    EXPECT_EQ(foreign, report.value("leftOut", 0u)) << json.errors;
    EXPECT_EQ(runs_.CodePage(), report.value("codePage", 0u));
}

TEST_P(NamesTest, DepotsWhoseNamesDifferInASecondByteStayApart) {
    // In the Japanese code page the second bytes of the two are one letter in two cases.
    const char* const keys[] = {"\u30A2", "\u30C2"};
    if (!SystemHolds(keys[0])) return;
    for (const char* key : keys) {
        const std::string name = ExactAnsiFromUtf8(key).value();
        DefineFolder(name, folder_.MakeFolder(name));
        const std::string file = std::string("<") + key + ">\\x.kra";
        EXPECT_EQ(ExitCode::kDone, RunTool({"set", "--create", file, "S", "K", key}).exitCode);
    }
    EXPECT_EQ(ExitCode::kDone, RunTool({"rm", std::string("<") + keys[0] + ">\\x.kra"}).exitCode);
    const std::string other = std::string("<") + keys[1] + ">\\x.kra";
    EXPECT_EQ(std::string(keys[1]) + "\n", RunTool({"get", other, "S", "K"}).output);
}

// A letter and a word that the system's code page has, above ASCII.
std::string OwnWord() {
    return OwnName();
}

// A word that no ANSI code page but that of UTF-8 has.
constexpr char kForeignWord[] = "\U0001F600";

std::string InSystemCodePage(const std::string& utf8) {
    return ExactFromWide(GetACP(), WideFromUtf8(utf8)).value();
}

TEST_P(NamesTest, ValuesOfApplicationsAreReadAndWrittenInTheirCodePage) {
    const std::string own = InSystemCodePage(OwnWord());
    const std::string head = "[" + own + "]\r\nA=" + own + "\r\n", tail = "Z=" + own + "\r\n";
    folder_.MakeFile("work\\plan.kra", head + "Key=1\r\n" + tail);
    const std::string plan = "<Work>\\plan.kra";
    EXPECT_EQ(OwnWord() + "\n", RunTool({"get", plan, OwnWord(), "A"}).output);
    EXPECT_EQ(OwnWord(), RunTool({"get", "--json", plan}).Json()[2]["value"].get<std::string>());
    const ToolRun run = RunTool({"set", plan, OwnWord(), "Key", "2 " + OwnWord()});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(head + "Key=2 " + own + "\r\n" + tail, FileBytes(folder_.At("work\\plan.kra")));
    EXPECT_EQ(ExitCode::kDone, RunTool({"set", "--remove", plan, OwnWord(), "Key"}).exitCode);
    EXPECT_EQ(head + tail, FileBytes(folder_.At("work\\plan.kra")));
}

TEST_P(NamesTest, AllBytesOfOtherValuesStay) {
    std::string before = "[S]\r\n";
    for (int first = 0x80; first < 0x100; ++first) {
        before += "K" + std::to_string(first) + "=";
        for (int second = 0x40; second < 0x100; ++second) {
            before += {static_cast<char>(first), static_cast<char>(second)};
        }
        // Half of a character ends the line.
        before += {'.', static_cast<char>(first), '\r', '\n'};
    }
    folder_.MakeFile("work\\all.kra", before + "Key=1\r\n");
    const ToolRun run = RunTool({"set", "<Work>\\all.kra", "S", "Key", "2 " + OwnWord()});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(before + "Key=2 " + InSystemCodePage(OwnWord()) + "\r\n",
              FileBytes(folder_.At("work\\all.kra")));
}

TEST_P(NamesTest, ValueThatTheProfilesCodePageLacksIsRefusedAndTheProfileStays) {
    const std::string plan = "<Work>\\plan.kra";
    const std::string before = "[S]\r\nOther=" + InSystemCodePage(OwnWord()) + "\r\n";
    folder_.MakeFile("work\\plan.kra", before);
    const ToolRun run = RunTool({"set", plan, "S", "Key", kForeignWord});
    if (GetACP() == CP_UTF8) {
        EXPECT_EQ(std::string(kForeignWord) + "\n", RunTool({"get", plan, "S", "Key"}).output);
        return;
    }
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("code page " + std::to_string(GetACP()) + ", in which"));
    EXPECT_EQ(before, FileBytes(folder_.At("work\\plan.kra")));
}

TEST_P(NamesTest, ProfilesInUnicodeStayInIt) {
    const std::string word = std::string("\u00E4\u8868") + kForeignWord;
    const auto wide = [](const std::string& utf8) {
        const std::wstring text = WideFromUtf8(utf8);
        return std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    };
    const auto text = [&](const std::string& value) {
        return "[S]\r\nA=" + word + "\r\nKey=" + value + "\r\n";
    };
    const std::string marked = "\xEF\xBB\xBF", wideMark = "\xFF\xFE";
    const struct {
        std::string before, after;
    } rows[] = {{text("1"), text(word)},
                {marked + text("1"), marked + text(word)},
                {wideMark + wide(text("1")), wideMark + wide(text(word))}};
    for (const auto& row : rows) {
        folder_.MakeFile("work\\plan.kra", row.before);
        EXPECT_EQ(word + "\n", RunTool({"get", "<Work>\\plan.kra", "S", "A"}).output);
        const ToolRun run = RunTool({"set", "<Work>\\plan.kra", "S", "Key", word});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_EQ(row.after, FileBytes(folder_.At("work\\plan.kra")));
    }
}

TEST_P(NamesTest, CodePageOfAnotherMachinesProfileCanBeGiven) {
    const std::string plan = "<Work>\\plan.kra";
    folder_.MakeFile("work\\plan.kra", "[S]\r\n\x95\x5C=\x83\x7C\r\n");
    EXPECT_EQ("\u30DD\n", RunTool({"get", "--code-page", "932", plan, "S", "\u8868"}).output);
    EXPECT_EQ(ExitCode::kDone,
              RunTool({"set", "--code-page=932", plan, "S", "\u8868", "\u5341"}).exitCode);
    EXPECT_EQ("[S]\r\n\x95\x5C=\x8F\x5C\r\n", FileBytes(folder_.At("work\\plan.kra")));
    for (const char* none :
         {"0", "1", "1200", "65000", "50220", "54936", "x", "-1", "99999999999"}) {
        EXPECT_EQ(ExitCode::kUsage,
                  RunTool({"get", std::string("--code-page=") + none, plan}).exitCode)
            << none;
    }
}

TEST_P(NamesTest, PublishingFollowsAndKeepsTextOfApplications) {
    // A file's name has to be one of the program's code page, too.
    const std::string own = InSystemCodePage(OwnWord());
    folder_.MakeFile(own + ".kre", "client");
    const std::string profile = "[Skein]\r\nCount=1\r\nA=" + own + "\r\n[Clients]\r\nC1=";
    folder_.MakeFile("team\\p.kra", profile + folder_.At(own + ".kre") + "\r\n");
    const ToolRun run = RunTool({"publish", "--json", "<Team>\\p.kra"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("<Team>\\" + OwnWord() + ".kre", run.Json()[0]["entry"].get<std::string>());
    EXPECT_EQ(profile + "<Team>\\" + own + ".kre\r\n", FileBytes(folder_.At("team\\p.kra")));
    EXPECT_EQ("client", FileBytes(folder_.At("team\\" + own + ".kre")));
}

TEST_P(NamesTest, PublishingInAFolderThatTheProfilesCodePageLacksCopiesNothing) {
    if (!runs_.Holds(kForeignWord) || GetACP() == CP_UTF8) return;
    folder_.MakeFile("c1.kre", "client");
    const std::string profile = "[Skein]\r\nCount=1\r\nA=" + InSystemCodePage(OwnWord()) +
                                "\r\n[Clients]\r\nC1=" + folder_.At("c1.kre") + "\r\n";
    folder_.MakeFile("team\\p.kra", profile);
    const std::string folder = In(kForeignWord);
    RunTool({"mkdir", folder});
    RunTool({"cp", "<Team>\\p.kra", folder});
    const ToolRun run = RunTool({"publish", folder + "\\p.kra"});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("code page " + std::to_string(GetACP()) + ", in which"));
    EXPECT_THAT(Listed(folder), ElementsAreArray({"p.kra"}));
    EXPECT_EQ(profile, RunTool({"cat", folder + "\\p.kra"}).output);
}

TEST_P(NamesTest, DepotsOfOneNameInTwoCasesAreOneName) {
    const bool western = SystemHolds("\u00E4");
    key_.Text("Work", "DisplayName.eng",
              ExactAnsiFromUtf8(western ? "\u00E4" : "\uFF41").value_or("x"));
    key_.Text("Team", "DisplayName.eng",
              ExactAnsiFromUtf8(western ? "\u00C4" : "\uFF21").value_or("X"));
    EXPECT_THAT(RunTool({"check", "--offline"}).output, HasSubstr("which has the same name"));
}

TEST(ProgramNamesTest, ProgramDeclaresTheCodePageOfUtf8) {
    const UniqueModule program(
        LoadLibraryExA(ToolPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_NE(nullptr, program.get());
    const HRSRC resource =
        FindResourceA(program.get(), CREATEPROCESS_MANIFEST_RESOURCE_ID, MAKEINTRESOURCEA(24));
    ASSERT_NE(nullptr, resource);
    const auto* const bytes =
        static_cast<const char*>(LockResource(LoadResource(program.get(), resource)));
    const std::string manifest(bytes, SizeofResource(program.get(), resource));
    EXPECT_THAT(manifest,
                HasSubstr("<activeCodePage "
                          "xmlns=\"http://schemas.microsoft.com/SMI/2019/WindowsSettings\">UTF-8"
                          "</activeCodePage>"));
}

class DirectoryNamesTest : public ToolTest, public testing::WithParamInterface<Runs> {
protected:
    DirectoryDepot dir_{key_};
    const ProgramRuns runs_{GetParam()};
};

TEST_P(DirectoryNamesTest, EntriesAreMadeListedReadAndRemovedUnderTheirOwnNames) {
    const std::vector<std::string> names = runs_.NamesOf(true);
    const std::string folder = "<Dir>\\" + OwnName();
    EXPECT_EQ(ExitCode::kDone, RunTool({"mkdir", folder}).exitCode);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const std::string entry = folder + "\\" + name;
        const ToolRun run = RunTool({"set", "--create", entry, "Section", "Key", "Value"});
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        EXPECT_EQ("Value\n", RunTool({"get", entry, "Section", "Key"}).output);
    }
    EXPECT_THAT(Listed(folder), ElementsAreArray(InOrder(names)));
    EXPECT_EQ(ExitCode::kDone, RunTool({"cp", "-r", folder, "<Work>\\"}).exitCode);
    EXPECT_THAT(Listed("<Work>\\" + OwnName()), ElementsAreArray(InOrder(names)));
    for (const std::string& name : names) {
        EXPECT_EQ(ExitCode::kDone, RunTool({"rm", folder + "\\" + name}).exitCode) << name;
    }
    EXPECT_EQ("", RunTool({"ls", folder}).output);
}

TEST_P(DirectoryNamesTest, ValuesOfApplicationsAreReadAndWrittenInTheirCodePage) {
    const std::string own = ExactFromWide(GetACP(), WideFromUtf8(OwnName())).value();
    const std::string head = "[S]\r\nA=" + own + "\x81\r\n";
    dir_.server.AddFile("plan.kra", "cn=Sessions," + dir_.base, head + "Key=1\r\n");
    const std::string plan = "<Dir>\\Sessions\\plan.kra";
    EXPECT_EQ("1\n", RunTool({"get", plan, "S", "Key"}).output);
    const ToolRun run = RunTool({"set", plan, "S", "Key", OwnName()});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(head + "Key=" + own + "\r\n", RunTool({"cat", plan}).output);
    EXPECT_EQ(OwnName() + "\n", RunTool({"get", plan, "S", "Key"}).output);
}

constexpr Runs kRuns[] = {Runs::kAsDeclared, Runs::kInSystemCodePage};
INSTANTIATE_TEST_SUITE_P(Runs, NamesTest, testing::ValuesIn(kRuns), NameOfRuns);
INSTANTIATE_TEST_SUITE_P(Runs, DirectoryNamesTest, testing::ValuesIn(kRuns), NameOfRuns);

}  // namespace
}  // namespace depot::test
