#include "model/depot_paths.h"

#include <algorithm>

#include "macros/replacers.h"
#include "model/depot.h"
#include "model/depots.h"
#include "platform/text.h"

namespace depot {
namespace {

// Returns the list of depots that the location belongs to, or null.
CDepots* OwningList(const CDepotPath& location) {
    const CDepotPaths* const paths = location.owner;
    return paths != nullptr && paths->owner != nullptr ? paths->owner->owner : nullptr;
}

bool IsReachable(CDepotPath& location) {
    if (location.type == kDirectoryLocation) return false;
    return PathExists(ExpandedPath(location));
}

}  // namespace

void CDepotPaths::Add(CDepotPath* location, bool clone) {
    AddElement(array_, location, clone);
}

void CDepotPaths::Copy(const CDepotPaths* other) {
    if (other != nullptr) CopyElements(array_, other->array_);
}

void CDepotPaths::RemoveAll(bool deleteElements) {
    activeLocation_ = nullptr;
    activePath_.clear();
    RemoveAllElements(array_, deleteElements);
}

void CDepotPaths::Remove(CDepotPath* location) {
    if (location == activeLocation_) activeLocation_ = nullptr;
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
    CDepotPath** const reachable = std::find_if(
        array_.begin(), array_.end(), [](CDepotPath* location) { return IsReachable(*location); });
    activeLocation_ = reachable == array_.end() ? At(0) : *reachable;
}

std::string ExpandedPath(CDepotPath& location) {
    if (!location.locationText.empty() || location.path.empty()) return location.locationText;
    std::string text = location.path;
    if (CDepots* const depots = OwningList(location)) {
        ExpandReplacers(depots->GetReplacers()->Data(), text);
    }
    location.locationText = text;
    return text;
}

bool PathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace depot
