#include "platform/credential_store.h"

#include <cstring>
#include <memory>

#include "platform/wide_text.h"
#include "platform/win32.h"
#include "platform/wipe.h"

// Behind the system's own types.
#include <wincred.h>

namespace depot {
namespace {

struct CredentialReleaser {
    void operator()(CREDENTIALW* credential) const {
        if (credential->CredentialBlob != nullptr) {
            SecureZeroMemory(credential->CredentialBlob, credential->CredentialBlobSize);
        }
        CredFree(credential);
    }
};
using UniqueCredential = std::unique_ptr<CREDENTIALW, CredentialReleaser>;

std::optional<std::string> Narrow(const wchar_t* text) {
    return text == nullptr ? std::string() : ExactAnsiFromWide(text);
}

// The store's own dialogs keep a password as UTF-16 without a terminator.
std::optional<std::string> PasswordOf(const CREDENTIALW& credential) {
    std::wstring wide(credential.CredentialBlobSize / sizeof(wchar_t), L'\0');
    if (wide.empty()) return std::string();
    std::memcpy(wide.data(), credential.CredentialBlob, wide.size() * sizeof(wchar_t));
    std::optional<std::string> password = ExactAnsiFromWide(wide);
    Wipe(wide);
    return password;
}

}  // namespace

StoredCredential::~StoredCredential() {
    Wipe(password);
}

std::wstring StoreTarget(const std::string& target) {
    return L"Quillon - Depot - " + WideFromAnsi(target);
}

std::optional<StoredCredential> ReadCredential(const std::string& target) {
    CREDENTIALW* found = nullptr;
    if (!CredReadW(StoreTarget(target).c_str(), CRED_TYPE_GENERIC, 0, &found)) return std::nullopt;
    const UniqueCredential credential(found);
    auto userName = Narrow(credential->UserName);
    auto server = Narrow(credential->Comment);
    auto password = PasswordOf(*credential);
    if (!userName || !server || !password) return std::nullopt;
    StoredCredential stored;
    stored.userName = *std::move(userName);
    stored.server = *std::move(server);
    stored.password = *password;
    Wipe(*password);
    return stored;
}

std::uint32_t WriteCredential(const std::string& target, const StoredCredential& credential) {
    std::wstring name = StoreTarget(target);
    std::wstring userName = WideFromAnsi(credential.userName);
    std::wstring server = WideFromAnsi(credential.server);
    std::wstring password = WideFromAnsi(credential.password);
    CREDENTIALW entry = {};
    entry.Type = CRED_TYPE_GENERIC;
    entry.TargetName = name.data();
    entry.UserName = userName.data();
    entry.Comment = server.data();
    entry.Persist = CRED_PERSIST_LOCAL_MACHINE;
    entry.CredentialBlobSize = static_cast<DWORD>(password.size() * sizeof(wchar_t));
    entry.CredentialBlob = reinterpret_cast<BYTE*>(password.data());
    const DWORD error = CredWriteW(&entry, 0) ? DWORD{ERROR_SUCCESS} : GetLastError();
    Wipe(password);
    return error;
}

std::uint32_t DeleteCredential(const std::string& target) {
    const bool isDone = CredDeleteW(StoreTarget(target).c_str(), CRED_TYPE_GENERIC, 0) != FALSE;
    return isDone ? DWORD{ERROR_SUCCESS} : GetLastError();
}

}  // namespace depot
