// Storing recovered files where they belong, and comparing them with what is there.
#include "recovery/restoration.h"

#include "manager/display_path.h"
#include "platform/system_code_page.h"
#include "recovery/recovery_fixture.h"

namespace depot::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class RestorationTest : public WayBackTest {
protected:
    Return Begin() { return {depots_, OnlyCopy()}; }
};

TEST_F(RestorationTest, EntryThatHoldsTheBaseReceivesTheCopy) {
    const std::string path = world_.Keep();
    EXPECT_FALSE(Begin().Store().has_value());
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_FALSE(Exists(path));
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(path)));
}

TEST_F(RestorationTest, EntryThatSomeoneChangedStopsThePlan) {
    const std::string path = world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    EXPECT_EQ(RestoreObstacle::kChanged, Begin().Plan().obstacle);
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(RestorationTest, MergePutsBothTogether) {
    world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    const Return back = Begin();
    const RestorePlan plan = back.Plan({.merges = true});
    EXPECT_TRUE(plan.isMerged);
    EXPECT_FALSE(back.Store(plan).has_value());
    EXPECT_EQ(kKeptBoth, world_.Entry());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RestorationTest, ConflictsAreNamedAndOursTakenOnlyWhenAsked) {
    world_.Keep();
    world_.StoreByOthers("[Host]\r\nName=other\r\nPort=22\r\n");
    const Return back = Begin();
    const RestorePlan stopped = back.Plan({.merges = true});
    EXPECT_EQ(RestoreObstacle::kConflicts, stopped.obstacle);
    EXPECT_THAT(stopped.conflicts, testing::ElementsAre(MergeConflict{"Host", "Name"}));
    EXPECT_FALSE(back.Store({.merges = true, .replaces = true}).has_value());
    EXPECT_EQ(kKeptBoth, world_.Entry());
}

TEST_F(RestorationTest, ReplacementStoresOverWhateverTheEntryHolds) {
    world_.Keep();
    world_.StoreByOthers(kKeptTheirs);
    EXPECT_FALSE(Begin().Store({.replaces = true, .makes = true}).has_value());
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(RestorationTest, TargetThatIsGoneIsMadeOnlyWhenAsked) {
    const std::string path = world_.Keep();
    world_.server.Apply("dn: " + world_.Dn() + "\nchangetype: delete\n\ndn: cn=Sessions," +
                        world_.base + "\nchangetype: delete\n");
    const Return back = Begin();
    EXPECT_EQ(std::nullopt, back.Contents().bytes);
    EXPECT_EQ(RestoreObstacle::kGone, back.Plan({.merges = true}).obstacle);
    EXPECT_TRUE(KeptWorld::IsKept(path));
    EXPECT_FALSE(back.Store({.makes = true}).has_value());
    EXPECT_EQ(kKeptOurs, world_.Entry());
}

TEST_F(RestorationTest, EntryThatChangesAfterItWasReadIsLeft) {
    const std::string path = world_.Keep();
    const Return back = Begin();
    const RestorePlan plan = back.Plan({.replaces = true});
    world_.StoreByOthers(kKeptTheirs);
    const auto failure = back.Store(plan);
    ASSERT_TRUE(failure);
    EXPECT_EQ(StoreStep::kWrite, failure->step);
    EXPECT_EQ(Reason::kChanged, failure->why.reason);
    EXPECT_EQ(kKeptTheirs, world_.Entry());
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(RestorationTest, EntryThatIsMadeAfterItWasMissedIsLeft) {
    const std::string path = world_.Keep();
    world_.RemoveEntry();
    const Return back = Begin();
    const RestorePlan plan = back.Plan({.makes = true});
    world_.AddFile("office.kre", kKeptTheirs);
    const auto failure = back.Store(plan);
    ASSERT_TRUE(failure);
    EXPECT_EQ(Reason::kChanged, failure->why.reason);
    EXPECT_EQ(kKeptTheirs, world_.Entry());
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(RestorationTest, EntryThatHoldsTheCopyAlreadyIsLeftAsItIs) {
    world_.Keep();
    world_.StoreByOthers(kKeptOurs);
    const Return back = Begin();
    const RestorePlan plan = back.Plan();
    EXPECT_TRUE(plan.isStoredAlready);
    world_.server.Mark();
    EXPECT_FALSE(back.Store(plan).has_value());
    EXPECT_EQ(0, world_.server.Counts().modifications);
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(RestorationTest, CopyThatIsLockedIsStoredAndStays) {
    const std::string path = world_.Keep();
    const Return back = Begin();
    const RestorePlan plan = back.Plan();
    {
        const OpenFile held(path);
        const auto failure = back.Store(plan);
        ASSERT_TRUE(failure);
        EXPECT_EQ(StoreStep::kDelete, failure->step);
    }
    EXPECT_EQ(kKeptOurs, world_.Entry());
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(RestorationTest, CopyWithoutABaseIsNotMerged) {
    const std::string server = "127.0.0.1:" + std::to_string(world_.server.Port());
    const std::string dn = world_.Dn();
    KeptWorld::KeepOf(kKeptOurs, {.server = server, .dn = dn});
    const Return back = Begin();
    EXPECT_EQ(RestoreObstacle::kChanged, back.Plan().obstacle);
    EXPECT_EQ(RestoreObstacle::kNoBase, back.Plan({.merges = true}).obstacle);
    EXPECT_EQ(RestoreObstacle::kNoBase, back.Plan({.merges = true, .replaces = true}).obstacle);
    EXPECT_EQ(std::nullopt, back.Plan({.replaces = true}).obstacle);
}

TEST_F(RestorationTest, WhatIsNoProfileIsNotMerged) {
    world_.Keep(std::string("\0\1\2", 3));
    world_.StoreByOthers(kKeptTheirs);
    EXPECT_EQ(RestoreObstacle::kNoProfile, Begin().Plan({.merges = true}).obstacle);
    EXPECT_EQ(RestoreObstacle::kNoProfile,
              Begin().Plan({.merges = true, .replaces = true}).obstacle);
}

TEST_F(RestorationTest, ServerThatIsAwayIsReportedAndLosesNothing) {
    CDepotPath location = world_.Location();
    location.port = ClosedPort();
    world_.Define(location.port);
    CDepots depots(kDepotsKey);
    const std::string dn = world_.Dn();
    const std::string path = KeptWorld::KeepOf(kKeptOurs, {.location = &location, .dn = dn});
    const Return back(depots, OnlyCopy());
    EXPECT_FALSE(back.Contents().result);
    EXPECT_EQ(TargetContents::Step::kReach, back.Contents().failed);
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

// A file of a depot in a folder.
class FileTargetTest : public WayBackTest {
protected:
    FileTargetTest() {
        definitions_.Text("Work", "Path1", folder_.Path());
        depots_.Load(kDepotsKey);
    }
    std::unique_ptr<const KeptTarget> Target(const std::string& name) {
        CDepot* const depot =
            FindDepotForPath(depots_, "<Work>\\" + name, PathForm::kDisplay, DepotName::kKey);
        return MakeKeptTarget(*depot, "<Work>\\" + name);
    }

    const ScratchFolder folder_;
};

TEST_F(FileTargetTest, FileIsMadeReadAndReplaced) {
    const auto target = Target("a.kre");
    EXPECT_EQ(std::nullopt, target->Read().bytes);
    EXPECT_THAT(target->Write(Bytes("one"), std::nullopt), IsDone());
    EXPECT_EQ(Bytes("one"), target->Read().bytes);
    EXPECT_THAT(target->Write(Bytes("two"), std::nullopt), FailsFor(Reason::kChanged));
    EXPECT_THAT(target->Write(Bytes("two"), Bytes("other")), FailsFor(Reason::kChanged));
    EXPECT_THAT(target->Write(Bytes("two"), Bytes("one")), IsDone());
    EXPECT_EQ("two", FileBytes(folder_.At("a.kre")));
}

TEST_F(FileTargetTest, FolderIsNoTarget) {
    folder_.MakeFolder("a.kre");
    const TargetContents contents = Target("a.kre")->Read();
    EXPECT_THAT(contents.result, FailsFor(Reason::kInvalid));
}

TEST_F(FileTargetTest, FullDiskLeavesNoPart) {
    // Where no volume can be mounted a place in which nothing can be made.
    std::string volume = world_.server.SmallVolume();
    if (volume.empty()) volume = folder_.MakeFile("no folder", "x");
    definitions_.Text("Work", "Path1", volume);
    depots_.Load(kDepotsKey);
    const auto target = Target("big.kre");
    EXPECT_THAT(target->Write(KeptBytes(100'000, 'x'), std::nullopt), Fails());
    EXPECT_FALSE(Exists(volume + "\\big.kre"));
}

class KeptValuesTest : public testing::Test {
protected:
    static std::vector<KeptValue> Different(const KeptVersions& versions) {
        std::optional<std::vector<KeptValue>> values;
        EXPECT_THAT(DifferentValues(versions, values), IsDone());
        return values.value_or(std::vector<KeptValue>());
    }
};

TEST_F(KeptValuesTest, ThreeVersionsAreComparedByValue) {
    const auto values = Different({Bytes(kKeptBase), Bytes(kKeptTheirs), Bytes(kKeptOurs)});
    ASSERT_THAT(values, SizeIs(2));
    EXPECT_EQ("Name", values[0].key);
    EXPECT_EQ("mail", values[0].base);
    EXPECT_EQ("mail", values[0].entry);
    EXPECT_EQ("post", values[0].ours);
    EXPECT_EQ("22", values[1].entry);
    EXPECT_EQ(std::nullopt, values[1].ours);
}

TEST_F(KeptValuesTest, WhatIsNoProfileHasNoValues) {
    std::optional<std::vector<KeptValue>> values = std::vector<KeptValue>(1);
    EXPECT_THAT(
        DifferentValues({Bytes(kKeptBase), std::nullopt, Bytes(std::string(3, '\0'))}, values),
        IsDone());
    EXPECT_EQ(std::nullopt, values.has_value() ? std::optional(1) : std::nullopt);
}

TEST_F(KeptValuesTest, ProfilesInUtf8AreMergedInEitherCodePage) {
    InstallSystemCodePage();
    const std::string sign = "\xC3\xA9";
    const KeptVersions versions = {Bytes("[" + sign + "]\r\nA=1\r\n"),
                                   Bytes("[" + sign + "]\r\nA=1\r\nB=2\r\n"),
                                   Bytes("[" + sign + "]\r\nA=3\r\n")};
    for (const MergeCharacters characters :
         {MergeCharacters::kOfProcess, MergeCharacters::kOfProfiles}) {
        const auto merge = MergeKept(versions, MergeWinner::kTheirs, characters);
        ASSERT_TRUE(merge);
        EXPECT_THAT(merge->conflicts, IsEmpty());
        EXPECT_EQ("[" + sign + "]\r\nA=3\r\nB=2\r\n", merge->bytes);
    }
}

// Names and values outside of ASCII, in every code page that the component runs in.
class RecoveryCharactersTest : public WayBackTest {
protected:
    RecoveryCharactersTest() { InstallSystemCodePage(); }
};

TEST_F(RecoveryCharactersTest, NamesAndValuesComeBackWhole) {
    const std::string letter = LetterOfCodePage();
    const std::string utf8 = ExactUtf8FromAnsi(letter).value();
    const std::string base = "[" + letter + "]\r\nName=" + letter + "\r\n";
    const std::string ours = base + "Port=" + letter + "\r\n";
    const std::string theirs = "[Other]\r\nKey=" + letter + "\r\n" + base;
    world_.AddFile(utf8 + ".kre", theirs);
    const CDepotPath location = world_.Location();
    const std::string dn = world_.Dn(letter + ".kre");
    KeptWorld::KeepOf(
        ours, {.location = &location, .dn = dn, .reason = letter, .base = KeptWorld::BytesOf(base)},
        letter + ".kre");
    const KeptCopy copy = OnlyCopy();
    EXPECT_TRUE(copy.name.starts_with(utf8));
    EXPECT_EQ(utf8, copy.origin.value().reason);
    EXPECT_EQ("<Dir>\\Sessions\\" + letter + ".kre", EntryOf(copy).value().path);
    std::optional<std::vector<KeptValue>> values;
    EXPECT_THAT(DifferentValues({Bytes(base), Bytes(theirs), Bytes(ours)}, values), IsDone());
    EXPECT_EQ(utf8, values.value().front().ours);
    const Return back(depots_, copy);
    EXPECT_FALSE(back.Store({.merges = true}).has_value());
    EXPECT_EQ("[Other]\r\nKey=" + letter + "\r\n" + ours, world_.Entry(letter + ".kre"));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

}  // namespace
}  // namespace depot::test
