// The prompt of the component over the real dialog, and over one that only takes notes.
#include "api/credentials_dialog.h"

#include <gmock/gmock.h>

#include <deque>

#include "depotbrowser/browser_library.h"
#include "depotbrowser/dialog_user.h"
#include "platform/directory_client.h"
#include "platform/event_log.h"
#include "platform/wide_text.h"
#include "support/box_log.h"
#include "support/failing_memory.h"
#include "support/scratch.h"
#include "support/unseen_host.h"

namespace depot::test {
namespace {

class CredentialsDialogTest : public testing::Test {
protected:
    const ComApartment apartment_;
    const BrowserLibrary library_;
    Credentials credentials_ = {"ldap.farrow.test", "mary", "old"};
    CredentialsDialog prompt_;
};

TEST_F(CredentialsDialogTest, ConfirmingReplacesBothTexts) {
    const DialogUser user(L"ldap.farrow.test", [](const OpenDialog& dialog) {
        EXPECT_EQ(L"mary", dialog.Text(CONTROL_USER));
        EXPECT_EQ(L"old", dialog.Text(CONTROL_PASSWORD));
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Type(L"n\u00E9w");
        dialog.WaitForText(CONTROL_PASSWORD, L"n\u00E9w");
        dialog.Press(VK_TAB, VK_SHIFT);
        dialog.WaitForFocus(CONTROL_USER);
        dialog.Type(L"j\u00F6rg");
        dialog.WaitForText(CONTROL_USER, L"j\u00F6rg");
        dialog.Press(VK_RETURN);
    });
    EXPECT_TRUE(prompt_.Show(credentials_));
    EXPECT_EQ("ldap.farrow.test", credentials_.server);
    EXPECT_EQ("j\xF6rg", credentials_.userName);
    EXPECT_EQ("n\xE9w", credentials_.password);
}

TEST_F(CredentialsDialogTest, CancellingLeavesTheTextsAsTheyWere) {
    const DialogUser user(L"ldap.farrow.test", [](const OpenDialog& dialog) {
        dialog.Type(L"new");
        dialog.WaitForText(CONTROL_PASSWORD, L"new");
        dialog.Press(VK_ESCAPE);
    });
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("mary", credentials_.userName);
    EXPECT_EQ("old", credentials_.password);
}

TEST_F(CredentialsDialogTest, DialogSaysWhyTheUserIsAskedAndWhatWouldHelp) {
    const struct {
        std::uint32_t code;
        const wchar_t* text;
    } rows[] = {
        {LDAP_SUCCESS, L"Enter the user name and password for this directory server."},
        {LDAP_OTHER, L"Enter the user name and password for this directory server."},
        {LDAP_INVALID_CREDENTIALS, L"The user name or the password is wrong. Enter them again."},
        {LDAP_SERVER_DOWN, L"The server does not answer. Check the network, or try again later."},
        {LDAP_STRONG_AUTH_REQUIRED,
         L"The server asks for a stronger way of logging on: set Authentication or Security."},
        {LDAP_CONFIDENTIALITY_REQUIRED, L"The server asks for a secured connection: set Security."},
        {LDAP_INSUFFICIENT_RIGHTS,
         L"Your rights on the server do not suffice. Ask its administrator for them."},
        {LDAP_UNWILLING_TO_PERFORM,
         L"The server refuses this logon, for example without a password or of a locked account."},
        {LDAP_BUSY, L"The server is busy or not available. Try again later."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        credentials_.failure = row.code;
        const DialogUser user(L"ldap.farrow.test", [&](const OpenDialog& dialog) {
            EXPECT_EQ(row.text, dialog.Text(CONTROL_INSTRUCTION));
            dialog.Press(VK_ESCAPE);
        });
        EXPECT_FALSE(prompt_.Show(credentials_));
    }
}

bool HasControl(const OpenDialog& dialog, int id) {
    return GetDlgItem(dialog.Window(), id) != nullptr;
}

TEST_F(CredentialsDialogTest, DialogWarnsWhereTheConnectionIsNotSecured) {
    for (const bool isSecured : {false, true}) {
        credentials_.isSecured = isSecured;
        const DialogUser user(L"ldap.farrow.test", [&](const OpenDialog& dialog) {
            EXPECT_NE(isSecured, HasControl(dialog, CONTROL_OPEN_CONNECTION));
            if (!isSecured) {
                EXPECT_EQ(
                    L"This connection is not secured: others in the network can read the "
                    L"password.",
                    dialog.Text(CONTROL_OPEN_CONNECTION));
            }
            dialog.Press(VK_ESCAPE);
        });
        EXPECT_FALSE(prompt_.Show(credentials_));
    }
}

TEST_F(CredentialsDialogTest, StoringIsOfferedWhereThereIsAPlaceForIt) {
    for (const bool mayBeStored : {false, true}) {
        for (const bool wants : {false, true}) {
            credentials_.mayBeStored = mayBeStored;
            const DialogUser user(L"ldap.farrow.test", [&](const OpenDialog& dialog) {
                EXPECT_EQ(mayBeStored, HasControl(dialog, CONTROL_STORE));
                dialog.WaitForFocus(CONTROL_PASSWORD);
                if (wants) dialog.Press('R', VK_MENU);
                dialog.Press(VK_RETURN);
            });
            EXPECT_TRUE(prompt_.Show(credentials_));
            EXPECT_EQ(mayBeStored && wants, credentials_.isToBeStored);
        }
    }
}

TEST_F(CredentialsDialogTest, ComponentThatIsNotRegisteredCountsAsCancelled) {
    ASSERT_EQ(S_OK, library_.Unregister());
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("mary", credentials_.userName);
    EXPECT_EQ("old", credentials_.password);
}

TEST_F(CredentialsDialogTest, ComponentThatCannotBeLoadedCountsAsCancelled) {
    WriteRegistryText(HKEY_CLASSES_ROOT,
                      "CLSID\\{C1432487-51DA-4834-B781-ED0E69DC9002}\\InprocServer32", "",
                      "C:\\missing\\DepotBrowser.dll");
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("old", credentials_.password);
}

using CredentialsLettersTest = CredentialsDialogTest;

TEST_F(CredentialsLettersTest, LettersOfTheCodePageComeOutExactly) {
    const std::wstring japanese = L"\u4E88\u5B9A\u8868";
    const std::wstring typed = ExactAnsiFromWide(japanese) ? japanese : L"B\u00FCro";
    const std::string narrow = ExactAnsiFromWide(typed).value();
    credentials_.userName = narrow;
    const DialogUser user(L"ldap.farrow.test", [&](const OpenDialog& dialog) {
        EXPECT_EQ(typed, dialog.Text(CONTROL_USER));
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Type(typed);
        dialog.WaitForText(CONTROL_PASSWORD, typed);
        dialog.Press(VK_RETURN);
    });
    EXPECT_TRUE(prompt_.Show(credentials_));
    EXPECT_EQ(narrow, credentials_.userName);
    EXPECT_EQ(narrow, credentials_.password);
}

// A dialog component that shows nothing, answers as it is set up and notes what it is asked. It is
// on the stack of the test: references are not counted.
class NotingDialog final : public IUserPasswordPromptDialog {
public:
    std::vector<std::wstring> calls;
    LONG result = 1;
    // What is typed first, and where the dialog is cancelled when it is shown for this time.
    std::deque<std::wstring> userNames, passwords;
    int cancelledShow = 0;
    HRESULT showing = S_OK;
    HRESULT reading = S_OK;
    LONG references = 0;

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        const bool known = IsEqualIID(interfaceId, IID_IUnknown) ||
                           IsEqualIID(interfaceId, IID_IUserPasswordPromptDialog);
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return static_cast<ULONG>(--references); }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP ShowModal(LONG window, LONG* out) noexcept override {
        calls.push_back(L"show " + std::to_wstring(window));
        *out = ++shown_ == cancelledShow ? 0 : result;
        return showing;
    }
    STDMETHODIMP get_UserName(BSTR* text) noexcept override {
        return Give(L"user", userNames, text);
    }
    STDMETHODIMP put_UserName(BSTR text) noexcept override { return Take(L"user", text); }
    STDMETHODIMP get_Password(BSTR* text) noexcept override {
        return Give(L"password", passwords, text);
    }
    STDMETHODIMP put_Password(BSTR text) noexcept override { return Take(L"password", text); }
    STDMETHODIMP put_ServerName(BSTR text) noexcept override { return Take(L"server", text); }

private:
    HRESULT Take(const std::wstring& name, BSTR text) {
        calls.push_back(L"set " + name + L"=" + std::wstring(text, SysStringLen(text)));
        return S_OK;
    }
    HRESULT Give(const std::wstring& name, std::deque<std::wstring>& typed, BSTR* text) {
        calls.push_back(L"get " + name);
        std::wstring given = L"new " + name;
        if (!typed.empty()) {
            given = typed.front();
            typed.pop_front();
        }
        *text = SUCCEEDED(reading) ? SysAllocString(given.c_str()) : nullptr;
        return reading;
    }

    int shown_ = 0;
};

// Hands out one noting dialog.
class NotingFactory final : public IClassFactory {
public:
    explicit NotingFactory(NotingDialog& dialog) : dialog_(dialog) {}

    STDMETHODIMP QueryInterface(REFIID, void** object) noexcept override {
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID interfaceId, void** object) noexcept override {
        return dialog_.QueryInterface(interfaceId, object);
    }
    STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

private:
    NotingDialog& dialog_;
};

// Puts the noting dialog in the place of the real one.
class NotedCredentialsDialogTest : public CredentialsDialogTest {
protected:
    NotedCredentialsDialogTest() {
        EXPECT_EQ(S_OK, CoRegisterClassObject(CLSID_UserPasswordPromptDialog, &factory_,
                                              CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
    }
    ~NotedCredentialsDialogTest() override { CoRevokeClassObject(cookie_); }

    NotingDialog dialog_;
    NotingFactory factory_{dialog_};
    DWORD cookie_ = 0;
};

TEST_F(NotedCredentialsDialogTest, DialogThatNoPersonSeesIsNotOpenedAndTheEventLogNamesTheServer) {
    EXPECT_TRUE(prompt_.CanBeAnswered());
    const UnseenHost host;
    ASSERT_TRUE(host.IsInPlace());
    EXPECT_FALSE(prompt_.CanBeAnswered());
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_TRUE(dialog_.calls.empty());
    EXPECT_EQ("old", credentials_.password);
    const std::vector<LogEntry> entries = host.Taken();
    ASSERT_EQ(1u, entries.size());
    EXPECT_EQ(static_cast<DWORD>(LogMessage::kPromptNotShown), entries[0].message);
    EXPECT_EQ(EVENTLOG_WARNING_TYPE, entries[0].type);
    EXPECT_EQ(L"ldap.farrow.test", entries[0].values.back());
}

TEST_F(NotedCredentialsDialogTest, DialogIsFilledShownAndReadInThisOrder) {
    EXPECT_TRUE(prompt_.Show(credentials_));
    const std::vector<std::wstring> expected = {L"set server=ldap.farrow.test",
                                                L"set user=mary",
                                                L"set password=old",
                                                L"show 0",
                                                L"get user",
                                                L"get password"};
    EXPECT_EQ(expected, dialog_.calls);
    EXPECT_EQ("new user", credentials_.userName);
    EXPECT_EQ("new password", credentials_.password);
    EXPECT_EQ(0, dialog_.references);
}

TEST_F(NotedCredentialsDialogTest, AnyResultButOneIsACancel) {
    for (const LONG result : {0, 2, -1, 257}) {
        SCOPED_TRACE(result);
        dialog_.result = result;
        EXPECT_FALSE(prompt_.Show(credentials_));
        EXPECT_EQ(L"show 0", dialog_.calls.back());
        EXPECT_EQ("old", credentials_.password);
        EXPECT_EQ(0, dialog_.references);
    }
}

TEST_F(NotedCredentialsDialogTest, DialogThatFailsCountsAsCancelled) {
    dialog_.showing = E_FAIL;
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("mary", credentials_.userName);
    EXPECT_EQ(0, dialog_.references);
}

TEST_F(NotedCredentialsDialogTest, TextsThatCannotBeReadCountAsCancelled) {
    dialog_.reading = E_FAIL;
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("mary", credentials_.userName);
    EXPECT_EQ("old", credentials_.password);
    EXPECT_EQ(0, dialog_.references);
}

TEST_F(NotedCredentialsDialogTest, TextThatTheCodePageCannotHoldIsExplainedAndAskedForAgain) {
    const struct {
        const wchar_t* userName;
        const wchar_t* password;
    } rows[] = {
        {L"mary", L"\u65E5\u672C"},
        {L"\u65E5\u672C", L"secret"},
        {L"mary", L"\u0141\u00F3d\u017A"},  // whose letters have others that look alike
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(std::pair(row.userName, row.password)));
        const BoxLog boxes;
        dialog_.userNames = {row.userName};
        dialog_.passwords = {row.password};
        dialog_.calls.clear();
        EXPECT_TRUE(prompt_.Show(credentials_));
        EXPECT_EQ("new user", credentials_.userName);
        EXPECT_EQ("new password", credentials_.password);
        EXPECT_EQ(2, std::count(dialog_.calls.begin(), dialog_.calls.end(), L"show 0"));
        EXPECT_THAT(boxes.Texts(), testing::ElementsAre("The user name or password contains "
                                                        "characters that cannot be used here."));
    }
}

TEST_F(NotedCredentialsDialogTest, CancelAfterSuchATextLeavesTheTextsAsTheyWere) {
    const BoxLog boxes;
    dialog_.passwords = {L"\u65E5\u672C"};
    dialog_.cancelledShow = 2;
    EXPECT_FALSE(prompt_.Show(credentials_));
    EXPECT_EQ("mary", credentials_.userName);
    EXPECT_EQ("old", credentials_.password);
    EXPECT_EQ(1u, boxes.Boxes().size());
}

TEST_F(NotedCredentialsDialogTest, EveryTextIsFreed) {
    for (const HRESULT reading : {S_OK, E_FAIL}) {
        dialog_.reading = reading;
        EXPECT_EQ(0u, CountLeftovers([&] {
                      dialog_.calls.clear();
                      EXPECT_EQ(SUCCEEDED(reading), prompt_.Show(credentials_));
                  }));
    }
}

TEST_F(NotedCredentialsDialogTest, WithoutMemoryForATextItCountsAsCancelled) {
    {
        // Until the dialog is asked for something, the prompt needs memory for the first text only.
        const FailingMemory memory(1);
        EXPECT_FALSE(prompt_.Show(credentials_));
    }
    EXPECT_TRUE(dialog_.calls.empty());
    EXPECT_EQ("old", credentials_.password);
    EXPECT_EQ(0, dialog_.references);
}

TEST_F(NotedCredentialsDialogTest, EmptyTextsAreGivenAsEmptyTexts) {
    credentials_ = {};
    EXPECT_TRUE(prompt_.Show(credentials_));
    EXPECT_EQ(L"set server=", dialog_.calls[0]);
    EXPECT_EQ(L"set user=", dialog_.calls[1]);
    EXPECT_EQ(L"set password=", dialog_.calls[2]);
}

}  // namespace
}  // namespace depot::test
