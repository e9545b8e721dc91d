// How the browse methods come to their dialog, and what they leave of it.
#include <algorithm>
#include <vector>

#include "component/component.h"
#include "component/scripted_dialog.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr VARIANT_BOOL kYes = VARIANT_TRUE;

HRESULT Browse(IDepotIntrApi& api, LONG_PTR session, OutText& path, BROWSE_TYPE type) {
    return api.DPBrowse(session, APP_SKEIN, type, kYes, kYes, 0, 0, path);
}
HRESULT BrowseMany(IDepotIntrApi& api, LONG_PTR session, OutText& list) {
    return api.DPBrowseMultiSel(session, APP_SKEIN, kYes, kYes, 0, 0, list, 1000);
}

class BrowseDialogLifeTest : public ComponentTest {
protected:
    BrowseDialogLifeTest() { folder_.MakeFile("Work\\a.kre", "[S]\nK=of a\n"); }

    const std::string work_ = DefineDepot("Work");
    ScriptedDialogs dialogs_;
};

// How the component asks COM for the dialog.
class CreationLog {
public:
    CreationLog() {
        genuine_ = creation_.Genuine();
        contexts.clear();
    }

    static inline std::vector<DWORD> contexts;

private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context,
                                 REFIID interfaceId, void** object) {
        EXPECT_TRUE(IsEqualCLSID(CLSID_DepotBrowseDialog, classId));
        EXPECT_TRUE(IsEqualIID(IID_IDepotBrowseDialog, interfaceId));
        EXPECT_EQ(nullptr, outer);
        contexts.push_back(context);
        return genuine_(classId, outer, context, interfaceId, object);
    }

    static inline decltype(&CoCreateInstance) genuine_ = nullptr;
    const ImportPatch<decltype(&CoCreateInstance)> creation_{"CoCreateInstance", &Create,
                                                             Library::Own().Module()};
};

TEST_F(BrowseDialogLifeTest, OneDialogIsMadeForEachCallWhereverItsComponentRuns) {
    const Session session(*api_);
    const CreationLog log;
    OutText text;
    Browse(*api_, session, text, PROMPT_OPEN);
    Browse(*api_, session, text, PROMPT_SAVEAS);
    BrowseMany(*api_, session, text);
    // In this process, with a handler, in another process, on another machine.
    EXPECT_EQ((std::vector<DWORD>{0x17, 0x17, 0x17}), log.contexts);
    EXPECT_EQ(0, dialogs_.living);
}

TEST_F(BrowseDialogLifeTest, TextsAndArraysOfTheDialogAreFreed) {
    dialogs_.chosenPath = L"<Work>\\a.kre";
    dialogs_.chosenPaths = [] { return NewTexts({L"<Work>\\a.kre", L"<Work>\\b.kre"}); };
    const Session session(*api_);
    EXPECT_EQ(0u, CountLeftovers([&] {
                  OutText text;
                  EXPECT_THAT(Browse(*api_, session, text, PROMPT_OPEN), IsOk());
                  EXPECT_THAT(Browse(*api_, session, text, PROMPT_SAVEAS), IsOk());
                  EXPECT_THAT(BrowseMany(*api_, session, text), IsOk());
                  dialogs_.calls.clear();
              }));
}

TEST_F(BrowseDialogLifeTest, TextOfAFailedAnswerIsFreedToo) {
    dialogs_.chosenPath = L"<Work>\\a.kre";
    dialogs_.pathResult = E_FAIL;
    const Session session(*api_);
    EXPECT_EQ(0u, CountLeftovers([&] {
                  OutText text;
                  EXPECT_THAT(Browse(*api_, session, text, PROMPT_OPEN), IsRefused());
                  dialogs_.calls.clear();
              }));
}

TEST_F(BrowseDialogLifeTest, SessionThatEndsWhileFilesAreChosenGetsNoList) {
    LONG_PTR handle = 0;
    ASSERT_THAT(api_->DPInitialize(&handle), IsOk());
    dialogs_.chosenPath = L"<Work>\\a.kre";
    dialogs_.whileShown = [&] { EXPECT_THAT(api_->DPUnInitialize(handle), IsOk()); };
    OutText list;
    EXPECT_THAT(BrowseMany(*api_, handle, list), IsRefused());
    EXPECT_TRUE(list.IsNull());
}

TEST_F(BrowseDialogLifeTest, ResourceFolderThatIsNotKnownIsNotPassed) {
    // Without the directory service no folder is known.
    const Library library(CopyComponent(folder_));
    const Com<IDepotIntrApi> lonely = library.CreateApi();
    LONG_PTR session = 0;
    ASSERT_THAT(lonely->DPLoadFile(&session, Text("<Work>\\a.kre")), IsOk());
    OutText text;
    Browse(*lonely, session, text, PROMPT_OPEN);
    Browse(*lonely, session, text, PROMPT_SAVEAS);
    BrowseMany(*lonely, session, text);
    EXPECT_EQ(3, std::count(dialogs_.calls.begin(), dialogs_.calls.end(), "ShowModal"));
    for (const std::string& call : dialogs_.calls) {
        EXPECT_FALSE(call.starts_with("ResourceFolder")) << call;
    }
    EXPECT_THAT(lonely->DPUnInitialize(session), IsOk());
}

}  // namespace
}  // namespace depot::test
