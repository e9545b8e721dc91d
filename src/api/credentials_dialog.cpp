#include "api/credentials_dialog.h"

#include "DepotBrowser.h"
#include "com/automation.h"
#include "model/localization.h"
#include "platform/secret_text.h"
#include "platform/user_notice.h"
#include "platform/user_presence.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr wchar_t kDialogProgId[] = L"DepotBrowser.UserPasswordPromptDialog";
constexpr LONG kConfirmed = 1;

constexpr unsigned kUnusableCharacters = 527;  // in the localized resources
constexpr char kUnusableCharactersInEnglish[] =
    "The user name or password contains characters that cannot be used here.";

UniqueCom<IUserPasswordPromptDialog> CreateDialogComponent() {
    CLSID classId = {};
    if (FAILED(CLSIDFromProgID(kDialogProgId, &classId))) return nullptr;
    return CreateAnywhere<IUserPasswordPromptDialog>(classId, IID_IUserPasswordPromptDialog);
}

using TextSetter = HRESULT (STDMETHODCALLTYPE IUserPasswordPromptDialog::*)(BSTR text);
using TextGetter = HRESULT (STDMETHODCALLTYPE IUserPasswordPromptDialog::*)(BSTR* text);

// Each of the texts is wiped, as the password has to be.
bool SetText(IUserPasswordPromptDialog& dialog, TextSetter set, const std::string& text) {
    const WideSecret wide = WideFromAnsi(text);
    const UniqueSecretBstr bstr(NewWideBstr(wide.Plain()).release());
    return bstr && SUCCEEDED((dialog.*set)(bstr.get()));
}

bool GetText(IUserPasswordPromptDialog& dialog, TextGetter get, UniqueSecretBstr& text) {
    BSTR given = nullptr;
    const HRESULT result = (dialog.*get)(&given);
    text.reset(given);
    return SUCCEEDED(result);
}

bool Fill(IUserPasswordPromptDialog& dialog, const Credentials& credentials) {
    return SetText(dialog, &IUserPasswordPromptDialog::put_ServerName, credentials.server) &&
           SetText(dialog, &IUserPasswordPromptDialog::put_UserName, credentials.userName) &&
           SetText(dialog, &IUserPasswordPromptDialog::put_Password, credentials.password);
}

// Returns a later interface of the dialog; null where it has none.
template <class Interface>
UniqueCom<Interface> Extended(IUserPasswordPromptDialog& dialog, REFIID id) {
    void* extended = nullptr;
    if (FAILED(dialog.QueryInterface(id, &extended))) return nullptr;
    return UniqueCom<Interface>(static_cast<Interface*>(extended));
}

UniqueCom<IUserPasswordPromptDialog3> StoringDialog(IUserPasswordPromptDialog& dialog) {
    return Extended<IUserPasswordPromptDialog3>(dialog, IID_IUserPasswordPromptDialog3);
}

VARIANT_BOOL AsVariant(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

// Has a dialog that can do so say why the user is asked, and what becomes of what is typed. One
// that cannot is shown without.
void Explain(IUserPasswordPromptDialog& dialog, const Credentials& credentials) {
    if (credentials.failure != 0) {
        const auto failing =
            Extended<IUserPasswordPromptDialog2>(dialog, IID_IUserPasswordPromptDialog2);
        if (failing) failing->put_Failure(static_cast<LONG>(credentials.failure));
    }
    if (const auto storing = StoringDialog(dialog)) {
        storing->put_Secured(AsVariant(credentials.isSecured));
        storing->put_OffersStoring(AsVariant(credentials.mayBeStored));
    }
    if (credentials.asking == nullptr) return;
    // The server is asked only for a dialog that shows the answer.
    if (const auto exemplary =
            Extended<IUserPasswordPromptDialog4>(dialog, IID_IUserPasswordPromptDialog4)) {
        const std::wstring example = WideFromAnsi(credentials.asking->UserNameExample());
        exemplary->put_UserNameExample(NewWideBstr(example).get());
    }
}

bool IsToBeStored(IUserPasswordPromptDialog& dialog) {
    VARIANT_BOOL store = VARIANT_FALSE;
    const auto storing = StoringDialog(dialog);
    return storing && SUCCEEDED(storing->get_Store(&store)) && store != VARIANT_FALSE;
}

bool IsConfirmed(IUserPasswordPromptDialog& dialog) {
    LONG result = 0;
    return SUCCEEDED(dialog.ShowModal(0, &result)) && result == kConfirmed;
}

enum class Reading { kDone, kFailed, kUnusable };

// Takes over what was typed, both texts or none.
Reading ReadBack(IUserPasswordPromptDialog& dialog, Credentials& credentials) {
    UniqueSecretBstr userName, password;
    const bool hasName = GetText(dialog, &IUserPasswordPromptDialog::get_UserName, userName);
    const bool hasPassword = GetText(dialog, &IUserPasswordPromptDialog::get_Password, password);
    if (!hasName || !hasPassword) return Reading::kFailed;
    // A text that is not exactly what was typed would only be refused by the server.
    auto exactUserName = ExactAnsiFromWide(WideText(userName.get()));
    auto exactPassword = ExactAnsiFromWide(WideText(password.get()));
    if (!exactUserName || !exactPassword) return Reading::kUnusable;
    credentials.userName = *std::move(exactUserName);
    credentials.password = *std::move(exactPassword);
    credentials.isToBeStored = credentials.mayBeStored && IsToBeStored(dialog);
    return Reading::kDone;
}

void ExplainUnusableCharacters() {
    ShowNotice(LocalizedText(kUnusableCharacters).value_or(kUnusableCharactersInEnglish));
}

}  // namespace

bool CredentialsDialog::CanBeAnswered() const {
    return NoticeCollector::Current() == nullptr && HasAPerson();
}

bool CredentialsDialog::Show(Credentials& credentials) noexcept try {
    // A caller that wants no boxes hears of the failure itself.
    if (NoticeCollector::Current() != nullptr) return false;
    if (!HasAPerson()) {
        ReportUnshown(LogMessage::kPromptNotShown, credentials.server);
        return false;
    }
    const UniqueCom<IUserPasswordPromptDialog> dialog = CreateDialogComponent();
    if (!dialog || !Fill(*dialog, credentials)) return false;
    Explain(*dialog, credentials);
    while (IsConfirmed(*dialog)) {
        const Reading reading = ReadBack(*dialog, credentials);
        if (reading != Reading::kUnusable) return reading == Reading::kDone;
        ExplainUnusableCharacters();
    }
    return false;
} catch (...) {
    return false;
}

}  // namespace depot
