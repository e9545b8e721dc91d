// Apart from reading, so that the component, which changes nothing in the store, does not carry it.
#include <span>
#include <string_view>

#include "platform/credential_store.h"
#include "platform/not_copied.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
#include "platform/wipe.h"

// Behind the system's own types.
#include <wincred.h>

namespace depot {
namespace {

// An answer of the store, with passwords in it.
class FoundCredentials : NotCopied {
public:
    explicit FoundCredentials(const std::wstring& pattern) {
        if (!CredEnumerateW(pattern.c_str(), 0, &count_, &credentials_)) count_ = 0;
    }
    ~FoundCredentials() {
        for (const CREDENTIALW* credential : All()) {
            if (credential->CredentialBlob == nullptr) continue;
            SecureZeroMemory(credential->CredentialBlob, credential->CredentialBlobSize);
        }
        if (credentials_ != nullptr) CredFree(credentials_);
    }
    std::span<CREDENTIALW* const> All() const { return {credentials_, count_}; }

private:
    DWORD count_ = 0;
    CREDENTIALW** credentials_ = nullptr;
};

}  // namespace

std::vector<std::string> StoredTargets() {
    const std::wstring beginning = StoreTarget({});
    std::vector<std::string> targets;
    const FoundCredentials found(beginning + L"*");
    for (const CREDENTIALW* credential : found.All()) {
        const std::wstring_view name = credential->TargetName;
        if (credential->Type != CRED_TYPE_GENERIC || !name.starts_with(beginning)) continue;
        auto target = ExactAnsiFromWide(std::wstring(name.substr(beginning.size())));
        if (target) targets.push_back(*std::move(target));
    }
    return targets;
}

std::uint32_t WriteCredential(const std::string& target, const StoredCredential& credential) {
    std::wstring name = StoreTarget(target);
    std::wstring userName = WideFromAnsi(credential.userName);
    std::wstring server = WideFromAnsi(credential.server);
    std::wstring password = WideFromAnsi(credential.password.Plain());
    const WipeAtEnd wiped(password);
    CREDENTIALW entry = {};
    entry.Type = CRED_TYPE_GENERIC;
    entry.TargetName = name.data();
    entry.UserName = userName.data();
    entry.Comment = server.data();
    entry.Persist = CRED_PERSIST_LOCAL_MACHINE;
    entry.CredentialBlobSize = static_cast<DWORD>(password.size() * sizeof(wchar_t));
    entry.CredentialBlob = reinterpret_cast<BYTE*>(password.data());
    return CredWriteW(&entry, 0) ? DWORD{ERROR_SUCCESS} : GetLastError();
}

std::uint32_t DeleteCredential(const std::string& target) {
    const bool isDone = CredDeleteW(StoreTarget(target).c_str(), CRED_TYPE_GENERIC, 0) != FALSE;
    return isDone ? DWORD{ERROR_SUCCESS} : GetLastError();
}

}  // namespace depot
