// Apart from reading, so that the component, which changes nothing in the store, does not carry it.
#include "platform/credential_store.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
#include "platform/wipe.h"

// Behind the system's own types.
#include <wincred.h>

namespace depot {

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
