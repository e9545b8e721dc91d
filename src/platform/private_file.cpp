#include "platform/private_file.h"

#include <utility>
#include <vector>

#include "platform/token.h"

namespace depot {
namespace {

// The user of the calling thread.
class CurrentUser : public TokenRecord<TOKEN_USER> {
public:
    CurrentUser() : TokenRecord(Token(), TokenUser) {}

    PSID Sid() const { return (*this)->User.Sid; }

private:
    static UniqueHandle Token() {
        UniqueHandle token = TokenOfThread();
        return token ? std::move(token) : TokenOfProcess();
    }
};

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
// A description that gives everything to the user of the calling thread, who owns what is made with
// it, and nothing to anyone else, whatever the folder grants. In buffers of a fixed size: some
// callers must not lose what they made because memory runs out here.
class PrivateDescription {
public:
    // `inheritance` is what becomes of the right in what a folder holds.
    explicit PrivateDescription(DWORD inheritance = 0) { built_ = user_ && Build(inheritance); }

    // Null when the user is unknown.
    SECURITY_DESCRIPTOR* Get() { return built_ ? &descriptor_ : nullptr; }

private:
    bool Build(DWORD inheritance) {
        auto* const list = reinterpret_cast<ACL*>(bytes_);
        return InitializeAcl(list, sizeof(bytes_), ACL_REVISION) &&
               AddAccessAllowedAceEx(list, ACL_REVISION, inheritance, FILE_ALL_ACCESS,
                                     user_.Sid()) &&
               InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
               SetSecurityDescriptorOwner(&descriptor_, user_.Sid(), FALSE) &&
               SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE) &&
               // Nothing of what the folder grants comes back.
               SetSecurityDescriptorControl(&descriptor_, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
    }

    const CurrentUser user_;
    alignas(ACL) BYTE bytes_[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE] = {};
    SECURITY_DESCRIPTOR descriptor_ = {};
    bool built_ = false;
};

}  // namespace

void MakePrivate(const std::string& path) noexcept {
    PrivateDescription description;
    if (SECURITY_DESCRIPTOR* const rights = description.Get()) {
        SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, rights);
    }
}

UniqueHandle CreatePrivateFile(const std::string& path, DWORD access, DWORD sharing) noexcept {
    PrivateDescription description;
    SECURITY_ATTRIBUTES rights = {sizeof(rights), description.Get(), FALSE};
    if (rights.lpSecurityDescriptor == nullptr) return nullptr;
    return OwnFile(CreateFileA(path.c_str(), access, sharing, &rights, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool CreatePrivateFolder(const std::string& path) noexcept {
    PrivateDescription description(OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE);
    SECURITY_ATTRIBUTES rights = {sizeof(rights), description.Get(), FALSE};
    return rights.lpSecurityDescriptor != nullptr && CreateDirectoryA(path.c_str(), &rights);
}

bool IsOwnedByUser(HANDLE file) noexcept {
    alignas(SECURITY_DESCRIPTOR) BYTE bytes[sizeof(SECURITY_DESCRIPTOR) + SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(bytes);
    PSID owner = nullptr;
    BOOL isDefault = FALSE;
    const CurrentUser user;
    return user && GetKernelObjectSecurity(file, OWNER_SECURITY_INFORMATION, bytes, size, &size) &&
           GetSecurityDescriptorOwner(bytes, &owner, &isDefault) && owner != nullptr &&
           EqualSid(owner, user.Sid());
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
