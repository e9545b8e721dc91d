// Named objects that the processes of one user share: who may use what is made here, and whether
// what was there already is used.
#pragma once

#include <string_view>

#include "platform/not_copied.h"
#include "platform/object_trust.h"
#include "platform/win32.h"

namespace depot {

// The user, the rights and the integrity level of a thread.
struct OwnIdentity {
    Subject AsSubject() const {
        return {{reinterpret_cast<const char*>(user), size}, isAdministrator, level};
    }

    alignas(DWORD) BYTE user[SECURITY_MAX_SID_SIZE];
    DWORD size;  // of the user's identifier, 0 while it is not known
    bool isAdministrator;
    DWORD level;
};

// Returns those of the calling thread, which may work for another user than its process.
OwnIdentity IdentityOfThread();

// Rights for a new object: everything for the user of the calling thread, who owns it, and for the
// system; nothing for other users, nor for the user's own processes of a lower integrity level.
class OwnObjectRights : NotCopied {
public:
    OwnObjectRights();

    // For the call that creates the object; null, the system's default, when the user is not known.
    SECURITY_ATTRIBUTES* Get() { return built_ ? &attributes_ : nullptr; }

private:
    bool BuildGrants();
    bool BuildLabel();

    static constexpr std::size_t kListBytes =
        sizeof(ACL) + 2 * (sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE);

    OwnIdentity identity_ = IdentityOfThread();
    alignas(ACL) BYTE grants_[kListBytes] = {};
    alignas(ACL) BYTE label_[kListBytes] = {};
    SECURITY_DESCRIPTOR descriptor_ = {};
    SECURITY_ATTRIBUTES attributes_ = {sizeof(attributes_), &descriptor_, FALSE};
    bool built_ = false;
};

// Whether an object of that name that existed already is used; the trace says why it is not.
bool IsTrustedObject(HANDLE object, std::string_view name);

}  // namespace depot
