// What the dialog looks like.
#include <gtest/gtest.h>

#include "depotbrowser/browser_library.h"
#include "depotbrowser/dialog_user.h"
#include "depotbrowser/prompt_ids.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "resource_ids.h"

namespace depot::test {
namespace {

LOGFONTW FontOf(HWND window) {
    LOGFONTW font = {};
    const auto handle = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    GetObjectW(handle, sizeof(font), &font);
    return font;
}

NONCLIENTMETRICSW SystemMetrics() {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
    return metrics;
}

SIZE SizeOf(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    return {area.right - area.left, area.bottom - area.top};
}

class DialogAppearanceTest : public testing::Test {
protected:
    void Show(const DialogUser::Script& script) {
        const DialogUser user(server_, [&](const OpenDialog& dialog) {
            script(dialog);
            dialog.Press(VK_ESCAPE);
        });
        test::Prepare(*dialog_, server_, L"mary", L"secret");
        LONG result = 0;
        EXPECT_EQ(S_OK, dialog_->ShowModal(0, &result));
    }

    // Returns a text of one language, as the library holds it.
    // Returns a text as the library of that language has it.
    static std::wstring TextIn(const std::string& language, UINT id) {
        const std::string name = OwnModuleFolder() + "depotintr." + language + ".nls";
        const UniqueModule library(LoadLibraryA(name.c_str()));
        wchar_t text[260] = {};
        LoadStringW(library.get(), id, text, std::size(text));
        return text;
    }

    const ComApartment apartment_;
    const BrowserLibrary library_;
    const UniqueCom<IUserPasswordPromptDialog> dialog_ = CreateDialogObject();
    std::wstring server_ = L"ldap.farrow.test";
};

TEST_F(DialogAppearanceTest, ServerUserNameAndLabelsAreShown) {
    Show([](const OpenDialog& dialog) {
        EXPECT_EQ(L"Directory Logon", dialog.Text(0));
        EXPECT_EQ(L"ldap.farrow.test", dialog.Text(CONTROL_SERVER));
        EXPECT_EQ(L"Server:", dialog.Text(CONTROL_SERVER_LABEL));
        EXPECT_EQ(L"&User name:", dialog.Text(CONTROL_USER_LABEL));
        EXPECT_EQ(L"mary", dialog.Text(CONTROL_USER));
        EXPECT_EQ(L"&Password:", dialog.Text(CONTROL_PASSWORD_LABEL));
        EXPECT_EQ(L"secret", dialog.Text(CONTROL_PASSWORD));
        EXPECT_EQ(L"OK", dialog.Text(IDOK));
        EXPECT_EQ(L"Cancel", dialog.Text(IDCANCEL));
        EXPECT_NE(L"", dialog.Text(CONTROL_INSTRUCTION));
    });
}

TEST_F(DialogAppearanceTest, OnlyThePasswordIsMasked) {
    Show([](const OpenDialog& dialog) {
        EXPECT_NE(0, SendMessageW(dialog.Control(CONTROL_PASSWORD), EM_GETPASSWORDCHAR, 0, 0));
        EXPECT_NE(0, GetWindowLongW(dialog.Control(CONTROL_PASSWORD), GWL_STYLE) & ES_PASSWORD);
        EXPECT_EQ(0, SendMessageW(dialog.Control(CONTROL_USER), EM_GETPASSWORDCHAR, 0, 0));
    });
}

TEST_F(DialogAppearanceTest, OkIsTheDefaultButton) {
    Show([](const OpenDialog& dialog) {
        const LRESULT answer = SendMessageW(dialog.Window(), DM_GETDEFID, 0, 0);
        EXPECT_EQ(DC_HASDEFID, HIWORD(answer));
        EXPECT_EQ(IDOK, LOWORD(answer));
        const LONG style = GetWindowLongW(dialog.Control(IDOK), GWL_STYLE);
        EXPECT_EQ(BS_DEFPUSHBUTTON, style & BS_TYPEMASK);
    });
}

TEST_F(DialogAppearanceTest, AServerNameIsShownAsItIsAndCutWithDotsWhenItIsLong) {
    server_ = L"a&b." + std::wstring(500, L'x') + L".test";
    Show([&](const OpenDialog& dialog) {
        EXPECT_EQ(server_, dialog.Text(CONTROL_SERVER));
        const LONG style = GetWindowLongW(dialog.Control(CONTROL_SERVER), GWL_STYLE);
        EXPECT_NE(0, style & SS_NOPREFIX);
        EXPECT_EQ(SS_ENDELLIPSIS, style & SS_ELLIPSISMASK);
    });
}

TEST_F(DialogAppearanceTest, ControlsUseTheSystemsMessageFont) {
    const LOGFONTW expected = SystemMetrics().lfMessageFont;
    Show([&](const OpenDialog& dialog) {
        for (const int control : {CONTROL_USER, CONTROL_SERVER, IDOK}) {
            const LOGFONTW font = FontOf(dialog.Control(control));
            EXPECT_STREQ(expected.lfFaceName, font.lfFaceName);
            EXPECT_EQ(expected.lfHeight, font.lfHeight);
            EXPECT_EQ(expected.lfWeight, font.lfWeight);
        }
    });
}

TEST_F(DialogAppearanceTest, ALargerMessageFontMakesTheDialogLarger) {
    SIZE before = {};
    Show([&](const OpenDialog& dialog) { before = SizeOf(dialog.Window()); });
    const NONCLIENTMETRICSW original = SystemMetrics();
    NONCLIENTMETRICSW larger = original;
    larger.lfMessageFont.lfHeight *= 2;
    SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(larger), &larger, 0);
    SIZE after = {};
    Show([&](const OpenDialog& dialog) { after = SizeOf(dialog.Window()); });
    NONCLIENTMETRICSW restored = original;
    SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(restored), &restored, 0);
    EXPECT_GT(after.cx, before.cx * 3 / 2);
    EXPECT_GT(after.cy, before.cy * 3 / 2);
}

// The pixels that a text takes in a control: its width on one line, or its height when it is broken
// into lines of the control's width.
SIZE Needed(HWND control, const std::wstring& text, bool wrapped) {
    const HDC canvas = GetDC(nullptr);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ previous = SelectObject(canvas, font);
    RECT area = {0, 0, wrapped ? SizeOf(control).cx : 0, 0};
    const UINT lines = wrapped ? DT_WORDBREAK | DT_NOPREFIX : DT_SINGLELINE;
    DrawTextW(canvas, text.c_str(), -1, &area, DT_CALCRECT | lines);
    SelectObject(canvas, previous);
    ReleaseDC(nullptr, canvas);
    return {area.right, area.bottom};
}

TEST_F(DialogAppearanceTest, TheTextsOfEveryLanguageFitTheirControls) {
    constexpr int kButtonEdges = 8;
    const struct {
        int control;
        UINT text;
        bool wrapped;
        int edges;
    } rows[] = {
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_INSTRUCTION, true, 0},
        {CONTROL_SERVER_LABEL, IDS_CREDENTIALS_SERVER, false, 0},
        {CONTROL_USER_LABEL, IDS_CREDENTIALS_USER, false, 0},
        {CONTROL_PASSWORD_LABEL, IDS_CREDENTIALS_PASSWORD, false, 0},
        {IDOK, IDS_OK, false, kButtonEdges},
        {IDCANCEL, IDS_CANCEL, false, kButtonEdges},
    };
    const char* const languages[] = {"eng", "fra", "deu", "esp", "ita", "jpn", "prt"};
    Show([&](const OpenDialog& dialog) {
        for (const char* const language : languages) {
            for (const auto& row : rows) {
                SCOPED_TRACE(testing::Message() << language << " text " << row.text);
                const std::wstring text = TextIn(language, row.text);
                ASSERT_NE(L"", text);
                const HWND control = dialog.Control(row.control);
                const SIZE needed = Needed(control, text, row.wrapped);
                EXPECT_LE(needed.cx + row.edges, SizeOf(control).cx);
                EXPECT_LE(needed.cy, SizeOf(control).cy + 2);
            }
        }
    });
}

TEST_F(DialogAppearanceTest, ControlsLieInsideTheDialogAndDoNotOverlap) {
    Show([](const OpenDialog& dialog) {
        RECT inside = {};
        GetClientRect(dialog.Window(), &inside);
        MapWindowPoints(dialog.Window(), nullptr, reinterpret_cast<POINT*>(&inside), 2);
        for (HWND one = GetWindow(dialog.Window(), GW_CHILD); one != nullptr;
             one = GetWindow(one, GW_HWNDNEXT)) {
            RECT area = {}, common = {};
            GetWindowRect(one, &area);
            IntersectRect(&common, &area, &inside);
            EXPECT_TRUE(EqualRect(&common, &area)) << "control " << GetDlgCtrlID(one);
            for (HWND other = GetWindow(one, GW_HWNDNEXT); other != nullptr;
                 other = GetWindow(other, GW_HWNDNEXT)) {
                RECT otherArea = {};
                GetWindowRect(other, &otherArea);
                EXPECT_FALSE(IntersectRect(&common, &area, &otherArea))
                    << "controls " << GetDlgCtrlID(one) << " and " << GetDlgCtrlID(other);
            }
        }
    });
}

}  // namespace
}  // namespace depot::test
