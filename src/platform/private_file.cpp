#include "platform/private_file.h"

#include <vector>

#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {
namespace {

UniqueHandle OpenToken() {
    HANDLE token = nullptr;
    // A thread may act for another user than its process.
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) &&
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return nullptr;
    }
    return UniqueHandle(token);
}

// The user with the identifier that the record points to.
struct CurrentUser {
    alignas(TOKEN_USER) BYTE bytes[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];

    PSID Sid() { return reinterpret_cast<TOKEN_USER*>(bytes)->User.Sid; }
};

bool Identify(CurrentUser& user) {
    const UniqueHandle token = OpenToken();
    DWORD size = sizeof(user.bytes);
    return GetTokenInformation(token.get(), TokenUser, user.bytes, size, &size) != FALSE;
}

}  // namespace

// In buffers of a fixed size: the caller has made the file already, and must not lose its name
// because memory runs out here.
void MakePrivate(const std::string& path) noexcept {
    CurrentUser user = {};
    if (!Identify(user)) return;
    alignas(ACL) BYTE bytes[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE] = {};
    auto* const list = reinterpret_cast<ACL*>(bytes);
    SECURITY_DESCRIPTOR descriptor = {};
    const bool built =
        InitializeAcl(list, sizeof(bytes), ACL_REVISION) &&
        AddAccessAllowedAce(list, ACL_REVISION, FILE_ALL_ACCESS, user.Sid()) &&
        InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) &&
        SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE) &&
        // Nothing of what the folder grants comes back.
        SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
    if (built) SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, &descriptor);
}

void CopyRights(const std::string& from, const std::string& to) {
    DWORD size = 0;
    GetFileSecurityA(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<BYTE> rights(size);
    if (size > 0 &&
        GetFileSecurityA(from.c_str(), DACL_SECURITY_INFORMATION, rights.data(), size, &size)) {
        SetFileSecurityA(to.c_str(), DACL_SECURITY_INFORMATION, rights.data());
    }
}

}  // namespace depot
