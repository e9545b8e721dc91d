// Choosing files in a dialog while system calls fail. The dialog itself is the test's.
#include "component/scripted_dialog.h"
#include "faults/faulty_client.h"

namespace depot::test {
namespace {

using std::string_literals::operator""s;
using testing::AnyOf;
using testing::HasSubstr;

constexpr VARIANT_BOOL kYes = VARIANT_TRUE;

using BrowseFaultsTest = StoreFaultsTest;

TEST_P(BrowseFaultsTest, ChosenFileIsLoadedOrTheMethodFails) {
    const std::string edited = Path("office.kra"), chosen = Path("chosen.kra");
    ScriptedDialogs dialogs;
    dialogs.chosenPath = Wide(chosen);
    LONG_PTR handle = 0;
    bool loaded = false;
    const auto browse = [&](BROWSE_TYPE type) {
        OutText path;
        loaded = Succeeded(api_->DPBrowse(handle, APP_SKEIN, type, kYes, kYes, 0, 0, path));
        EXPECT_EQ(loaded ? Wide(chosen) : L"(null)", path.Value());
    };
    RunWithFaults({
        .prepare = [&] { handle = LoadEditedBeside(edited, chosen); },
        .operate =
            [&] {
                browse(PROMPT_SAVEAS);
                browse(PROMPT_OPEN);
                EXPECT_THAT(ReadValue(handle), AnyOf(L"new", L"old", L"-", L"(null)"));
                End(handle);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || loaded);
                ExpectEditKept(edited, chosen);
                EXPECT_EQ(0, dialogs.living);
                dialogs.calls.clear();
            },
    });
}

TEST_P(BrowseFaultsTest, ListOfChosenFilesIsWholeOrTheMethodFails) {
    const std::string edited = Path("office.kra"), chosen = Path("chosen.kra");
    ScriptedDialogs dialogs;
    dialogs.chosenPath = Wide(chosen);
    LONG_PTR handle = 0;
    const std::wstring folder = Wide(Path(""));
    const std::wstring whole =
        folder.substr(0, folder.size() - 1) + L"\0chosen.kra\0chosen.kra\0second.kra\0\0"s;
    dialogs.chosenPaths = [&] { return NewTexts({Wide(chosen), Wide(Path("second.kra"))}); };
    HRESULT result = S_FALSE;
    bool ranOut = false;
    RunWithFaults({
                      .prepare = [&] { handle = LoadEditedBeside(edited, chosen); },
                      .operate =
                          [&] {
                              OutText list;
                              result = api_->DPBrowseMultiSel(handle, APP_SKEIN, kYes, kYes, 0, 0,
                                                              list, 1000);
                              EXPECT_EQ(result == S_OK ? whole : L"(null)", list.Value());
                              End(handle);
                          },
                      .verify =
                          [&](std::optional<Fault> failing) {
                              EXPECT_THAT(result, AnyOf(S_OK, S_FALSE, E_FAIL));
                              EXPECT_TRUE(failing || result == S_OK);
                              if (result == E_FAIL) {
                                  EXPECT_TRUE(failing == FaultKind::kMemory);
                                  ranOut = true;
                              }
                              ExpectEditKept(edited, chosen);
                              EXPECT_EQ(0, dialogs.living);
                              dialogs.calls.clear();
                          },
                  },
                  kManyRuns);
    EXPECT_TRUE(ranOut);
}

INSTANTIATE_TEST_SUITE_P(Stores, BrowseFaultsTest, testing::Values("Work", "Corp"),
                         [](const auto& store) { return std::string(store.param); });

}  // namespace
}  // namespace depot::test
