#include "config/depot_path.h"

#include <new>
#include <utility>

#include "config/registry_values.h"

namespace depot {

CDepotPath::CDepotPath(CDepotPaths* owningPaths) : owner(owningPaths) {}

CDepotPath::CDepotPath(const CDepotPath& other) : CDepotPath(other.owner) {
    CDepotPath::CopyFrom(&other);
}

void CDepotPath::Reset(CDepotPaths* owningPaths) {
    std::string kept = std::move(path);
    LocationSettings::operator=(LocationSettings());
    path = std::move(kept);
    owner = owningPaths;
    locationText.clear();
    handleSlot = nullptr;
    indexSlot = kWritabilityUnknown;
}

std::unique_ptr<CDepotPath> CDepotPath::Clone() const {
    try {
        return std::make_unique<CDepotPath>(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CDepotPath::CopyFrom(const CDepotPath* other) {
    if (other == nullptr) return;
    LocationSettings::operator=(*other);
    owner = other->owner;
    locationText = other->locationText;
    indexSlot = other->indexSlot;
}

int CDepotPath::LoadFromRegistry(const RegistryKey& key, int index) {
    if (!ReadLocationValues(RegistryValues(key), index, *this)) return 0;
    locationText.clear();
    return 1;
}

}  // namespace depot
