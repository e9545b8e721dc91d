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
    const WipeAtEnd wiped(wide);
    if (wide.empty()) return std::string();
    std::memcpy(wide.data(), credential.CredentialBlob, wide.size() * sizeof(wchar_t));
    return ExactAnsiFromWide(wide);
}

}  // namespace

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
    stored.password = *std::move(password);
    return stored;
}

}  // namespace depot
