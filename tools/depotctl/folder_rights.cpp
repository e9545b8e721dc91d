#include "depotctl/folder_rights.h"

#include <aclapi.h>

#include <array>
#include <memory>

#include "platform/win32.h"

namespace depot::ctl {
namespace {

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};

constexpr ACCESS_MASK kWriting =
    FILE_ADD_FILE | FILE_DELETE_CHILD | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

bool MeansOrdinaryUsers(PSID sid) {
    constexpr std::array kGroups = {WinWorldSid, WinAuthenticatedUserSid, WinBuiltinUsersSid,
                                    WinInteractiveSid};
    for (const WELL_KNOWN_SID_TYPE group : kGroups) {
        if (IsWellKnownSid(sid, group)) return true;
    }
    return false;
}

bool LetsOrdinaryUsersWrite(ACL* list, DWORD index) {
    void* entry = nullptr;
    if (!GetAce(list, index, &entry)) return false;
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const bool counts = allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                        (allowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0;
    return counts && (allowed->Mask & kWriting) != 0 && MeansOrdinaryUsers(&allowed->SidStart);
}

}  // namespace

bool OrdinaryUsersMayWrite(const std::string& folder) {
    ACL* list = nullptr;
    void* descriptor = nullptr;
    const DWORD error =
        GetNamedSecurityInfoA(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &descriptor);
    const std::unique_ptr<void, LocalFreer> owner(descriptor);
    if (error != ERROR_SUCCESS) return false;
    // Without a list everybody may do everything.
    if (list == nullptr) return true;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        if (LetsOrdinaryUsersWrite(list, index)) return true;
    }
    return false;
}

}  // namespace depot::ctl
