// One file or folder found in a depot.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/win32.h"

namespace depot {

class CDepot;

// A file or folder with the depot that holds it. Owns its find record; belongs to its list.
class CDepotItem final {
public:
    CDepotItem() = default;
    CDepotItem(std::string itemPath, CDepot* holder) : path(std::move(itemPath)), depot(holder) {}
    CDepotItem(const CDepotItem& other) { CDepotItem::CopyFrom(&other); }
    CDepotItem& operator=(const CDepotItem&) = delete;
    ~CDepotItem() = default;

    // Returns a copy, or null when memory is exhausted.
    virtual std::unique_ptr<CDepotItem> Clone() const;

    // Copies all members; a null `other` changes nothing.
    //
    // Kept: a source without a find record leaves the target's record as it was.
    virtual void CopyFrom(const CDepotItem* other);

    std::string path;         // a display path
    CDepot* depot = nullptr;  // never owned
    std::uint32_t fileType = 0;
    std::uint32_t kindFlags = 0;
    std::unique_ptr<WIN32_FIND_DATAA> findData;  // null for items that have none
};

}  // namespace depot
