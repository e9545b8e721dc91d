#include "model/depot_paths.h"

#include <algorithm>

#include "directory/ldap_items.h"
#include "macros/replacers.h"
#include "model/depot.h"
#include "model/depots.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

// Returns the list of depots that the location belongs to, or null.
CDepots* OwningList(const CDepotPath& location) {
    const CDepotPaths* const paths = location.owner;
    return paths != nullptr && paths->owner != nullptr ? paths->owner->owner : nullptr;
}

// Whether a directory that is a depot's only location needs to be asked nothing to be chosen. A
// log-on that is still to be completed is tried quietly before a user is asked for it, and a base
// that no server takes for a name is reported.
bool IsChosenUnasked(CDepotPath& location) {
    const CLDAPItems directory(&location);
    const bool needsLogOn = location.authentication == kSimpleAuthentication &&
                            (location.username.empty() || location.password.empty());
    return !needsLogOn &&
           directory.Schema().Explode(directory.PathToDN(ExpandedPath(location))).code ==
               LDAP_SUCCESS;
}

}  // namespace

CDepotPaths::CDepotPaths(CDepot* owningDepot) : owner(owningDepot) {}

CDepotPaths::~CDepotPaths() {
    directory_.reset();
    RemoveAllElements(array_, ownsItems);
}

// Connects and looks for the base alone. Nothing is asked or shown: the first use of the location
// does that. A connection that the first use would make alike stays open for it as long as the call
// lasts.
bool CDepotPaths::IsReachableDirectory(CDepotPath& location) {
    auto directory = std::make_unique<CLDAPItems>(&location);
    LdapConnection& connection = directory->Connection();
    if (!connection.ConnectQuietly()) return false;
    const Result found = directory->Entries().Find(directory->PathToDN(ExpandedPath(location)));
    if (CodeOf(found) == LDAP_INVALID_DN_SYNTAX) directory->ReportError(LDAP_INVALID_DN_SYNTAX);
    if (!found) return false;
    if (connection.OpensUnasked()) {
        connection.Release();
        directory_ = std::move(directory);
    }
    return true;
}

bool CDepotPaths::IsReachable(CDepotPath& location) {
    return location.IsDirectory() ? IsReachableDirectory(location)
                                  : PathExists(ExpandedPath(location));
}

std::unique_ptr<CLDAPItems> CDepotPaths::TakeDirectory() {
    return std::move(directory_);
}

void CDepotPaths::Forget() {
    activeLocation_ = nullptr;
    activePath_.clear();
    directory_.reset();
}

void CDepotPaths::Add(CDepotPath* location, bool clone) {
    AddElement(array_, location, clone);
}

void CDepotPaths::Copy(const CDepotPaths* other) {
    if (other == nullptr) return;
    const std::size_t before = Count();
    CopyElements(array_, other->array_);
    // A clone starts with its source's owner, which may be deleted before the clone is.
    for (std::size_t index = before; index < Count(); ++index) At(index)->owner = this;
}

void CDepotPaths::RemoveAll(bool deleteElements) {
    Forget();
    RemoveAllElements(array_, deleteElements);
}

void CDepotPaths::Remove(CDepotPath* location) {
    if (location == activeLocation_) Forget();
    RemoveElement(array_, location);
}

std::string CDepotPaths::GetActivePath() {
    if (activePath_.empty()) {
        ChooseLocation();
        if (activeLocation_ != nullptr) {
            activePath_ = EnsureTrailingBackslash(ExpandedPath(*activeLocation_));
        }
    }
    return activePath_;
}

CDepotPath* CDepotPaths::ActiveLocation() {
    ChooseLocation();
    return activeLocation_;
}

void CDepotPaths::ChooseLocation() {
    if (activeLocation_ != nullptr || Count() == 0) return;
    if (Count() == 1 && At(0)->IsDirectory() && IsChosenUnasked(*At(0))) {
        activeLocation_ = At(0);
        return;
    }
    CDepotPath** const reachable =
        std::find_if(array_.begin(), array_.end(),
                     [this](CDepotPath* location) { return IsReachable(*location); });
    activeLocation_ = reachable == array_.end() ? At(0) : *reachable;
}

bool CDepotPaths::ChoiceProbesDirectory() const {
    if (activeLocation_ != nullptr) return false;
    CDepotPath** const decisive =
        std::find_if(array_.begin(), array_.end(), [](CDepotPath* location) {
            return location->IsDirectory() || PathExists(ExpandedPath(*location));
        });
    return decisive != array_.end() && (*decisive)->IsDirectory();
}

bool CDepotPaths::MayHold(const std::string& path) const {
    if (!ChoiceProbesDirectory()) return true;
    return std::any_of(array_.begin(), array_.end(), [&](CDepotPath* location) {
        const std::string base = RemoveTrailingBackslash(ExpandedPath(*location));
        return !base.empty() && FindNoCase(path, base) != std::string::npos;
    });
}

std::string ExpandedPath(CDepotPath& location) {
    if (!location.locationText.empty() || location.path.empty()) return location.locationText;
    std::string text = location.path;
    if (CDepots* const depots = OwningList(location)) {
        const MacroValues values = depots->CopyReplacers();
        ExpandReplacers(&values, text);
    }
    location.locationText = text;
    return text;
}

}  // namespace depot
