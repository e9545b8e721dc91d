// What the user chose, as an array, after a dialog that is played by a scripted one.
#include "component/api2.h"
#include "component/progress_object.h"
#include "component/scripted_dialog.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChosenFilesTest : public ComponentTest {
protected:
    std::vector<std::wstring> Chosen() {
        VARIANT paths;
        V_VT(&paths) = VT_BSTR;  // junk that a method has to replace
        EXPECT_THAT(api2_->ChosenFiles(session_, &paths), IsOk());
        return TextsOf(paths);
    }
    HRESULT BrowseMany() {
        return api_->DPBrowseMultiSel(session_, APP_SKEIN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, list_,
                                      1000);
    }

    const std::string work_ = DefineDepot("Work");
    const std::string a_ = folder_.MakeFile("Work\\a.kre", "");
    const Com<IDepotIntrApi2> api2_ = Api2Of(*api_);
    Session session_{*api_};
    ScriptedDialogs dialogs_;
    OutText list_;
};

TEST_F(ChosenFilesTest, NothingIsChosenBeforeADialog) {
    EXPECT_THAT(Chosen(), IsEmpty());
    EXPECT_THAT(api2_->ChosenFiles(session_, nullptr), IsRefused());
    VARIANT paths = {};
    EXPECT_THAT(api2_->ChosenFiles(0, &paths), IsRefused());
    EXPECT_EQ(VT_EMPTY, V_VT(&paths));
}

TEST_F(ChosenFilesTest, OneFileIsTheOneThatWasLoaded) {
    dialogs_.chosenPath = L"<Work>\\a.kre";
    EXPECT_THAT(
        api_->DPBrowse(session_, APP_SKEIN, PROMPT_OPEN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, list_),
        IsOk());
    EXPECT_THAT(Chosen(), ElementsAre(L"<Work>\\a.kre"));
    EXPECT_THAT(Chosen(), ElementsAre(L"<Work>\\a.kre"));
}

TEST_F(ChosenFilesTest, SeveralFilesAreThereOnceWhateverTheListHasRoomFor) {
    dialogs_.chosenPath = L"<Work>\\a.kre";
    dialogs_.chosenPaths = [] { return NewTexts({L"<Work>\\a.kre", L"<Work>\\b.kre"}); };
    EXPECT_THAT(BrowseMany(), IsOk());
    EXPECT_THAT(Chosen(), ElementsAre(L"<Work>\\a.kre", L"<Work>\\b.kre"));
    EXPECT_THAT(
        api_->DPBrowseMultiSel(session_, APP_SKEIN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, list_, 1),
        IsOk());
    EXPECT_THAT(Chosen(), ElementsAre(L"<Work>\\a.kre", L"<Work>\\b.kre"));
}

TEST_F(ChosenFilesTest, CancelledDialogForgetsThemAndSaysSo) {
    dialogs_.chosenPath = L"<Work>\\a.kre";
    EXPECT_THAT(BrowseMany(), IsOk());
    EXPECT_THAT(Chosen(), ElementsAre(L"<Work>\\a.kre"));
    dialogs_.result = 0;
    EXPECT_THAT(BrowseMany(), IsRefused());
    EXPECT_EQ(ERROR_CANCELLED, static_cast<DWORD>(LastErrorOf(*api2_, session_).code));
    EXPECT_THAT(Chosen(), IsEmpty());
}

}  // namespace
}  // namespace depot::test
