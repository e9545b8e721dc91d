// How the window of kept files and the line that opens it look: room, colours, resolution,
// languages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "depotbrowser/appearance.h"
#include "depotbrowser/kept_fixture.h"
#include "support/languages.h"
#include "support/locale_world.h"

namespace depot::test {
namespace {

using testing::ElementsAre;

TEST_F(KeptDialogTest, LineMakesRoomInTheSmallestWindow) {
    world_.Keep();
    Show([](const OpenBrowser& browser) {
        EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
        SetWindowPos(browser.Window(), nullptr, 0, 0, 10, 10, SWP_NOMOVE | SWP_NOZORDER);
        ExpectControlsApart(browser);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(KeptDialogTest, WindowFollowsTheResolution) {
    world_.Keep();
    ShowKept([](const OpenKept& kept) {
        kept.WaitForCount(1);
        const HWND list = kept.Control(CONTROL_KEPT_LIST);
        const int before = ListView_GetColumnWidth(list, 0);
        RECT place = {0, 0, 1400, 900};
        SendMessageW(kept.Window(), WM_DPICHANGED, MAKEWPARAM(192, 192),
                     reinterpret_cast<LPARAM>(&place));
        EXPECT_EQ(2 * before, ListView_GetColumnWidth(list, 0));
        SendMessageW(kept.Window(), WM_DPICHANGED, MAKEWPARAM(96, 96),
                     reinterpret_cast<LPARAM>(&place));
        EXPECT_EQ(before, ListView_GetColumnWidth(list, 0));
        ExpectResolutionIsFollowed(kept);
    });
}

TEST_F(KeptDialogTest, WindowIsDarkWhereTheUserWantsItAndFollowsTheSwitch) {
    const ThemeSwitch theme;
    theme.WantLight(0);
    world_.Keep();
    ShowKept([&](const OpenKept& kept) {
        kept.WaitForCount(1);
        for (const int list : {CONTROL_KEPT_LIST, CONTROL_KEPT_VALUES}) {
            EXPECT_EQ(kDarkPalette.field.ground, ListView_GetBkColor(kept.Control(list)));
            EXPECT_EQ(kDarkPalette.field.text, ListView_GetTextColor(kept.Control(list)));
        }
        ExpectColours(kept, WM_CTLCOLORSTATIC, CONTROL_KEPT_MESSAGE, kDarkPalette.dialog);
        theme.WantLight(1);
        ThemeSwitch::Report(kept);
        EXPECT_EQ(GetSysColor(COLOR_WINDOW), ListView_GetBkColor(kept.Control(CONTROL_KEPT_LIST)));
        ExpectColoursOfSystem(kept, WM_CTLCOLORSTATIC, CONTROL_KEPT_MESSAGE);
    });
}

// As in the test of the browse dialog.
TEST_F(KeptDialogTest, EveryControlHasANameForScreenReaders) {
    world_.Keep();
    ShowKept([](const OpenKept& kept) {
        kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
        std::vector<int> reached;
        for (HWND control = GetWindow(kept.Window(), GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            const int number = GetDlgCtrlID(control);
            if ((GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP) == 0) continue;
            reached.push_back(number);
            const std::wstring name = OpenDialog(control).Text(0);
            EXPECT_NE(L"", name) << number;
            if (number == CONTROL_KEPT_LIST || number == CONTROL_KEPT_VALUES) {
                EXPECT_EQ(std::wstring::npos, name.find(L'&')) << number;
            }
        }
        EXPECT_THAT(reached,
                    ElementsAre(CONTROL_KEPT_LIST, CONTROL_KEPT_DIFFERENCES, CONTROL_KEPT_MERGE,
                                CONTROL_KEPT_REPLACE, CONTROL_KEPT_EXPORT, CONTROL_KEPT_DISCARD,
                                CONTROL_KEPT_VALUES, int{IDCANCEL}));
        ExpectControlsApart(kept);
    });
}

using KeptLanguageTest = KeptDialogTest;

TEST_F(KeptLanguageTest, TextsOfEveryLanguageFitAndStayApart) {
    const LocaleWorld locale;
    SpeakTheLanguage();
    std::set<std::wstring> buttons;
    world_.Keep();
    for (const Language& one : kLanguages) {
        const std::string language(one.code);
        SCOPED_TRACE(language);
        locale.Configure(language, AllLanguages());
        Show([&buttons](const OpenBrowser& browser) {
            EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
            ExpectControlsApart(browser);
            const HWND line = browser.Control(CONTROL_KEPT_LINE);
            EXPECT_LE(NeededSize(line, browser.Text(CONTROL_KEPT_LINE), false).cx, SizeOf(line).cx);
            const OpenKept kept = OpenKeptFrom(browser);
            kept.WaitUntilUsable(CONTROL_KEPT_MERGE);
            buttons.insert(kept.Text(CONTROL_KEPT_MERGE));
            ExpectControlsApart(kept);
            for (const int control :
                 {CONTROL_KEPT_DIFFERENCES, CONTROL_KEPT_MERGE, CONTROL_KEPT_REPLACE,
                  CONTROL_KEPT_EXPORT, CONTROL_KEPT_DISCARD, static_cast<int>(IDCANCEL)}) {
                const HWND button = kept.Control(control);
                EXPECT_LE(NeededSize(button, kept.Text(control), false).cx, SizeOf(button).cx)
                    << control;
            }
            kept.Close();
            EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == browser.Window(); }));
            browser.Press(VK_ESCAPE);
        });
    }
    // They are texts of the languages.
    EXPECT_EQ(std::size(kLanguages), buttons.size());
}

}  // namespace
}  // namespace depot::test
