// recovered: the way back for kept copies.
#include "depotctl/console.h"
#include "depotctl/recovered_fixture.h"
#include "platform/local_file.h"

namespace depot::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

TEST_F(RecoveredTest, ListShowsWhereAFileComesFromAndWhy) {
    EXPECT_EQ("", RunTool({"recovered"}).output);
    const std::string name = Keep();
    const nlohmann::json row = List()[0];
    EXPECT_EQ(name, row["file"].get<std::string>());
    EXPECT_EQ("recovered", row["state"]);
    EXPECT_EQ("<Dir>\\Sessions\\office.kre", row["entry"]);
    EXPECT_EQ("Dir", row["depot"]);
    EXPECT_EQ(world_.Dn(), row["dn"].get<std::string>());
    EXPECT_EQ("127.0.0.1:" + std::to_string(world_.server.Port()),
              row["server"].get<std::string>());
    EXPECT_EQ("no rights", row["why"]);
    EXPECT_EQ(50, row["code"]);
    EXPECT_EQ(19, row["size"]);
    EXPECT_EQ(true, row["base"]);
    EXPECT_EQ(20u, row["when"].get<std::string>().size());
    EXPECT_THAT(
        RunTool({"recovered"}).output,
        AllOf(HasSubstr(name), HasSubstr("<Dir>\\Sessions\\office.kre"), HasSubstr("no rights")));
}

TEST_F(RecoveredTest, FileWithoutARecordIsListed) {
    const std::string path = KeepRecovered("x.kre", "x", 1);
    EXPECT_EQ(NamePart(path), List(true)[0]["file"].get<std::string>());
    EXPECT_FALSE(List()[0].contains("entry"));
    EXPECT_THAT(Restore(NamePart(path)).errors, HasSubstr("nothing is noted"));
    EXPECT_EQ(ExitCode::kRefused, RunTool({"recovered", "diff", NamePart(path)}).exitCode);
    EXPECT_TRUE(Exists(path));
}

TEST_F(RecoveredTest, CheckReportsWhatBecameOfTheEntry) {
    Keep();
    EXPECT_EQ("as it was", Now());
    world_.StoreByOthers(kKeptTheirs);
    EXPECT_EQ("changed", Now());
    world_.StoreByOthers(kKeptOurs);
    EXPECT_EQ("stored already", Now());
    world_.RemoveEntry();
    EXPECT_EQ("gone", Now());
}

TEST_F(RecoveredTest, RestoreStoresIntoAnEntryThatHoldsTheBase) {
    const std::string name = Keep();
    const ToolRun dry = Restore(name, {"--dry-run"});
    EXPECT_EQ(ExitCode::kDone, dry.exitCode) << dry.errors;
    EXPECT_THAT(dry.output, HasSubstr("would replace " + name + " to <Dir>\\Sessions\\office.kre"));
    EXPECT_EQ(kKeptBase, world_.Entry());
    EXPECT_TRUE(IsKept(name));
    const ToolRun run = Restore(name);
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ("restored " + name + " to <Dir>\\Sessions\\office.kre\n", run.output);
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(name)));
}

TEST_F(RecoveredTest, CopyThatTheEntryHoldsAlreadyIsOnlyDeleted) {
    const std::string name = Keep();
    world_.StoreByOthers(kKeptOurs);
    EXPECT_EQ(ExitCode::kDone, Restore(name).exitCode);
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RecoveredTest, RestoreLeavesAnEntryThatSomeoneChanged) {
    const std::string name = Keep();
    world_.StoreByOthers(kKeptTheirs);
    ExpectRefused(Restore(name), "use --merge or --replace", name, kKeptTheirs);
}

TEST_F(RecoveredTest, MergePutsBothTogether) {
    const std::string name = Keep();
    world_.StoreByOthers(kKeptTheirs);
    const ToolRun run = Restore(name, {"--merge", "--json"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(true, run.Json()["merged"]);
    EXPECT_EQ("[Host]\r\nName=post\r\nPort=22\r\n", world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RecoveredTest, MergeStoresNothingWhereBothChangedAValue) {
    const std::string name = Keep();
    const std::string theirs = "[Host]\r\nName=other\r\nPort=22\r\n";
    world_.StoreByOthers(theirs);
    ExpectRefused(Restore(name, {"--merge"}), "both changed 1 value: [Host] Name", name, theirs);
    EXPECT_EQ(ExitCode::kDone, Restore(name, {"--merge", "--replace"}).exitCode);
    EXPECT_EQ("[Host]\r\nName=post\r\nPort=22\r\n", world_.Entry());
}

TEST_F(RecoveredTest, MergeThatReplacesKeepsTheCommentsOfBoth) {
    const std::string name = Keep("; copy's\r\n[Host]\r\n; renamed\r\nName=post\r\n");
    world_.StoreByOthers(
        "; entry's\r\n\r\n[Host]\r\n; by Anna\r\nName=other\r\n\r\n; why\r\nPort=22\r\n");
    const ToolRun run = Restore(name, {"--merge", "--replace"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(
        "; copy's\r\n; entry's\r\n\r\n[Host]\r\n; by Anna\r\n; renamed\r\nName=post\r\n\r\n"
        "; why\r\nPort=22\r\n",
        world_.Entry());
}

TEST_F(RecoveredTest, MergeThatReplacesStoresNothingOverWhatIsNoProfile) {
    const std::string name = Keep();
    const std::string theirs = "; without a section\r\nName=other\r\n";
    world_.StoreByOthers(theirs);
    ExpectRefused(Restore(name, {"--merge", "--replace"}), "use --replace alone", name, theirs);
}

TEST_F(RecoveredTest, ReplaceStoresOverWhateverTheEntryHolds) {
    const std::string name = Keep();
    world_.StoreByOthers(kKeptTheirs);
    EXPECT_EQ(ExitCode::kDone, Restore(name, {"--replace"}).exitCode);
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(RecoveredTest, EntryThatIsGoneIsMadeAnewOnlyWhenAsked) {
    const std::string name = Keep();
    world_.server.Apply("dn: " + world_.Dn() + "\nchangetype: delete\n\ndn: cn=Sessions," +
                        world_.base + "\nchangetype: delete\n");
    ExpectRefused(Restore(name), "--replace makes it anew", name, "(missing)");
    const ToolRun run = Restore(name, {"--replace"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(RecoveredTest, CopyWithoutABaseIsReplacedOnlyWhenAsked) {
    // One that an ended program left.
    const std::string server = "127.0.0.1:" + std::to_string(world_.server.Port());
    const std::string dn = world_.Dn();
    const std::string name = KeepOf(kKeptOurs, {.server = server, .dn = dn, .reason = "it ended"});
    EXPECT_EQ("not known", Now());
    ExpectRefused(Restore(name), "what the copy was made from is not known", name, kKeptBase);
    ExpectRefused(Restore(name, {"--merge"}), "cannot be merged", name, kKeptBase);
    EXPECT_EQ(ExitCode::kDone, Restore(name, {"--replace"}).exitCode);
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(RecoveredTest, RestoreStoresElsewhere) {
    const std::string name = Keep();
    folder_.MakeFile("work\\other.kre", kKeptTheirs);
    const ToolRun other = Restore(name, {"--to", "<Work>\\other.kre"});
    EXPECT_EQ(ExitCode::kRefused, other.exitCode);
    EXPECT_EQ(kKeptTheirs, Bytes("work\\other.kre"));
    EXPECT_EQ(ExitCode::kRefused, Restore(name, {"--to", "<Work>\\"}).exitCode);
    const ToolRun merged = Restore(name, {"--merge", "--to", "<Work>\\other.kre", "--dry-run"});
    EXPECT_EQ(ExitCode::kDone, merged.exitCode) << merged.errors;
    EXPECT_TRUE(IsKept(name));
    const ToolRun run = Restore(name, {"--to", "<Dir>\\New\\moved.kre"});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(kKeptOurs, RunTool({"cat", "<Dir>\\New\\moved.kre"}).output);
    EXPECT_EQ(kKeptBase, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RecoveredTest, DiffShowsTheThreeVersionsByValue) {
    const std::string name = Keep();
    world_.StoreByOthers(kKeptTheirs);
    const nlohmann::json diff = RunTool({"recovered", "diff", "--json", name}).Json();
    ASSERT_THAT(diff["values"], SizeIs(2));
    EXPECT_EQ("Name", diff["values"][0]["key"]);
    EXPECT_EQ("mail", diff["values"][0]["base"]);
    EXPECT_EQ("mail", diff["values"][0]["entry"]);
    EXPECT_EQ("post", diff["values"][0]["ours"]);
    EXPECT_EQ("22", diff["values"][1]["entry"]);
    EXPECT_TRUE(diff["values"][1]["ours"].is_null());
    EXPECT_THAT(RunTool({"recovered", "diff", name}).output, HasSubstr("SECTION"));
    EXPECT_EQ("<Dir>\\Sessions\\office.kre", diff["entry"]);
    world_.RemoveEntry();
    const ToolRun gone = RunTool({"recovered", "diff", name});
    EXPECT_EQ(ExitCode::kDone, gone.exitCode);
    EXPECT_THAT(gone.errors, HasSubstr("the entry is not there"));
}

TEST_F(RecoveredTest, DiffOfNoProfileComparesSizes) {
    const std::string name = Keep(std::string("\0\1\2", 3));
    EXPECT_EQ("no profile: base 19 bytes, entry 19 bytes, ours 3 bytes\n",
              RunTool({"recovered", "diff", name}).output);
}

TEST_F(RecoveredTest, ExportCopiesAndKeeps) {
    const std::string name = Keep();
    const ToolRun run = RunTool({"recovered", "export", name, folder_.Path()});
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    EXPECT_EQ(kKeptOurs, Bytes(name));
    EXPECT_TRUE(IsKept(name));
    EXPECT_THAT(RunTool({"recovered", "export", name, folder_.Path()}).errors,
                HasSubstr("exists already"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"recovered", "export", name, "<Work>\\a.kre"}).exitCode);
    EXPECT_EQ(kKeptOurs, Bytes("work\\a.kre"));
}

TEST_F(RecoveredTest, DiscardDeletesWhatIsNamedAndAsksBefore) {
    const std::string name = Keep(), other = Keep("other");
    const ToolRun unasked = RunTool({"recovered", "discard", name});
    EXPECT_EQ(ExitCode::kRefused, unasked.exitCode);
    EXPECT_THAT(unasked.errors, HasSubstr("--yes"));
    EXPECT_EQ(ExitCode::kUsage, RunTool({"recovered", "discard", "--yes"}).exitCode);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"recovered", "discard", "-y", name, "none"}).exitCode);
    EXPECT_THAT(RecoveredFiles(), SizeIs(2));
    EXPECT_EQ("discarded 1\n", RunTool({"recovered", "discard", "-y", name}).output);
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(name)));
    EXPECT_TRUE(IsKept(other));
    EXPECT_EQ(ExitCode::kDone, RunTool({"recovered", "discard", "--all", "--yes"}).exitCode);
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RecoveredTest, NamesThatLeadElsewhereNameNothing) {
    folder_.MakeFile("victim.kre", "v");
    Keep();
    for (const std::string& name :
         {std::string("..\\..\\x"), folder_.At("victim.kre"), std::string("%s%n%s"),
          std::string("*"), std::string(20'000, 'x')}) {
        EXPECT_EQ(ExitCode::kRefused, RunTool({"recovered", "discard", "-y", name}).exitCode);
        EXPECT_EQ(ExitCode::kRefused, Restore(name).exitCode);
    }
    EXPECT_TRUE(Holds("victim.kre"));
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

TEST_F(RecoveredTest, DiscardAsksAtATerminal) {
    const std::string name = Keep();
    TestConsole console(100);
    console.Start({"recovered", "discard", name});
    ASSERT_TRUE(console.WaitFor("[y/N]")) << console.Screen();
    EXPECT_THAT(console.Screen(), HasSubstr(name));
    console.Type(L"\r");
    EXPECT_EQ(ExitCode::kRefused, console.Finish());
    EXPECT_TRUE(IsKept(name));
    console.Start({"recovered", "discard", "--all"});
    console.Type(L"y\r");
    EXPECT_EQ(ExitCode::kDone, console.Finish()) << console.Screen();
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

using WaitingTest = RecoveredTest;

// Has an edit wait for the server, beside a file that is kept, and returns its name.
std::string LetAnEditWait(const ScratchKey& definitions, const KeptWorld& world) {
    definitions.Dword("Dir", "Offline1", 1);
    world.Queue();
    const CDepotPath location = world.Location();
    OfflineLocation(location).KeepFile(world.Dn("other.kre"), "x", 1);
    return List()[0]["file"];
}

TEST_F(WaitingTest, EditIsListedAndDiscardedByItsName) {
    const std::string name = LetAnEditWait(key_, world_);
    const nlohmann::json row = List()[0];
    EXPECT_EQ("waiting", row["state"]);
    EXPECT_EQ("<Dir>\\Sessions\\office.kre", row["entry"]);
    EXPECT_EQ(19, row["size"]);
    EXPECT_EQ("as it was", Now());
    EXPECT_THAT(Restore(name).errors, HasSubstr("is stored by itself"));
    EXPECT_EQ(ExitCode::kDone, RunTool({"recovered", "export", name, folder_.Path()}).exitCode);
    EXPECT_EQ("post", RunTool({"recovered", "diff", "--json", name}).Json()["values"][0]["ours"]);
    EXPECT_EQ("discarded 0\n", RunTool({"recovered", "discard", "--all", "-y"}).output);
    ASSERT_THAT(WaitingEdits(), SizeIs(1));
    EXPECT_EQ("discarded 1\n", RunTool({"recovered", "discard", "-y", name}).output);
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    EXPECT_EQ(kKeptBase, world_.Entry());
}

TEST_F(WaitingTest, EditThatIsBeingStoredStays) {
    const std::string name = LetAnEditWait(key_, world_);
    const EditsLock lock(OfflineFolders().front(), 0);
    ASSERT_TRUE(lock);
    const ToolRun run = RunTool({"recovered", "discard", "-y", name});
    EXPECT_EQ(ExitCode::kRefused, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("is just being stored"));
    EXPECT_THAT(WaitingEdits(), SizeIs(1));
}

TEST_F(WaitingTest, CheckCountsWhatIsKeptOfALocation) {
    LetAnEditWait(key_, world_);
    Keep();
    WriteLocalFile(OfflineFolders().front() + "\\x.file.damaged", "x", 1);
    const ToolRun run = RunTool({"check", "--offline", "--json", "Dir"});
    const nlohmann::json kept = run.Json()["depots"][0]["locations"][0]["kept"];
    EXPECT_EQ(1, kept["files"]);
    EXPECT_GT(kept["bytes"], 0);
    EXPECT_EQ(1, kept["edits"]);
    EXPECT_EQ(1, kept["damaged"]);
    EXPECT_EQ(1, kept["recovered"]);
    EXPECT_THAT(RunTool({"check", "--offline", "Dir"}).output,
                HasSubstr("offline: 1 file kept, 1 KB; 1 edit waiting, 1 file damaged, "
                          "1 recovered file"));
    key_.Dword("Dir", "Offline1", 0);
    EXPECT_THAT(RunTool({"check", "--offline", "Dir"}).output, Not(HasSubstr("offline:")));
}

TEST_F(WaitingTest, DamagedEditIsListedAsSuch) {
    const std::string name = LetAnEditWait(key_, world_);
    WriteLocalFile(FilesIn(OfflineFolders().front(), "*.edit").front(), "damaged", 7);
    const nlohmann::json row = List(true)[0];
    EXPECT_EQ(true, row["damaged"]);
    EXPECT_EQ("damaged", row["why"]);
    EXPECT_EQ(ExitCode::kRefused, RunTool({"recovered", "diff", name}).exitCode);
    EXPECT_EQ(ExitCode::kDone, RunTool({"recovered", "discard", "-y", name}).exitCode);
}

}  // namespace
}  // namespace depot::test
