#include "model/depot_items.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace depot {

CDepotItem* CDepotItems::AddPath(const std::string& path, CDepots* depots,
                                 const std::string& keyPath, const Resolver& resolve) {
    if (depots == nullptr) {
        if (!ownDepots_) ownDepots_ = std::make_unique<CDepots>(keyPath);
        depots = ownDepots_.get();
    }
    auto item = std::make_unique<CDepotItem>();
    resolve(*depots, path, *item);
    return Append(std::move(item));
}

void CDepotItems::Add(CDepotItem* item, bool clone) {
    AddElement(array_, item, clone);
}

CDepotItem* CDepotItems::Append(std::unique_ptr<CDepotItem> item) {
    return AddOwned(array_, std::move(item));
}

void CDepotItems::Copy(const CDepotItems* other) {
    if (other != nullptr) CopyElements(array_, other->array_);
}

void CDepotItems::RemoveAll(bool deleteElements) {
    RemoveAllElements(array_, deleteElements);
}

CDepotItem* CDepotItems::FindByName(const std::string& path) const {
    CDepotItem** const found =
        std::find_if(array_.begin(), array_.end(),
                     [&](const CDepotItem* item) { return EqualsNoCase(item->path, path); });
    return found == array_.end() ? nullptr : *found;
}

void CDepotItems::Remove(CDepotItem* item) {
    RemoveElement(array_, item);
}

void CDepotItems::RemoveUnless(const std::function<bool(const CDepotItem& item)>& keep) {
    PointerArray<CDepotItem> kept;
    for (CDepotItem* item : array_) {
        if (keep(*item)) kept.Add(item);
    }
    PointerArray<CDepotItem> all;
    all.Swap(array_);
    array_.Swap(kept);
    if (!ownsItems) return;
    // Both lists have the same order.
    CDepotItem** next = array_.begin();
    for (CDepotItem* item : all) {
        const bool stays = next != array_.end() && *next == item;
        stays ? static_cast<void>(++next) : std::default_delete<CDepotItem>()(item);
    }
}

}  // namespace depot
