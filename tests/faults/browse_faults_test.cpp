// Choosing files in a dialog while system calls fail. The dialog itself is the test's.
#include "component/scripted_dialog.h"
#include "faults/faulty_client.h"

namespace depot::test {
namespace {

using std::string_literals::operator""s;
using testing::AnyOf;
using testing::HasSubstr;

constexpr VARIANT_BOOL kYes = VARIANT_TRUE;

// A session with an edited file, in which another one is chosen.
class BrowseFaultsTest : public StoreFaultsTest {
protected:
    BrowseFaultsTest() { dialogs_.chosenPath = Wide(chosen_); }

    void Prepare() {
        Forget();
        Put(edited_, kOld);
        Put(chosen_, kOld);
        handle_ = LoadEdited(edited_);
    }
    void ExpectEditKept() {
        const std::string stored = Get(edited_).value_or("(missing)");
        EXPECT_THAT(stored, AnyOf(kOld, kNew, " "));
        EXPECT_THAT(stored + Kept(), HasSubstr("K=new"));
        EXPECT_EQ(kOld, Get(chosen_));
        EXPECT_EQ(0, dialogs_.living);
        dialogs_.calls.clear();
    }

    const std::string edited_ = Path("office.kra");
    const std::string chosen_ = Path("chosen.kra");
    ScriptedDialogs dialogs_;
    LONG_PTR handle_ = 0;
};

TEST_P(BrowseFaultsTest, ChosenFileIsLoadedOrTheMethodFails) {
    bool loaded = false;
    const auto browse = [&](BROWSE_TYPE type) {
        OutText path;
        loaded = Succeeded(api_->DPBrowse(handle_, APP_SKEIN, type, kYes, kYes, 0, 0, path));
        EXPECT_EQ(loaded ? Wide(chosen_) : L"(null)", path.Value());
    };
    RunWithFaults({
        .prepare = [&] { Prepare(); },
        .operate =
            [&] {
                browse(PROMPT_SAVEAS);
                browse(PROMPT_OPEN);
                EXPECT_THAT(ReadValue(handle_), AnyOf(L"new", L"old", L"-", L"(null)"));
                End(handle_);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || loaded);
                ExpectEditKept();
            },
    });
}

TEST_P(BrowseFaultsTest, ListOfChosenFilesIsWholeOrTheMethodFails) {
    const std::wstring folder = Wide(Path(""));
    const std::wstring whole =
        folder.substr(0, folder.size() - 1) + L"\0chosen.kra\0chosen.kra\0second.kra\0\0"s;
    dialogs_.chosenPaths = [&] { return NewTexts({Wide(chosen_), Wide(Path("second.kra"))}); };
    HRESULT result = S_FALSE;
    bool ranOut = false;
    RunWithFaults({
                      .prepare = [&] { Prepare(); },
                      .operate =
                          [&] {
                              OutText list;
                              result = api_->DPBrowseMultiSel(handle_, APP_SKEIN, kYes, kYes, 0, 0,
                                                              list, 1000);
                              EXPECT_EQ(result == S_OK ? whole : L"(null)", list.Value());
                              End(handle_);
                          },
                      .verify =
                          [&](std::optional<Fault> failing) {
                              EXPECT_THAT(result, AnyOf(S_OK, S_FALSE, E_FAIL));
                              EXPECT_TRUE(failing || result == S_OK);
                              if (result == E_FAIL) {
                                  EXPECT_TRUE(failing == FaultKind::kMemory);
                                  ranOut = true;
                              }
                              ExpectEditKept();
                          },
                  },
                  kManyRuns);
    EXPECT_TRUE(ranOut);
}

INSTANTIATE_TEST_SUITE_P(Stores, BrowseFaultsTest, testing::Values("Work", "Corp"),
                         [](const auto& store) { return std::string(store.param); });

}  // namespace
}  // namespace depot::test
