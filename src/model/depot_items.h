// A list of items found in depots.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "model/depot_item.h"
#include "model/depots.h"
#include "model/owned_list.h"
#include "platform/not_copied.h"

namespace depot {

// Items in the order in which they were found. Owns them unless `ownsItems` is cleared.
class CDepotItems : NotCopied {
public:
    // Fills `item` with the display path and the depot of `path`, as the depot manager resolves it.
    using Resolver =
        std::function<void(CDepots& depots, const std::string& path, CDepotItem& item)>;

    virtual ~CDepotItems() { RemoveAllElements(array_, ownsItems); }

    // Contract: nothing here calls the virtual operations.
    //
    // Appends an item for `path`, resolved among `depots`, or, when that is null, among a list that
    // this one loads from `keyPath` and keeps. Returns the item, or null when it was dropped.
    virtual CDepotItem* AddPath(const std::string& path, CDepots* depots,
                                const std::string& keyPath, const Resolver& resolve);
    // Appends an item, or a clone of it. An element that cannot be added is dropped silently and
    // stays the caller's.
    virtual void Add(CDepotItem* item, bool clone);
    // Appends clones of the other list's items.
    virtual void Copy(const CDepotItems* other);
    virtual void RemoveAll(bool deleteElements);
    // Returns the first item of that path, compared without regard to case, or null.
    virtual CDepotItem* FindByName(const std::string& path) const;
    // Takes an item out and deletes it, also when it was not in the list.
    virtual void Remove(CDepotItem* item);

    // Appends an item that the list is to own. Returns it, or null when the list cannot grow.
    CDepotItem* Append(std::unique_ptr<CDepotItem> item);

    // Deletes the items for which `keep`, asked once for each in list order, returns false.
    void RemoveUnless(const std::function<bool(const CDepotItem& item)>& keep);

    std::size_t Count() const { return array_.Count(); }
    CDepotItem* At(std::size_t index) const { return array_.At(index); }
    CDepotItem* const* begin() const { return array_.begin(); }
    CDepotItem* const* end() const { return array_.end(); }

    bool ownsItems = true;
    // How many files and folders listings left out because of their names.
    std::uint32_t unsafeNames = 0;

private:
    PointerArray<CDepotItem> array_;
    std::unique_ptr<CDepots> ownDepots_;
};

}  // namespace depot
