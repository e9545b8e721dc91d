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

// Returns a part of the file's security descriptor; nothing when it cannot be read.
std::vector<BYTE> SecurityOf(const std::string& path, SECURITY_INFORMATION part) {
    DWORD size = 0;
    GetFileSecurityA(path.c_str(), part, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    if (size == 0 || !GetFileSecurityA(path.c_str(), part, descriptor.data(), size, &size)) {
        return {};
    }
    return descriptor;
}

PSID OwnerIn(std::vector<BYTE>& descriptor) {
    PSID owner = nullptr;
    BOOL defaulted = FALSE;
    if (!descriptor.empty()) GetSecurityDescriptorOwner(descriptor.data(), &owner, &defaulted);
    return owner;
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

bool CopyOwner(const std::string& from, const std::string& to) {
    std::vector<BYTE> wanted = SecurityOf(from, OWNER_SECURITY_INFORMATION);
    std::vector<BYTE> present = SecurityOf(to, OWNER_SECURITY_INFORMATION);
    const PSID owner = OwnerIn(wanted);
    const PSID presentOwner = OwnerIn(present);
    if (owner == nullptr || presentOwner == nullptr || EqualSid(owner, presentOwner)) return true;
    return SetFileSecurityA(to.c_str(), OWNER_SECURITY_INFORMATION, wanted.data()) != FALSE;
}

void CopyRights(const std::string& from, const std::string& to) {
    std::vector<BYTE> rights = SecurityOf(from, DACL_SECURITY_INFORMATION);
    if (!rights.empty()) SetFileSecurityA(to.c_str(), DACL_SECURITY_INFORMATION, rights.data());
}

}  // namespace depot
