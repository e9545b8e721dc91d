// The browse dialog in the system's colours, in dark ones, and as the user changes them.
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/dark_palette.h"
#include "depotbrowser/drag_user.h"
#include "support/import_patch.h"

namespace depot::test {
namespace {

class BrowseColoursTest : public BrowseTest {
protected:
    void WantLight(DWORD light) const {
        RegSetKeyValueA(HKEY_CURRENT_USER, kSettings, "AppsUseLightTheme", REG_DWORD, &light,
                        sizeof(light));
    }
    // As the system reports the change.
    static void Report(const OpenBrowser& browser) {
        SendMessageW(browser.Window(), WM_SETTINGCHANGE, 0,
                     reinterpret_cast<LPARAM>(L"ImmersiveColorSet"));
    }

    // The colours in which a control is told to draw itself.
    static ColourPair Asked(const OpenBrowser& browser, UINT message, int control) {
        ColourPair pair = {};
        CallOnThreadOf(browser.Window(), [&] {
            const HDC canvas = GetDC(browser.Control(control));
            const auto brush = reinterpret_cast<HBRUSH>(
                SendMessageW(browser.Window(), message, reinterpret_cast<WPARAM>(canvas),
                             reinterpret_cast<LPARAM>(browser.Control(control))));
            LOGBRUSH filled = {};
            GetObjectW(brush, sizeof(filled), &filled);
            pair = {GetTextColor(canvas), GetBkColor(canvas)};
            EXPECT_EQ(pair.ground, filled.lbColor);
            ReleaseDC(browser.Control(control), canvas);
        });
        return pair;
    }

    static void ExpectColours(const OpenBrowser& browser, const Palette& palette) {
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_EQ(palette.field.ground, ListView_GetBkColor(list));
        EXPECT_EQ(palette.field.ground, ListView_GetTextBkColor(list));
        EXPECT_EQ(palette.field.text, ListView_GetTextColor(list));
        const HWND tree = browser.Control(CONTROL_TREE);
        EXPECT_EQ(palette.field.ground, TreeView_GetBkColor(tree));
        EXPECT_EQ(palette.field.text, TreeView_GetTextColor(tree));
        const struct {
            UINT message;
            int control;
            ColourPair pair;
        } rows[] = {
            {WM_CTLCOLORSTATIC, CONTROL_MESSAGE, palette.dialog},
            {WM_CTLCOLORSTATIC, CONTROL_STATUS, palette.dialog},
            {WM_CTLCOLOREDIT, CONTROL_NAME, palette.field},
            {WM_CTLCOLOREDIT, CONTROL_SEARCH, palette.field},
            {WM_CTLCOLORLISTBOX, CONTROL_TYPE, palette.field},
        };
        for (const auto& row : rows) {
            SCOPED_TRACE(row.control);
            const ColourPair asked = Asked(browser, row.message, row.control);
            EXPECT_EQ(row.pair.text, asked.text);
            EXPECT_EQ(row.pair.ground, asked.ground);
        }
    }

    // What a button of the path is drawn on.
    static COLORREF PathGround(const OpenBrowser& browser) {
        COLORREF ground = CLR_INVALID;
        CallOnThreadOf(browser.Window(), [&] {
            const HDC screen = GetDC(nullptr);
            const HDC canvas = CreateCompatibleDC(screen);
            const HBITMAP picture = CreateCompatibleBitmap(screen, 40, 40);
            SelectObject(canvas, picture);
            DRAWITEMSTRUCT item = {};
            item.CtlType = ODT_BUTTON;
            item.CtlID = CONTROL_UP;
            item.hwndItem = browser.Control(CONTROL_UP);
            item.hDC = canvas;
            item.rcItem = {0, 0, 40, 40};
            SendMessageW(browser.Window(), WM_DRAWITEM, CONTROL_UP,
                         reinterpret_cast<LPARAM>(&item));
            ground = GetPixel(canvas, 1, 1);
            DeleteDC(canvas);
            DeleteObject(picture);
            ReleaseDC(nullptr, screen);
        });
        return ground;
    }

    static Palette OfSystem() {
        return {{GetSysColor(COLOR_BTNTEXT), GetSysColor(COLOR_BTNFACE)},
                {GetSysColor(COLOR_GRAYTEXT), GetSysColor(COLOR_BTNFACE)},
                {GetSysColor(COLOR_WINDOWTEXT), GetSysColor(COLOR_WINDOW)},
                {GetSysColor(COLOR_BTNTEXT), GetSysColor(COLOR_BTNFACE)}};
    }

    static constexpr char kSettings[] =
        "Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
    const ScratchKey settings_{HKEY_CURRENT_USER, kSettings};
};

TEST_F(BrowseColoursTest, ColoursFollowTheUsersSwitchWhileTheDialogIsOpen) {
    MakeFile("a.kra");
    WantLight(0);
    Show([&](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        ExpectColours(browser, kDarkPalette);
        EXPECT_EQ(kDarkPalette.dialog.ground, PathGround(browser));
        WantLight(1);
        Report(browser);
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_EQ(OfSystem().field.ground, ListView_GetBkColor(list));
        EXPECT_EQ(OfSystem().field.text, ListView_GetTextColor(list));
        EXPECT_EQ(OfSystem().dialog.ground, PathGround(browser));
        WantLight(0);
        Report(browser);
        ExpectColours(browser, kDarkPalette);
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseColoursTest, ColoursOfTheSystemAreFollowedWhileTheDialogIsOpen) {
    const INT which[] = {COLOR_WINDOW, COLOR_WINDOWTEXT, COLOR_BTNFACE, COLOR_BTNTEXT};
    COLORREF before[std::size(which)] = {};
    for (std::size_t index = 0; index < std::size(which); ++index) {
        before[index] = GetSysColor(which[index]);
    }
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        // The colours of a theme of high contrast.
        const COLORREF colours[] = {0x000000, 0x00FFFF, 0x000000, 0xFFFFFF};
        SetSysColors(std::size(which), which, colours);
        SendMessageW(browser.Window(), WM_SYSCOLORCHANGE, 0, 0);
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_EQ(0x000000u, ListView_GetBkColor(list));
        EXPECT_EQ(0x00FFFFu, ListView_GetTextColor(list));
        EXPECT_EQ(0x00FFFFu, TreeView_GetTextColor(browser.Control(CONTROL_TREE)));
        EXPECT_EQ(0x000000u, PathGround(browser));
        browser.Press(VK_ESCAPE);
    });
    SetSysColors(std::size(which), which, before);
}

// The emulator has no high contrast.
BOOL WINAPI AnswerHighContrast(UINT question, UINT size, void* answer, UINT flags) {
    if (question != SPI_GETHIGHCONTRAST)
        return SystemParametersInfoW(question, size, answer, flags);
    static_cast<HIGHCONTRASTW*>(answer)->dwFlags = HCF_HIGHCONTRASTON;
    return TRUE;
}

TEST_F(BrowseColoursTest, HighContrastComesBeforeTheSwitch) {
    const ImportPatch<decltype(&AnswerHighContrast)> patch("SystemParametersInfoW",
                                                           &AnswerHighContrast, library_.Module());
    ASSERT_TRUE(patch.IsInPlace());
    WantLight(0);
    Show([&](const OpenBrowser& browser) {
        browser.WaitForMessage(L"nothing to show");
        EXPECT_EQ(OfSystem().field.ground, ListView_GetBkColor(browser.Control(CONTROL_LIST)));
        EXPECT_EQ(OfSystem().dialog.ground, PathGround(browser));
        browser.Press(VK_ESCAPE);
    });
}

}  // namespace
}  // namespace depot::test
