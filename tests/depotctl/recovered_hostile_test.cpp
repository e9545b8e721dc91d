// recovered: what records may say, what may be in the way, and names in every code page.
#include "depotctl/recovered_fixture.h"
#include "platform/local_file.h"

namespace depot::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// What records may say, and what may be in the way.
using HostileRecoveredTest = RecoveredTest;

TEST_F(HostileRecoveredTest, DamagedRecordLeadsNowhere) {
    const std::string name = Keep();
    ASSERT_TRUE(WriteLocalFile(KeptWorld::RecordOf(name), "damaged", 7));
    EXPECT_EQ(true, List()[0]["damaged"]);
    ExpectNoWay(name, "is damaged");
}

TEST_F(HostileRecoveredTest, RecordOfAnotherFileLeadsNowhere) {
    const std::string name = Keep(), other = Keep("other");
    ASSERT_TRUE(
        CopyFileA(KeptWorld::RecordOf(other).c_str(), KeptWorld::RecordOf(name).c_str(), FALSE));
    DeleteFileA((RecoveredFolder() + "\\" + other).c_str());
    ExpectNoWay(name, "is damaged");
}

TEST_F(HostileRecoveredTest, RecordOfAnotherServerLeadsNowhere) {
    const std::string dn = world_.Dn();
    ExpectNoWay(KeepOf(kKeptOurs, {.server = "%s%n.example.test:389", .dn = dn}),
                "no depot has the entry");
}

TEST_F(HostileRecoveredTest, EntryOutsideOfEveryDepotLeadsNowhere) {
    const CDepotPath location = world_.server.Location("ou=elsewhere,dc=other");
    const std::vector<std::string> names = {
        "cn=office.kre,dc=other", world_.base, "", "\\", ",,,,", "cn=\\", "%s%n"};
    for (const std::string& dn : names) {
        SCOPED_TRACE(dn);
        ExpectNoWay(KeepOf(kKeptOurs, {.location = &location, .dn = dn}), "no depot has the entry");
        DeleteFileA(folder_.At("work\\back.kre").c_str());
    }
}

TEST_F(HostileRecoveredTest, LongNamesOfEntriesEnd) {
    std::string dn;
    while (dn.size() < 100'000) dn += "cn=x,";
    dn += world_.base;
    ExpectNoWay(KeepOf(kKeptOurs, {.server = "x:1", .dn = dn}), "no depot has the entry");
}

TEST_F(HostileRecoveredTest, NamesWithFormatsAreNames) {
    world_.server.AddFile("%s%n.kre", "cn=Sessions," + world_.base, kKeptBase);
    const CDepotPath location = world_.Location();
    const std::string dn = world_.Dn("%s%n.kre");
    const std::string name =
        KeepOf(kKeptOurs, {.location = &location, .dn = dn, .base = KeptWorld::BytesOf(kKeptBase)},
               "%s%n.kre");
    EXPECT_THAT(RunTool({"recovered"}).output, HasSubstr("<Dir>\\Sessions\\%s%n.kre"));
    const ToolRun run = Restore(name);
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(kKeptOurs, world_.Entry("%s%n.kre"));
}

TEST_F(HostileRecoveredTest, ServerThatIsAwayLosesNothing) {
    CDepotPath location = world_.Location();
    location.port = ClosedPort();
    key_.Dword("Dir", "Port1", location.port);
    const std::string dn = world_.Dn();
    const std::string name =
        KeepOf(kKeptOurs, {.location = &location, .dn = dn, .base = KeptWorld::BytesOf(kKeptBase)});
    EXPECT_EQ("out of reach", Now());
    for (const char* const option : {"--merge", "--replace"}) {
        EXPECT_EQ(ExitCode::kUnreachable, Restore(name, {option}).exitCode);
    }
    const ToolRun diff = RunTool({"recovered", "diff", name});
    EXPECT_EQ(ExitCode::kUnreachable, diff.exitCode);
    EXPECT_THAT(diff.output, HasSubstr("post"));
    EXPECT_TRUE(IsKept(name));
}

TEST_F(HostileRecoveredTest, LockedCopyStays) {
    const std::string name = Keep(), other = Keep("other");
    {
        const OpenFile held(RecoveredFolder() + "\\" + name);
        EXPECT_EQ(ExitCode::kRefused, Restore(name).exitCode);
        EXPECT_EQ(kKeptBase, world_.Entry());
        const ToolRun run = RunTool({"recovered", "discard", "--all", "-y"});
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, HasSubstr("cannot delete \"" + name));
    }
    EXPECT_TRUE(IsKept(name));
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(other)));
    EXPECT_EQ(ExitCode::kDone, Restore(name).exitCode);
}

TEST_F(HostileRecoveredTest, FullDiskKeepsTheCopyAndLeavesNoPart) {
    // Where no volume can be mounted a place in which nothing can be made.
    std::string volume = world_.server.SmallVolume();
    if (volume.empty()) volume = folder_.MakeFile("no folder", "x");
    const std::string name = Keep(std::string(100'000, 'x'));
    const std::string target = volume + "\\out.kre";
    EXPECT_EQ(ExitCode::kRefused, RunTool({"recovered", "export", name, target}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, Restore(name, {"--to", target}).exitCode);
    EXPECT_FALSE(Exists(target));
    EXPECT_TRUE(IsKept(name));
}

TEST_F(HostileRecoveredTest, RecordThatCannotBeWrittenKeepsTheFile) {
    const std::string folder = RecoveredFolder() + " records";
    for (const std::string& path : FilesIn(folder, "*")) DeleteFileA(path.c_str());
    RemoveDirectoryA(folder.c_str());
    ASSERT_TRUE(WriteLocalFile(folder, "in the way", 10));
    const std::string name = Keep();
    EXPECT_EQ(kKeptOurs, FileBytes(RecoveredFolder() + "\\" + name));
    EXPECT_EQ(name, List()[0]["file"].get<std::string>());
    DeleteFileA(folder.c_str());
}

// Names and values outside of ASCII, in every code page that the component runs in.
using RecoveredCharactersTest = RecoveredTest;

void ExpectTheWayBack(const KeptWorld& world) {
    const std::string letter = LetterOfCodePage();
    const std::string utf8 = ExactUtf8FromAnsi(letter).value();
    const std::string file = letter + ".kre";
    const std::string base = "[" + letter + "]\r\nName=" + letter + "\r\n";
    const std::string ours = base + "Port=" + letter + "\r\n";
    const std::string theirs = "[Other]\r\nKey=" + letter + "\r\n" + base;
    world.AddFile(utf8 + ".kre", theirs);
    const CDepotPath location = world.Location();
    const std::string dn = world.Dn(file);
    const std::string path = KeptWorld::KeepOf(
        ours, {.location = &location, .dn = dn, .reason = letter, .base = KeptWorld::BytesOf(base)},
        file);
    const nlohmann::json row = List(true)[0];
    EXPECT_EQ("<Dir>\\Sessions\\" + utf8 + ".kre", row["entry"].get<std::string>());
    EXPECT_EQ(utf8, row["why"].get<std::string>());
    EXPECT_EQ("changed", row["now"]);
    const std::string shown = ExactUtf8FromAnsi(NamePart(path)).value();
    const nlohmann::json diff = RunTool({"recovered", "diff", "--json", shown}).Json();
    EXPECT_EQ(utf8, diff["values"][0]["ours"].get<std::string>());
    const ToolRun run = Restore(shown, {"--merge"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("[Other]\r\nKey=" + letter + "\r\n" + ours, world.Entry(file));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RecoveredCharactersTest, NamesAndValuesComeBackWhole) {
    ExpectTheWayBack(world_);
}

TEST_F(RecoveredCharactersTest, NamesAndValuesComeBackOnOlderSystems) {
    const SystemCodePageScope older;
    ExpectTheWayBack(world_);
}

}  // namespace
}  // namespace depot::test
