#include "platform/own_objects.h"

#include <mutex>
#include <string>

#include "platform/lock.h"
#include "platform/token.h"
#include "platform/trace.h"

namespace depot {
namespace {

std::string_view BytesOf(PSID identifier) {
    if (identifier == nullptr || !IsValidSid(identifier)) return {};
    return {static_cast<const char*>(identifier), GetLengthSid(identifier)};
}

// A well-known identifier as the system takes it.
PSID AsSid(std::string_view identifier) {
    return const_cast<char*>(identifier.data());
}

// Asks for the calling thread.
bool WorksAsAdministrator() {
    BOOL isMember = FALSE;
    return CheckTokenMembership(nullptr, AsSid(kAdministrators), &isMember) && isMember != FALSE;
}

OwnIdentity ReadIdentity(const UniqueHandle& token) {
    OwnIdentity identity = {};
    const TokenRecord<TOKEN_USER> user(token, TokenUser);
    const TokenRecord<TOKEN_MANDATORY_LABEL> label(token, TokenIntegrityLevel);
    if (!user || !label || !CopySid(sizeof(identity.user), identity.user, user->User.Sid)) {
        return identity;
    }
    identity.size = GetLengthSid(identity.user);
    identity.level = LevelIn(BytesOf(label->Label.Sid));
    identity.isAdministrator = WorksAsAdministrator();
    return identity;
}

// That of the process stays; it is asked for often.
// REQUIRES: the calling thread works for no other user.
OwnIdentity IdentityOfProcess() {
    static Lock lock;
    static OwnIdentity known;
    const std::lock_guard guard(lock);
    if (known.size == 0) known = ReadIdentity(TokenOfProcess());
    return known;
}

// Finds the level among the entries of an object's system list.
void ReadLevel(PACL list, ObjectOrigin& origin) {
    for (DWORD index = 0; list != nullptr && index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (!GetAce(list, index, &entry)) return;
        auto* const label = static_cast<SYSTEM_MANDATORY_LABEL_ACE*>(entry);
        if (label->Header.AceType != SYSTEM_MANDATORY_LABEL_ACE_TYPE) continue;
        origin.hasLevel = true;
        origin.level = LevelIn(BytesOf(&label->SidStart));
        return;
    }
}

// An object's security descriptor as far as it counts here.
class ObjectSecurity {
public:
    ObjectOrigin Read(HANDLE object) {
        ObjectOrigin origin;
        DWORD size = sizeof(bytes_);
        PSID owner = nullptr;
        PACL list = nullptr;
        BOOL isPresent = FALSE, isDefault = FALSE;
        if (!GetKernelObjectSecurity(object,
                                     OWNER_SECURITY_INFORMATION | LABEL_SECURITY_INFORMATION,
                                     bytes_, size, &size) ||
            !GetSecurityDescriptorOwner(bytes_, &owner, &isDefault) ||
            !GetSecurityDescriptorSacl(bytes_, &isPresent, &list, &isDefault)) {
            return origin;
        }
        origin.owner = BytesOf(owner);
        if (isPresent) ReadLevel(list, origin);
        origin.isUnrecorded = owner == nullptr && !origin.hasLevel;
        return origin;
    }

private:
    // More than an owner and a label take; what has more is not believed.
    alignas(void*) BYTE bytes_[512] = {};
};

}  // namespace

OwnIdentity IdentityOfThread() {
    const UniqueHandle token = TokenOfThread();
    if (token) return ReadIdentity(token);
    return GetLastError() == ERROR_NO_TOKEN ? IdentityOfProcess() : OwnIdentity();
}

OwnObjectRights::OwnObjectRights() {
    built_ = identity_.size != 0 && BuildGrants() && BuildLabel();
}

bool OwnObjectRights::BuildGrants() {
    auto* const list = reinterpret_cast<ACL*>(grants_);
    return InitializeAcl(list, sizeof(grants_), ACL_REVISION) &&
           AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, identity_.user) &&
           AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, AsSid(kSystemAccount)) &&
           InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
           SetSecurityDescriptorOwner(&descriptor_, identity_.user, FALSE) &&
           SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE);
}

bool OwnObjectRights::BuildLabel() {
    auto* const list = reinterpret_cast<ACL*>(label_);
    alignas(DWORD) BYTE bytes[SECURITY_MAX_SID_SIZE] = {};
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_MANDATORY_LABEL_AUTHORITY;
    if (!InitializeSid(bytes, &authority, 1)) return false;
    *GetSidSubAuthority(bytes, 0) = identity_.level;
    return InitializeAcl(list, sizeof(label_), ACL_REVISION) &&
           AddMandatoryAce(list, ACL_REVISION, 0,
                           SYSTEM_MANDATORY_LABEL_NO_WRITE_UP | SYSTEM_MANDATORY_LABEL_NO_READ_UP,
                           bytes) &&
           SetSecurityDescriptorSacl(&descriptor_, TRUE, list, FALSE);
}

bool IsTrustedObject(HANDLE object, std::string_view name) {
    const TraceSpan span("shared object", name);
    const OwnIdentity identity = IdentityOfThread();
    ObjectSecurity security;
    const char* const reason = ReasonForDistrust(security.Read(object), identity.AsSubject());
    if (reason != nullptr && IsTracing()) span.EndWithText(std::string("not used: ") + reason);
    return reason == nullptr;
}

}  // namespace depot
