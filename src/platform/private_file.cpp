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

// Returns a TOKEN_USER with the identifier that it points to; nothing when there is none.
std::vector<BYTE> CurrentUser() {
    const UniqueHandle token = OpenToken();
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<BYTE> user(size);
    if (!GetTokenInformation(token.get(), TokenUser, user.data(), size, &size)) user.clear();
    return user;
}

}  // namespace

void MakePrivate(const std::string& path) {
    std::vector<BYTE> user = CurrentUser();
    if (user.empty()) return;
    const PSID owner = reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
    const DWORD size =
        static_cast<DWORD>(sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE)) + GetLengthSid(owner);
    std::vector<BYTE> bytes(size);
    auto* const list = reinterpret_cast<ACL*>(bytes.data());
    SECURITY_DESCRIPTOR descriptor = {};
    const bool built =
        InitializeAcl(list, size, ACL_REVISION) &&
        AddAccessAllowedAce(list, ACL_REVISION, FILE_ALL_ACCESS, owner) &&
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
