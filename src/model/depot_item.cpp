#include "model/depot_item.h"

#include <new>

namespace depot {

std::unique_ptr<CDepotItem> CDepotItem::Clone() const {
    try {
        return std::make_unique<CDepotItem>(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CDepotItem::CopyFrom(const CDepotItem* other) {
    if (other == nullptr) return;
    path = other->path;
    depot = other->depot;
    fileType = other->fileType;
    kindFlags = other->kindFlags;
    if (!other->findData) return;
    if (!findData) findData = std::make_unique<WIN32_FIND_DATAA>();
    *findData = *other->findData;
}

}  // namespace depot
