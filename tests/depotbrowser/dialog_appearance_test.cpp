// What the dialog looks like.
#include <gtest/gtest.h>

#include <set>

#include "com/automation.h"
#include "config/languages.h"
#include "depotbrowser/appearance.h"
#include "depotbrowser/browser_library.h"
#include "depotbrowser/dialog_user.h"
#include "depotbrowser/prompt_ids.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "resource_ids.h"

namespace depot::test {
namespace {

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

    // The same with all rows that are left out otherwise.
    void ShowWhole(const DialogUser::Script& script) {
        void* extended = nullptr;
        ASSERT_EQ(S_OK, dialog_->QueryInterface(IID_IUserPasswordPromptDialog3, &extended));
        const UniqueCom<IUserPasswordPromptDialog3> owned(
            static_cast<IUserPasswordPromptDialog3*>(extended));
        EXPECT_EQ(S_OK, owned->put_Secured(VARIANT_FALSE));
        EXPECT_EQ(S_OK, owned->put_OffersStoring(VARIANT_TRUE));
        Show(script);
        VARIANT_BOOL store = VARIANT_TRUE;
        EXPECT_EQ(S_OK, owned->get_Store(&store));
        EXPECT_EQ(VARIANT_FALSE, store) << "the user cancelled";
        EXPECT_EQ(E_POINTER, owned->get_Store(nullptr));
    }

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

TEST_F(DialogAppearanceTest, NameInTheFormThatTheServerWantsIsShown) {
    void* extended = nullptr;
    ASSERT_EQ(S_OK, dialog_->QueryInterface(IID_IUserPasswordPromptDialog4, &extended));
    const UniqueCom<IUserPasswordPromptDialog4> owned(
        static_cast<IUserPasswordPromptDialog4*>(extended));
    const auto shown = [&](const wchar_t* example) {
        EXPECT_EQ(S_OK, owned->put_UserNameExample(NewWideBstr(example).get()));
        std::wstring text;
        Show([&text](const OpenDialog& dialog) { text = dialog.Text(CONTROL_EXAMPLE); });
        return text;
    };
    EXPECT_EQ(L"The server wants names such as mary@farrow.test", shown(L"mary@farrow.test"));
    EXPECT_EQ(L"The server wants names such as %s%n & co", shown(L"%s%n & co"));
    EXPECT_EQ(L"For example: cn=Mary Walker,o=Example", shown(L""));
}

TEST_F(DialogAppearanceTest, OnlyThePasswordIsMasked) {
    Show([](const OpenDialog& dialog) {
        EXPECT_NE(0, SendMessageW(dialog.Control(CONTROL_PASSWORD), EM_GETPASSWORDCHAR, 0, 0));
        EXPECT_NE(0, GetWindowLongW(dialog.Control(CONTROL_PASSWORD), GWL_STYLE) & ES_PASSWORD);
        EXPECT_EQ(0, SendMessageW(dialog.Control(CONTROL_USER), EM_GETPASSWORDCHAR, 0, 0));
    });
}

TEST_F(DialogAppearanceTest, PasswordIsShownOnRequestOnceItWasTypedHere) {
    Show([](const OpenDialog& dialog) {
        const HWND box = dialog.Control(CONTROL_SHOW_PASSWORD);
        const HWND field = dialog.Control(CONTROL_PASSWORD);
        const auto isMasked = [field] {
            return SendMessageW(field, EM_GETPASSWORDCHAR, 0, 0) != 0;
        };
        // It was stored: whoever sits here may not be the one who typed it.
        EXPECT_FALSE(IsWindowEnabled(box));
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Type(L"typed");
        dialog.WaitForText(CONTROL_PASSWORD, L"typed");
        EXPECT_TRUE(isMasked());
        EXPECT_TRUE(IsWindowEnabled(box));
        dialog.Click(CONTROL_SHOW_PASSWORD);
        EXPECT_TRUE(Eventually([&] { return !isMasked(); }));
        dialog.Click(CONTROL_SHOW_PASSWORD);
        EXPECT_TRUE(Eventually(isMasked));
        EXPECT_EQ(L"typed", dialog.Text(CONTROL_PASSWORD));
    });
}

TEST_F(DialogAppearanceTest, CapsLockIsReportedAsLongAsItIsOn) {
    Show([](const OpenDialog& dialog) {
        EXPECT_EQ(L"", dialog.Text(CONTROL_CAPS_LOCK));
        dialog.Press(VK_CAPITAL);
        dialog.WaitForText(CONTROL_CAPS_LOCK, L"Caps Lock is on.");
        dialog.Press(VK_CAPITAL);
        dialog.WaitForText(CONTROL_CAPS_LOCK, L"");
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

TEST_F(DialogAppearanceTest, ServerNameIsShownAsItIsAndCutWithDotsWhenItIsLong) {
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

TEST_F(DialogAppearanceTest, LargerMessageFontMakesTheDialogLarger) {
    SIZE before = {};
    Show([&](const OpenDialog& dialog) { before = SizeOf(dialog.Window()); });
    const LargerMessageFont font;
    SIZE after = {};
    Show([&](const OpenDialog& dialog) { after = SizeOf(dialog.Window()); });
    EXPECT_GT(after.cx, before.cx * 3 / 2);
    EXPECT_GT(after.cy, before.cy * 3 / 2);
}

TEST_F(DialogAppearanceTest, TextsOfEveryLanguageFitTheirControls) {
    constexpr int kButtonEdges = 8;
    constexpr int kBoxWidth = 20;
    const struct {
        int control;
        UINT text;
        bool wrapped;
        int edges;
    } rows[] = {
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_INSTRUCTION, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_CHARACTERS, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_REFUSED, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_UNREACHABLE, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_STRONGER, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_SECURED, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_RIGHTS, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_UNWILLING, true, 0},
        {CONTROL_INSTRUCTION, IDS_CREDENTIALS_BUSY, true, 0},
        {CONTROL_SERVER_LABEL, IDS_CREDENTIALS_SERVER, false, 0},
        {CONTROL_USER_LABEL, IDS_CREDENTIALS_USER, false, 0},
        {CONTROL_PASSWORD_LABEL, IDS_CREDENTIALS_PASSWORD, false, 0},
        {CONTROL_EXAMPLE, IDS_CREDENTIALS_EXAMPLE, false, 0},
        {CONTROL_SHOW_PASSWORD, IDS_CREDENTIALS_SHOW, false, kBoxWidth},
        {CONTROL_STORE, IDS_CREDENTIALS_STORE, false, kBoxWidth},
        {CONTROL_OPEN_CONNECTION, IDS_CREDENTIALS_OPEN, true, 0},
        {CONTROL_CAPS_LOCK, IDS_CREDENTIALS_CAPS_LOCK, false, 0},
        {IDOK, IDS_OK, false, kButtonEdges},
        {IDCANCEL, IDS_CANCEL, false, kButtonEdges},
    };
    ShowWhole([&](const OpenDialog& dialog) {
        for (const Language& one : kLanguages) {
            const std::string language(one.code);
            for (const auto& row : rows) {
                SCOPED_TRACE(testing::Message() << language << " text " << row.text);
                const std::wstring text = TextIn(language, row.text);
                ASSERT_NE(L"", text);
                const HWND control = dialog.Control(row.control);
                const SIZE needed = NeededSize(control, text, row.wrapped);
                EXPECT_LE(needed.cx + row.edges, SizeOf(control).cx);
                EXPECT_LE(needed.cy, SizeOf(control).cy + 2);
            }
        }
    });
}

TEST_F(DialogAppearanceTest, ExampleOfTheServersNamesIsShownWholeInEveryLanguage) {
    ShowWhole([&](const OpenDialog& dialog) {
        const HWND control = dialog.Control(CONTROL_EXAMPLE);
        for (const Language& one : kLanguages) {
            for (const wchar_t* example :
                 {L"cn=Mary Walker,dc=farrow,dc=test", L"mary.walker@ads.example.com"}) {
                std::wstring text = TextIn(std::string(one.code), IDS_CREDENTIALS_NAME_FORM);
                ASSERT_NE(std::wstring::npos, text.find(L"%s")) << one.code;
                text.replace(text.find(L"%s"), 2, example);
                EXPECT_LE(NeededSize(control, text, true).cy, SizeOf(control).cy + 2) << one.code;
            }
        }
    });
}

// The letter behind the first ampersand, in capitals; 0 where there is none.
wchar_t AccessKeyOf(const std::wstring& text) {
    const std::size_t at = text.find(L'&');
    if (at == std::wstring::npos || at + 1 == text.size()) return L'\0';
    const wchar_t letter = text[at + 1];
    return static_cast<wchar_t>(
        reinterpret_cast<ULONG_PTR>(CharUpperW(reinterpret_cast<LPWSTR>(ULONG_PTR{letter}))));
}

TEST_F(DialogAppearanceTest, CommandsOfOneMenuHaveDifferentAccessKeysInEveryLanguage) {
    for (const Language& one : kLanguages) {
        std::set<wchar_t> keys;
        for (const UINT command : {IDS_BROWSE_OPEN, IDS_BROWSE_GO_TO_FOLDER, IDS_BROWSE_RENAME,
                                   IDS_BROWSE_MAKE_COPY, IDS_BROWSE_DELETE, IDS_BROWSE_NEW_FOLDER,
                                   IDS_BROWSE_REFRESH, IDS_BROWSE_PROPERTIES}) {
            const wchar_t key = AccessKeyOf(TextIn(std::string(one.code), command));
            EXPECT_NE(L'\0', key) << one.code << " " << command;
            EXPECT_TRUE(keys.insert(key).second) << one.code << " " << command;
        }
    }
}

TEST_F(DialogAppearanceTest, ControlsLieInsideTheDialogAndDoNotOverlap) {
    Show(&ExpectControlsApart);
    ShowWhole(&ExpectControlsApart);
}

TEST_F(DialogAppearanceTest, RowsThatDoNotApplyTakeNoRoom) {
    SIZE small = {}, whole = {};
    Show([&](const OpenDialog& dialog) { small = SizeOf(dialog.Window()); });
    ShowWhole([&](const OpenDialog& dialog) { whole = SizeOf(dialog.Window()); });
    EXPECT_EQ(small.cx, whole.cx);
    EXPECT_LT(small.cy, whole.cy);
}

TEST_F(DialogAppearanceTest, ControlsStayApartInALargerFont) {
    const LargerMessageFont font;
    Show(&ExpectControlsApart);
    ShowWhole(&ExpectControlsApart);
}

TEST_F(DialogAppearanceTest, ControlsFollowTheResolutionWhileTheDialogIsOpen) {
    Show(&ExpectResolutionIsFollowed);
    ShowWhole(&ExpectResolutionIsFollowed);
}

TEST_F(DialogAppearanceTest, FontFollowsTheResolutionWhileTheDialogIsOpen) {
    Show([](const OpenDialog& dialog) {
        const LONG before = FontOf(dialog.Control(CONTROL_USER)).lfHeight;
        RECT place = {0, 0, 900, 700};
        SendMessageW(dialog.Window(), WM_DPICHANGED, MAKEWPARAM(192, 192),
                     reinterpret_cast<LPARAM>(&place));
        EXPECT_NEAR(2 * before, FontOf(dialog.Control(CONTROL_USER)).lfHeight, 1);
    });
}

TEST_F(DialogAppearanceTest, ColoursFollowTheUsersSwitchWhileTheDialogIsOpen) {
    const ThemeSwitch theme;
    theme.WantLight(0);
    ShowWhole([&](const OpenDialog& dialog) {
        ExpectColours(dialog, WM_CTLCOLORSTATIC, CONTROL_INSTRUCTION, kDarkPalette.dialog);
        ExpectColours(dialog, WM_CTLCOLORSTATIC, CONTROL_STORE, kDarkPalette.dialog);
        ExpectColours(dialog, WM_CTLCOLOREDIT, CONTROL_USER, kDarkPalette.field);
        theme.WantLight(1);
        ThemeSwitch::Report(dialog);
        ExpectColoursOfSystem(dialog, WM_CTLCOLORSTATIC, CONTROL_INSTRUCTION);
        ExpectColoursOfSystem(dialog, WM_CTLCOLOREDIT, CONTROL_USER);
    });
}

}  // namespace
}  // namespace depot::test
