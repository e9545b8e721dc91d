#include "model/credentials_dialog.h"

#include "model/localization.h"
#include "platform/user_notice.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
// After the Windows headers.
#include <oleauto.h>

#include <memory>
#include <optional>
#include <type_traits>

#include "DepotBrowser.h"

namespace depot {
namespace {

constexpr char kDialogProgId[] = "DepotBrowser.UserPasswordPromptDialog";
constexpr LONG kConfirmed = 1;

constexpr char kMessageTitle[] = "Quillon";
constexpr unsigned kUnusableCharacters = 527;  // in the localized resources
constexpr char kUnusableCharactersInEnglish[] =
    "The user name or password contains characters that cannot be used here.";

// Wherever the component offers to run: in this process, in another one or on another machine.
constexpr DWORD kAnyContext =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
static_assert(kAnyContext == 23);

struct BstrFreer {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using UniqueBstr = std::unique_ptr<std::remove_pointer_t<BSTR>, BstrFreer>;

struct DialogReleaser {
    void operator()(IUserPasswordPromptDialog* dialog) const { dialog->Release(); }
};
using UniqueDialog = std::unique_ptr<IUserPasswordPromptDialog, DialogReleaser>;

UniqueDialog CreateDialogComponent() {
    CLSID classId = {};
    void* created = nullptr;
    if (FAILED(CLSIDFromProgID(WideFromAnsi(kDialogProgId).c_str(), &classId)) ||
        FAILED(CoCreateInstance(classId, nullptr, kAnyContext, IID_IUserPasswordPromptDialog,
                                &created))) {
        return nullptr;
    }
    return UniqueDialog(static_cast<IUserPasswordPromptDialog*>(created));
}

using TextSetter = HRESULT (STDMETHODCALLTYPE IUserPasswordPromptDialog::*)(BSTR text);
using TextGetter = HRESULT (STDMETHODCALLTYPE IUserPasswordPromptDialog::*)(BSTR* text);

bool SetText(IUserPasswordPromptDialog& dialog, TextSetter set, const std::string& text) {
    const std::wstring wide = WideFromAnsi(text);
    const UniqueBstr bstr(SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size())));
    return bstr && SUCCEEDED((dialog.*set)(bstr.get()));
}

std::optional<std::wstring> GetText(IUserPasswordPromptDialog& dialog, TextGetter get) {
    BSTR given = nullptr;
    const HRESULT result = (dialog.*get)(&given);
    const UniqueBstr bstr(given);
    if (FAILED(result)) return std::nullopt;
    return std::wstring(given != nullptr ? given : L"", SysStringLen(given));
}

bool Fill(IUserPasswordPromptDialog& dialog, const Credentials& credentials) {
    return SetText(dialog, &IUserPasswordPromptDialog::put_ServerName, credentials.server) &&
           SetText(dialog, &IUserPasswordPromptDialog::put_UserName, credentials.userName) &&
           SetText(dialog, &IUserPasswordPromptDialog::put_Password, credentials.password);
}

bool IsConfirmed(IUserPasswordPromptDialog& dialog) {
    LONG result = 0;
    return SUCCEEDED(dialog.ShowModal(0, &result)) && result == kConfirmed;
}

enum class Reading { kDone, kFailed, kUnusable };

// Takes over what was typed, both texts or none.
Reading ReadBack(IUserPasswordPromptDialog& dialog, Credentials& credentials) {
    const auto userName = GetText(dialog, &IUserPasswordPromptDialog::get_UserName);
    const auto password = GetText(dialog, &IUserPasswordPromptDialog::get_Password);
    if (!userName || !password) return Reading::kFailed;
    // A text that is not exactly what was typed would only be refused by the server.
    auto exactUserName = ExactAnsiFromWide(*userName), exactPassword = ExactAnsiFromWide(*password);
    if (!exactUserName || !exactPassword) return Reading::kUnusable;
    credentials.userName = *std::move(exactUserName);
    credentials.password = *std::move(exactPassword);
    return Reading::kDone;
}

void ExplainUnusableCharacters() {
    ShowNotice(LocalizedText(kUnusableCharacters).value_or(kUnusableCharactersInEnglish),
               kMessageTitle, nullptr);
}

}  // namespace

bool CredentialsDialog::Show(Credentials& credentials) noexcept try {
    const UniqueDialog dialog = CreateDialogComponent();
    if (!dialog || !Fill(*dialog, credentials)) return false;
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
