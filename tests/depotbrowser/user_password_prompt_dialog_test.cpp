// The dialog used as a person does, by keys alone.
#include <gtest/gtest.h>

#include "depotbrowser/browser_library.h"
#include "depotbrowser/dialog_user.h"

namespace depot::test {
namespace {

constexpr LONG kJunk = 0x5A5A5A5A;

class UserPasswordPromptDialogTest : public testing::Test {
protected:
    // Shows the dialog while `script` plays the user. Returns the out value.
    LONG Show(const DialogUser::Script& script, HWND owner = nullptr) {
        const DialogUser user(server_, script);
        LONG result = kJunk;
        EXPECT_EQ(S_OK, dialog_->ShowModal(HandleToLong(owner), &result));
        return result;
    }

    void Prepare(const std::wstring& userName, const std::wstring& password) {
        test::Prepare(*dialog_, server_, userName, password);
    }

    const ComApartment apartment_;
    const BrowserLibrary library_;
    const UniqueCom<IUserPasswordPromptDialog> dialog_ = CreateDialogObject();
    std::wstring server_ = L"ldap.farrow.test";
};

TEST_F(UserPasswordPromptDialogTest, EnterConfirmsWhatWasTyped) {
    Prepare(L"", L"");
    EXPECT_EQ(kConfirmed, Show([](const OpenDialog& dialog) {
                  dialog.Type(L"cn=mary");
                  dialog.WaitForText(CONTROL_USER, L"cn=mary");
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Type(L"s3cret &x");
                  dialog.WaitForText(CONTROL_PASSWORD, L"s3cret &x");
                  dialog.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"cn=mary", UserNameOf(*dialog_));
    EXPECT_EQ(L"s3cret &x", PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, EscapeCancelsAndKeepsTheTextsThatWereSet) {
    Prepare(L"mary", L"old");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenDialog& dialog) {
                  dialog.Type(L"new");
                  dialog.WaitForText(CONTROL_PASSWORD, L"new");
                  dialog.Press(VK_ESCAPE);
              }));
    EXPECT_EQ(L"mary", UserNameOf(*dialog_));
    EXPECT_EQ(L"old", PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, ClosingTheWindowCancels) {
    Prepare(L"", L"");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenDialog& dialog) { dialog.Press(VK_F4, VK_MENU); }));
}

TEST_F(UserPasswordPromptDialogTest, TabVisitsFieldsThenButtonsAndStartsAgain) {
    Prepare(L"", L"");
    Show([](const OpenDialog& dialog) {
        for (const int control : {CONTROL_USER, CONTROL_PASSWORD, IDOK, IDCANCEL,
                                  CONTROL_SHOW_PASSWORD, CONTROL_USER}) {
            dialog.WaitForFocus(control);
            dialog.Press(VK_TAB);
        }
        dialog.Press(VK_ESCAPE);
    });
}

TEST_F(UserPasswordPromptDialogTest, ShiftTabVisitsThemBackwards) {
    Prepare(L"", L"");
    Show([](const OpenDialog& dialog) {
        for (const int control : {CONTROL_USER, CONTROL_SHOW_PASSWORD, IDCANCEL, IDOK,
                                  CONTROL_PASSWORD, CONTROL_USER}) {
            dialog.WaitForFocus(control);
            dialog.Press(VK_TAB, VK_SHIFT);
        }
        dialog.Press(VK_ESCAPE);
    });
}

TEST_F(UserPasswordPromptDialogTest, EnterOnCancelCancels) {
    Prepare(L"mary", L"old");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenDialog& dialog) {
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(IDOK);
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(IDCANCEL);
                  dialog.Press(VK_RETURN);
              }));
}

TEST_F(UserPasswordPromptDialogTest, SpaceOnOkConfirms) {
    Prepare(L"mary", L"old");
    EXPECT_EQ(kConfirmed, Show([](const OpenDialog& dialog) {
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(IDOK);
                  dialog.Press(VK_SPACE);
              }));
}

TEST_F(UserPasswordPromptDialogTest, UnderlinedLettersReachTheFields) {
    Prepare(L"", L"");
    Show([](const OpenDialog& dialog) {
        dialog.WaitForFocus(CONTROL_USER);
        dialog.Press('P', VK_MENU);
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Press('U', VK_MENU);
        dialog.WaitForFocus(CONTROL_USER);
        dialog.Press(VK_ESCAPE);
    });
}

TEST_F(UserPasswordPromptDialogTest, FocusStartsOnTheFirstEmptyFieldElseOnThePassword) {
    const struct {
        const wchar_t* userName;
        const wchar_t* password;
        int focused;
    } rows[] = {
        {L"", L"", CONTROL_USER},
        {L"", L"secret", CONTROL_USER},
        {L"mary", L"", CONTROL_PASSWORD},
        {L"mary", L"secret", CONTROL_PASSWORD},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.userName << "/" << row.password);
        Prepare(row.userName, row.password);
        Show([&row](const OpenDialog& dialog) {
            dialog.WaitForFocus(row.focused);
            dialog.Press(VK_ESCAPE);
        });
    }
}

TEST_F(UserPasswordPromptDialogTest, TypingReplacesAFilledPassword) {
    Prepare(L"mary", L"wrong");
    EXPECT_EQ(kConfirmed, Show([](const OpenDialog& dialog) {
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Type(L"right");
                  dialog.WaitForText(CONTROL_PASSWORD, L"right");
                  dialog.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"right", PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, TextsOfAnyScriptSurvive) {
    const std::wstring userName = L"cn=Zo\u00EB \u65E5\u672C \u0416";
    const std::wstring password = L"\u00FC\u00DF\u20AC\U0001F511";
    server_ = L"\u0441\u0435\u0440\u0432\u0435\u0440 & co";
    Prepare(L"", L"");
    EXPECT_EQ(kConfirmed, Show([&](const OpenDialog& dialog) {
                  dialog.Type(userName);
                  dialog.WaitForText(CONTROL_USER, userName);
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Type(password);
                  dialog.WaitForText(CONTROL_PASSWORD, password);
                  dialog.Press(VK_RETURN);
              }));
    EXPECT_EQ(userName, UserNameOf(*dialog_));
    EXPECT_EQ(password, PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, FieldTakesAsManyCharactersAsAreKeptAndNoMore) {
    const std::wstring most(259, L'x');
    Prepare(L"", L"");
    EXPECT_EQ(kConfirmed, Show([&](const OpenDialog& dialog) {
                  dialog.Type(most);
                  dialog.WaitForText(CONTROL_USER, most);
                  dialog.Type(L"y");
                  dialog.Press(VK_TAB);
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  dialog.Type(most + L"y");
                  dialog.WaitForText(CONTROL_PASSWORD, most);
                  dialog.Press(VK_RETURN);
              }));
    EXPECT_EQ(most, UserNameOf(*dialog_));
    EXPECT_EQ(most, PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, LongTextsThatWereSetComeBackWhole) {
    const std::wstring userName(3000, L'u');
    const std::wstring password(3000, L'p');
    server_ = std::wstring(3000, L's');
    Prepare(userName, password);
    EXPECT_EQ(kConfirmed, Show([](const OpenDialog& dialog) { dialog.Press(VK_RETURN); }));
    EXPECT_EQ(userName, UserNameOf(*dialog_));
    EXPECT_EQ(password, PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, DialogCanBeShownAgain) {
    Prepare(L"mary", L"");
    for (const wchar_t* const password : {L"first", L"second"}) {
        EXPECT_EQ(kConfirmed, Show([password](const OpenDialog& dialog) {
                      dialog.WaitForFocus(CONTROL_PASSWORD);
                      dialog.Type(password);
                      dialog.WaitForText(CONTROL_PASSWORD, password);
                      dialog.Press(VK_RETURN);
                  }));
        EXPECT_EQ(password, PasswordOf(*dialog_));
    }
}

TEST_F(UserPasswordPromptDialogTest, TwoDialogsAtOnceKeepTheirTextsApart) {
    Prepare(L"outer", L"");
    std::wstring innerPassword;
    LONG innerResult = kJunk;
    const auto showInner = [&] {
        const ComApartment apartment;
        const auto inner = CreateDialogObject();
        test::Prepare(*inner, L"second.farrow.test", L"inner", L"");
        const DialogUser user(L"second.farrow.test", [](const OpenDialog& dialog) {
            dialog.WaitForFocus(CONTROL_PASSWORD);
            dialog.Type(L"two");
            dialog.WaitForText(CONTROL_PASSWORD, L"two");
            dialog.Press(VK_RETURN);
        });
        EXPECT_EQ(S_OK, inner->ShowModal(0, &innerResult));
        innerPassword = PasswordOf(*inner);
    };
    EXPECT_EQ(kConfirmed, Show([&](const OpenDialog& dialog) {
                  dialog.WaitForFocus(CONTROL_PASSWORD);
                  std::thread(showInner).join();
                  EXPECT_EQ(L"", dialog.Text(CONTROL_PASSWORD));
                  SetForegroundWindow(dialog.Window());
                  dialog.Type(L"one");
                  dialog.WaitForText(CONTROL_PASSWORD, L"one");
                  dialog.Press(VK_RETURN);
              }));
    EXPECT_EQ(kConfirmed, innerResult);
    EXPECT_EQ(L"two", innerPassword);
    EXPECT_EQ(L"one", PasswordOf(*dialog_));
}

TEST_F(UserPasswordPromptDialogTest, NullOutputsAreRefused) {
    EXPECT_EQ(E_POINTER, dialog_->ShowModal(0, nullptr));
    EXPECT_EQ(E_POINTER, dialog_->get_UserName(nullptr));
    EXPECT_EQ(E_POINTER, dialog_->get_Password(nullptr));
}

TEST_F(UserPasswordPromptDialogTest, NullTextIsAnEmptyOne) {
    Prepare(L"mary", L"secret");
    EXPECT_EQ(S_OK, dialog_->put_UserName(nullptr));
    EXPECT_EQ(S_OK, dialog_->put_Password(nullptr));
    EXPECT_EQ(S_OK, dialog_->put_ServerName(nullptr));
    EXPECT_EQ(L"", UserNameOf(*dialog_));
    EXPECT_EQ(L"", PasswordOf(*dialog_));
}

// A window that can own the dialog.
class OwnerWindow {
public:
    OwnerWindow()
        : window_(CreateWindowW(L"STATIC", L"Owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300,
                                200, nullptr, nullptr, nullptr, nullptr)) {}
    ~OwnerWindow() { Destroy(); }
    OwnerWindow(const OwnerWindow&) = delete;
    OwnerWindow& operator=(const OwnerWindow&) = delete;

    HWND Get() const { return window_; }
    void Destroy() const {
        if (IsWindow(window_)) DestroyWindow(window_);
    }

private:
    HWND window_;
};

TEST_F(UserPasswordPromptDialogTest, OwnerIsDisabledWhileTheDialogIsOpen) {
    const OwnerWindow owner;
    Prepare(L"", L"");
    Show(
        [&](const OpenDialog& dialog) {
            EXPECT_EQ(owner.Get(), GetWindow(dialog.Window(), GW_OWNER));
            EXPECT_FALSE(IsWindowEnabled(owner.Get()));
            dialog.Press(VK_ESCAPE);
        },
        owner.Get());
    EXPECT_TRUE(IsWindowEnabled(owner.Get()));
}

TEST_F(UserPasswordPromptDialogTest, WithoutAnOwnerTheThreadsActiveWindowIsTaken) {
    const OwnerWindow active;
    SetActiveWindow(active.Get());
    Prepare(L"", L"");
    Show([&](const OpenDialog& dialog) {
        EXPECT_EQ(active.Get(), GetWindow(dialog.Window(), GW_OWNER));
        dialog.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(IsWindowEnabled(active.Get()));
}

TEST_F(UserPasswordPromptDialogTest, OwnerThatIsGoneDoesNotKeepTheDialogAway) {
    const OwnerWindow owner;
    owner.Destroy();
    Prepare(L"mary", L"");
    EXPECT_EQ(kConfirmed, Show(
                              [](const OpenDialog& dialog) {
                                  EXPECT_EQ(nullptr, GetWindow(dialog.Window(), GW_OWNER));
                                  dialog.Press(VK_RETURN);
                              },
                              owner.Get()));
}

TEST_F(UserPasswordPromptDialogTest, OwnerThatIsDestroyedWhileTheDialogIsOpenCancels) {
    const OwnerWindow owner;
    Prepare(L"mary", L"old");
    // Its own thread alone may destroy a window; the static control does so when it is closed.
    EXPECT_EQ(
        kNotConfirmed,
        Show([&](const OpenDialog&) { PostMessageW(owner.Get(), WM_CLOSE, 0, 0); }, owner.Get()));
    EXPECT_EQ(L"old", PasswordOf(*dialog_));
}

}  // namespace
}  // namespace depot::test
