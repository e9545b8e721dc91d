// Asking about paths while system calls fail: an answer is right or missing, and a test of a place
// leaves it as it was.
#include "faults/faulty_client.h"

namespace depot::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;

using PathFaultsTest = StoreFaultsTest;

TEST_P(PathFaultsTest, ConvertedPathIsTheRightOneOrNone) {
    const std::string path = Path("office.kra");
    Put(path, kOld);
    std::wstring local, shown, back;
    bool exists = false;
    RunWithFaults({
        .prepare = [&] { Forget(); },
        .operate =
            [&] {
                OutText text;
                LONG_PTR handle = 0;
                shown = back = L"(null)";
                exists = false;
                Succeeded(api_->DPPathConvertDPtoFS(Text(path), text));
                local = text.Value();
                if (!Succeeded(api_->DPInitialize(&handle))) return;
                Succeeded(api_->DPGetDepotDisplayPath(handle, Text(path), text));
                shown = text.Value();
                Succeeded(api_->DPGetPathFromDisplayName(handle, Text(path), text));
                back = text.Value();
                Succeeded(api_->DPGetDefaultDPPath(handle, text));
                exists = Succeeded(api_->DPFileExists(handle, Text(path)));
                End(handle);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                const std::wstring file = Wide(work_ + "\\office.kra");
                EXPECT_THAT(shown, AnyOf(Wide(Path("")), L"(null)"));
                EXPECT_THAT(back, AnyOf(Wide(path), L"(null)"));
                if (failing != FaultKind::kFile) {
                    EXPECT_THAT(WorkingCopies(), IsEmpty());
                }
                EXPECT_TRUE(failing || exists);
                EXPECT_TRUE(failing || local == (IsFolderDepot() ? file : L"(null)"));
            },
    });
}

TEST_P(PathFaultsTest, TestOfAFolderLeavesItAsItWas) {
    Put(Path("dir\\a.kra"), kOld);
    bool writable = false;
    RunWithFaults({
        .prepare = [&] { Forget(); },
        .operate = [&] { writable = IsWritable(Path("dir\\new.kra")) && IsWritable(Path("dir")); },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || writable);
                const bool removalFails =
                    failing == FaultKind::kFile || failing == FaultKind::kDirectory;
                if (!removalFails) {
                    EXPECT_THAT(NamesIn("dir"), ElementsAre("a.kra"));
                }
                EXPECT_EQ(kOld, Get(Path("dir\\a.kra")));
                Remove(Path("dir\\new.kra"));
                Remove(Path("dir\\____Test____Writable____File___.twr"));
            },
    });
}

TEST_P(PathFaultsTest, TestOfAFileThatIsThereLeavesItThere) {
    const std::string path = Path("office.kra");
    bool writable = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Put(path, kOld);
            },
        .operate = [&] { writable = IsWritable(path); },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || writable);
                EXPECT_EQ(kOld, Get(path));
            },
    });
}

TEST_P(PathFaultsTest, TestOfAPlaceBelowMissingFoldersMakesNone) {
    // The file system has no place there, a directory is asked for the folders.
    Put(Path("dir\\a.kra"), kOld);
    bool writable = false;
    RunWithFaults({
        .prepare = [&] { Forget(); },
        .operate = [&] { writable = IsWritable(Path("dir\\one\\two\\new.kra")); },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || writable != IsFolderDepot());
                if (failing != FaultKind::kDirectory) {
                    EXPECT_THAT(NamesIn("dir"), ElementsAre("a.kra"));
                }
                Remove(Path("dir\\one"));
            },
    });
}

INSTANTIATE_TEST_SUITE_P(Stores, PathFaultsTest, testing::Values("Work", "Corp"),
                         [](const auto& store) { return std::string(store.param); });

}  // namespace
}  // namespace depot::test
