// Choosing files through the browse dialog, played by a scripted one.
#include <algorithm>

#include "component/component.h"
#include "component/scripted_dialog.h"
#include "platform/event_log.h"
#include "support/results.h"
#include "support/unseen_host.h"

namespace depot::test {
namespace {

using std::string_literals::operator""s;
using Calls = std::vector<std::string>;

constexpr VARIANT_BOOL kYes = VARIANT_TRUE;

bool Asked(const ScriptedDialogs& dialogs, const std::string& call) {
    return std::find(dialogs.calls.begin(), dialogs.calls.end(), call) != dialogs.calls.end();
}

// The calls that start with one of the words, in their order.
Calls AskedAbout(const ScriptedDialogs& dialogs, const Calls& words) {
    Calls found;
    for (const std::string& call : dialogs.calls) {
        for (const std::string& word : words) {
            if (call.starts_with(word)) found.push_back(call);
        }
    }
    return found;
}

class BrowseMethodsTest : public ComponentTest {
protected:
    BrowseMethodsTest() {
        folder_.MakeFile("Work\\a.kre", "[S]\nK=of a\n");
        folder_.MakeFile("Work\\b.kre", "[S]\nK=of b\n");
    }

    // The two methods with everything allowed, where a test does not say otherwise.
    HRESULT Browse(LONG_PTR session, OutText& path, APP_TYPE application = APP_SKEIN,
                   BROWSE_TYPE type = PROMPT_OPEN) {
        return api_->DPBrowse(session, application, type, kYes, kYes, 0, 0, path);
    }
    HRESULT BrowseMany(LONG_PTR session, OutText& list, SHORT size = 1000,
                       APP_TYPE application = APP_SKEIN) {
        return api_->DPBrowseMultiSel(session, application, kYes, kYes, 0, 0, list, size);
    }

    const std::string work_ = DefineDepot("Work");
    Session session_{*api_};
    ScriptedDialogs dialogs_;
};

struct KindRow {
    int application;
    int type;
    std::string mode;
    std::string fileType;
};

class BrowseKindTest : public ComponentTest, public testing::WithParamInterface<KindRow> {
protected:
    const std::string work_ = DefineDepot("Work");
    Session session_{*api_};
    ScriptedDialogs dialogs_;
};

TEST_P(BrowseKindTest, ApplicationAndTypeChooseModeAndFileType) {
    OutText path;
    api_->DPBrowse(session_, static_cast<APP_TYPE>(GetParam().application),
                   static_cast<BROWSE_TYPE>(GetParam().type), kYes, kYes, 0, 0, path);
    EXPECT_EQ((Calls{GetParam().mode, GetParam().fileType}),
              AskedAbout(dialogs_, {"Mode", "FileType"}));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BrowseKindTest,
    testing::Values(KindRow{1, 1, "Mode 26", "FileType 64"},
                    KindRow{1, 2, "Mode 27", "FileType 64"},
                    KindRow{2, 1, "Mode 22", "FileType 62"},
                    KindRow{2, 2, "Mode 23", "FileType 62"}, KindRow{0, 1, "Mode 0", "FileType 0"},
                    KindRow{3, 1, "Mode 0", "FileType 0"}, KindRow{3, 2, "Mode 0", "FileType 0"},
                    KindRow{1, 0, "Mode 0", "FileType 0"}, KindRow{2, 3, "Mode 0", "FileType 0"},
                    KindRow{-1, -1, "Mode 0", "FileType 0"}));

TEST_F(BrowseMethodsTest, SeveralFilesAlwaysUseTheOpenRowOfTheApplication) {
    OutText list;
    BrowseMany(session_, list, 1000, APP_SKEIN);
    EXPECT_EQ((Calls{"Mode 26", "FileType 64"}), AskedAbout(dialogs_, {"Mode", "FileType"}));
    dialogs_.calls.clear();
    BrowseMany(session_, list, 1000, APP_KICKOFF);
    EXPECT_EQ((Calls{"Mode 22", "FileType 62"}), AskedAbout(dialogs_, {"Mode", "FileType"}));
    dialogs_.calls.clear();
    BrowseMany(session_, list, 1000, static_cast<APP_TYPE>(3));
    EXPECT_EQ((Calls{"Mode 0", "FileType 0"}), AskedAbout(dialogs_, {"Mode", "FileType"}));
}

TEST_F(BrowseMethodsTest, OpenDialogIsSetUpInOneOrder) {
    dialogs_.result = 0;
    OutText path;
    api_->DPBrowse(session_, APP_SKEIN, PROMPT_OPEN, VARIANT_FALSE, VARIANT_FALSE, 77, 4711, path);
    EXPECT_EQ((Calls{"OwnerWindow 4711", "Mode 26", "FileType 64", "AllowEditing 0",
                     "AllowFileOperations 0", "HelpTopic 77"}),
              AskedAbout(dialogs_, {"Owner", "Mode", "FileType", "Allow", "HelpTopic"}));
    // The resource folder, which every session has, comes last.
    ASSERT_GE(dialogs_.calls.size(), 3u);
    EXPECT_EQ("HelpTopic 77", *(dialogs_.calls.rbegin() + 2));
    EXPECT_TRUE((dialogs_.calls.rbegin() + 1)->starts_with("ResourceFolder "));
    EXPECT_EQ("ShowModal", dialogs_.calls.back());
}

TEST_F(BrowseMethodsTest, SwitchesThatAreOnAndZeroesAreNotPassed) {
    OutText path;
    Browse(session_, path);
    EXPECT_EQ(Calls{}, AskedAbout(dialogs_, {"Owner", "Allow", "HelpTopic", "InitialFileName",
                                             "Sort", "Show F", "Ask", "Remember", "reserved"}));
}

TEST_F(BrowseMethodsTest, EditingIsOffForAnyOtherValueThanVariantTrue) {
    for (const VARIANT_BOOL value : {VARIANT_BOOL{1}, VARIANT_BOOL{0}, VARIANT_BOOL{-2}}) {
        dialogs_.calls.clear();
        OutText path;
        api_->DPBrowse(session_, APP_SKEIN, PROMPT_OPEN, value, kYes, 0, 0, path);
        EXPECT_EQ(Calls{"AllowEditing 0"}, AskedAbout(dialogs_, {"Allow"})) << value;
        dialogs_.calls.clear();
        api_->DPBrowse(session_, APP_SKEIN, PROMPT_OPEN, kYes, value, 0, 0, path);
        EXPECT_EQ(Calls{"AllowFileOperations 0"}, AskedAbout(dialogs_, {"Allow"})) << value;
    }
}

TEST_F(BrowseMethodsTest, SaveAsGetsTheInitialNameButNeitherOwnerNorOptions) {
    ASSERT_THAT(api_->DPSetSelItemPath(session_, Text("<Work>\\a.kre")), IsOk());
    dialogs_.result = 0;
    OutText path;
    api_->DPBrowse(session_, APP_SKEIN, PROMPT_SAVEAS, VARIANT_FALSE, VARIANT_FALSE, 77, 4711,
                   path);
    EXPECT_EQ((Calls{"Mode 27", "FileType 64", "InitialFileName <Work>\\a.kre", "HelpTopic 77"}),
              AskedAbout(dialogs_, {"Owner", "Mode", "FileType", "Allow", "Initial", "HelpTopic"}));
    EXPECT_EQ(1, std::count(dialogs_.calls.begin(), dialogs_.calls.end(), "ShowModal"));
}

TEST_F(BrowseMethodsTest, SaveAsWithoutASelectedItemSetsAnEmptyName) {
    OutText path;
    Browse(session_, path, APP_KICKOFF, PROMPT_SAVEAS);
    EXPECT_EQ(Calls{"InitialFileName "}, AskedAbout(dialogs_, {"Initial"}));
}

TEST_F(BrowseMethodsTest, ResourceFolderIsPassedForEveryKindOfDialog) {
    product_.Text("", "HomeDir64", folder_.Path() + "\\Res");
    const Session session(*api_);
    const Calls expected = {"ResourceFolder " + folder_.Path() + "\\Res\\"};
    OutText path;
    Browse(session, path, APP_SKEIN, PROMPT_OPEN);
    EXPECT_EQ(expected, AskedAbout(dialogs_, {"ResourceFolder"}));
    dialogs_.calls.clear();
    Browse(session, path, APP_SKEIN, PROMPT_SAVEAS);
    EXPECT_EQ(expected, AskedAbout(dialogs_, {"ResourceFolder"}));
    dialogs_.calls.clear();
    OutText list;
    BrowseMany(session, list);
    EXPECT_EQ(expected, AskedAbout(dialogs_, {"ResourceFolder"}));
}

TEST_F(BrowseMethodsTest, EmptyResourceFolderIsNotPassed) {
    // A path that fits the registry but not the lookup's 260 characters has no answer.
    product_.Text("", "HomeDir64", std::string(260, 'x'));
    const Session session(*api_);
    OutText path;
    Browse(session, path);
    EXPECT_EQ(Calls{"ShowModal"}, AskedAbout(dialogs_, {"ResourceFolder", "ShowModal"}));
}

TEST_F(BrowseMethodsTest, ChosenFileBecomesTheCurrentFile) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    OutText path;
    EXPECT_THAT(Browse(session_, path), IsOk());
    EXPECT_EQ(L"<Work>\\b.kre", path.Value());
    EXPECT_EQ(L"of b", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, ChosenPlainFileIsReturnedAsItIs) {
    folder_.MakeFolder("Elsewhere");
    folder_.MakeFile("Elsewhere\\b.kre", "[S]\nK=of b\n");
    dialogs_.chosenPath = Wide(folder_.Path() + "\\Elsewhere\\b.kre");
    OutText path;
    EXPECT_THAT(Browse(session_, path, APP_KICKOFF, PROMPT_SAVEAS), IsOk());
    EXPECT_EQ(dialogs_.chosenPath, path.Value());
    EXPECT_EQ(L"of b", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, ChosenPathInADepotsFolderIsReturnedByItsDepotPath) {
    dialogs_.chosenPath = Wide(folder_.Path() + "\\Work\\b.kre");
    OutText path;
    EXPECT_THAT(Browse(session_, path), IsOk());
    EXPECT_EQ(L"<Work>\\b.kre", path.Value());
}

TEST_F(BrowseMethodsTest, CancelledDialogKeepsTheCurrentFile) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    for (const LONG result : {0, 2, -1}) {
        dialogs_.result = result;
        OutText text;
        EXPECT_THAT(Browse(session_, text), IsRefused()) << result;
        EXPECT_TRUE(text.IsNull());
        EXPECT_THAT(BrowseMany(session_, text), IsRefused()) << result;
        EXPECT_TRUE(text.IsNull());
    }
    EXPECT_FALSE(Asked(dialogs_, "get ChosenPath"));
    EXPECT_EQ(L"of a", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, DialogThatFailsChoosesNothing) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    OutText text;
    dialogs_.showResult = E_FAIL;
    EXPECT_THAT(Browse(session_, text), IsRefused());
    dialogs_.showResult = S_OK;
    dialogs_.pathResult = E_FAIL;
    EXPECT_THAT(Browse(session_, text), IsRefused());
    EXPECT_EQ(L"of a", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, ConfirmedDialogWithoutAPathChoosesNothing) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    OutText text;
    EXPECT_THAT(Browse(session_, text), IsRefused());
    EXPECT_THAT(BrowseMany(session_, text), IsRefused());
    EXPECT_EQ(L"of a", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, DialogThatNoPersonSeesIsNotMadeAndChoosesNothing) {
    const UnseenHost host(Library::Own().Module());
    ASSERT_TRUE(host.IsInPlace());
    OutText path, list;
    EXPECT_THAT(Browse(session_, path), IsRefused());
    EXPECT_TRUE(path.IsNull());
    EXPECT_THAT(BrowseMany(session_, list), IsRefused());
    EXPECT_TRUE(list.IsNull());
    EXPECT_TRUE(dialogs_.calls.empty());
    ASSERT_EQ(2u, host.Taken().size());
    EXPECT_EQ(static_cast<DWORD>(LogMessage::kDialogNotShown), host.Taken().front().message);
}

TEST_F(BrowseMethodsTest, HandleZeroAndStaleHandlesShowNoDialog) {
    dialogs_.chosenPath = L"<Work>\\b.kre";
    for (const LONG_PTR handle : {LONG_PTR{0}, kJunkHandle}) {
        OutText text;
        EXPECT_THAT(Browse(handle, text), IsRefused());
        EXPECT_TRUE(text.IsNull());
        EXPECT_THAT(BrowseMany(handle, text), IsRefused());
        EXPECT_TRUE(text.IsNull());
    }
    EXPECT_EQ(Calls{}, dialogs_.calls);
}

TEST_F(BrowseMethodsTest, MissingOutputIsRefused) {
    EXPECT_THAT(api_->DPBrowse(session_, APP_SKEIN, PROMPT_OPEN, kYes, kYes, 0, 0, nullptr),
                IsRefused());
    EXPECT_THAT(api_->DPBrowseMultiSel(session_, APP_SKEIN, kYes, kYes, 0, 0, nullptr, 1000),
                IsRefused());
}

TEST_F(BrowseMethodsTest, SeveralFilesAreListedWithTheFirstOneTwice) {
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    dialogs_.chosenPaths = [] { return NewTexts({L"C:\\p\\a.kra", L"C:\\p\\b.kra"}); };
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(L"C:\\p\0a.kra\0a.kra\0b.kra\0\0"s, list.Value());
    EXPECT_TRUE(Asked(dialogs_, "AllowMultipleSelection 1"));
}

TEST_F(BrowseMethodsTest, DialogOfTheFirstInterfaceAloneServesForSeveralFiles) {
    dialogs_.extended = false;
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(L"C:\\p\0a.kra\0\0"s, list.Value());
    EXPECT_EQ(Calls{}, AskedAbout(dialogs_, {"AllowMultiple"}));
    EXPECT_EQ(0, dialogs_.living);
}

TEST_F(BrowseMethodsTest, SeveralFilesPassOwnerSwitchesAndTopic) {
    OutText list;
    api_->DPBrowseMultiSel(session_, APP_KICKOFF, VARIANT_BOOL{1}, VARIANT_FALSE, 77, 4711, list,
                           1000);
    EXPECT_EQ((Calls{"OwnerWindow 4711", "Mode 22", "FileType 62", "AllowEditing 0",
                     "AllowFileOperations 0", "AllowMultipleSelection 1", "HelpTopic 77"}),
              AskedAbout(dialogs_, {"Owner", "Mode", "FileType", "Allow", "HelpTopic", "Initial"}));
}

TEST_F(BrowseMethodsTest, ListThatCannotBeReadAddsNothing) {
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    dialogs_.pathsResult = E_FAIL;
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(L"C:\\p\0a.kra\0\0"s, list.Value());
}

TEST_F(BrowseMethodsTest, SmallSizeReturnsOnlyTheNamesThatFit) {
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    dialogs_.chosenPaths = [] { return NewTexts({L"C:\\p\\b.kra"}); };
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list, 17), IsOk());
    EXPECT_EQ(L"C:\\p\0a.kra\0\0"s, list.Value());
    EXPECT_THAT(BrowseMany(session_, list, 11), IsOk());
    EXPECT_EQ(L"C:\\p\0\0"s, list.Value());
}

TEST_F(BrowseMethodsTest, ArraysMayStartAtAnyIndexAndHoldNullTexts) {
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    dialogs_.chosenPaths = [] {
        SAFEARRAY* const array = NewTexts({L"C:\\p\\b.kra", L"", L"C:\\p\\c.kra"}, -3);
        return array;
    };
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(L"C:\\p\0a.kra\0b.kra\0\0c.kra\0\0"s, list.Value());
}

TEST_F(BrowseMethodsTest, ArraysOfAnotherKindAddNothing) {
    dialogs_.chosenPath = L"C:\\p\\a.kra";
    const std::wstring firstAlone = L"C:\\p\0a.kra\0\0"s;
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(firstAlone, list.Value());
    dialogs_.chosenPaths = [] { return SafeArrayCreateVector(VT_I4, 0, 3); };
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(firstAlone, list.Value());
    dialogs_.chosenPaths = [] {
        SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
        return SafeArrayCreate(VT_BSTR, 2, bounds);
    };
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(firstAlone, list.Value());
}

TEST_F(BrowseMethodsTest, ChoosingSeveralFilesLeavesTheSessionWithoutAFile) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsOk());
    EXPECT_EQ(L"(failed)", Read(session_, L"S", L"K"));
    EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\b.kre")), IsOk());
    EXPECT_EQ(L"of b", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, NameAmongSeveralThatIsRefusedLeavesTheCurrentFile) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kre")), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    // Half of a pair of surrogates.
    dialogs_.chosenPaths = [] { return NewTexts({L"<Work>\\b.kre", L"<Work>\\\xD800.kre"}); };
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list), IsRefused());
    EXPECT_EQ(L"of a", Read(session_, L"S", L"K"));
}

TEST_F(BrowseMethodsTest, SessionThatEndsWhileTheUserChoosesIsNotUsedAnyMore) {
    LONG_PTR handle = 0;
    ASSERT_THAT(api_->DPInitialize(&handle), IsOk());
    dialogs_.chosenPath = L"<Work>\\b.kre";
    dialogs_.whileShown = [&] { api_->DPUnInitialize(handle); };
    OutText text;
    EXPECT_THAT(Browse(handle, text), IsRefused());
    EXPECT_TRUE(text.IsNull());
}

TEST_F(BrowseMethodsTest, LongAndHostilePathsAreCarriedWhole) {
    dialogs_.chosenPath = L"C:\\" + std::wstring(100000, L'x') + L"\\%s%n.kra";
    OutText list;
    EXPECT_THAT(BrowseMany(session_, list, SHRT_MAX), IsOk());
    EXPECT_EQ(100003U, list.Value().find(L'\0'));
    OutText path;
    EXPECT_THAT(Browse(session_, path), IsOk());
}

using WithoutDialogTest = ComponentTest;

TEST_F(WithoutDialogTest, BothMethodsChooseNothing) {
    DefineDepot("Work");
    folder_.MakeFile("Work\\a.kre", "[S]\nK=of a\n");
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Work>\\a.kre")), IsOk());
    for (const BROWSE_TYPE type : {PROMPT_OPEN, PROMPT_SAVEAS}) {
        OutText path;
        EXPECT_THAT(api_->DPBrowse(session, APP_SKEIN, type, kYes, kYes, 0, 0, path), IsRefused());
        EXPECT_TRUE(path.IsNull());
    }
    OutText list;
    EXPECT_THAT(api_->DPBrowseMultiSel(session, APP_SKEIN, kYes, kYes, 0, 0, list, 1000),
                IsRefused());
    EXPECT_TRUE(list.IsNull());
    EXPECT_EQ(L"of a", Read(session, L"S", L"K"));
}

}  // namespace
}  // namespace depot::test
