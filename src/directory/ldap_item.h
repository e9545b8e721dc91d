// One child found in a directory folder, and the list that holds such children.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/pointer_array.h"

namespace depot {

// A child of a directory folder or of a local folder that is to be published. Belongs to its list.
class CLDAPItem final {
public:
    CLDAPItem() = default;
    CLDAPItem(std::string itemPath, bool folder) : path(std::move(itemPath)), isFolder(folder) {}
    CLDAPItem(const CLDAPItem& other) { CLDAPItem::CopyFrom(&other); }
    CLDAPItem& operator=(const CLDAPItem&) = delete;
    ~CLDAPItem() = default;

    // Contract: nothing here calls these two.
    //
    // Returns a copy, or null when memory is exhausted.
    virtual std::unique_ptr<CLDAPItem> Clone() const;

    // Copies both members; a null `other` changes nothing.
    virtual void CopyFrom(const CLDAPItem* other);

    std::string path;            // a DN, or a local path
    std::uint32_t isFolder = 0;  // 1 for a folder, 0 for a file
};

// Children in the order in which they were found; owns them. What cannot be added for want of
// memory is not dropped: std::bad_alloc is thrown.
class LdapItemList {
public:
    LdapItemList() = default;
    ~LdapItemList() { Clear(); }
    LdapItemList(LdapItemList&& other) noexcept { array_.Swap(other.array_); }
    LdapItemList(const LdapItemList&) = delete;
    LdapItemList& operator=(const LdapItemList&) = delete;

    void Add(std::string path, bool isFolder);
    // REQUIRES: the list is not empty.
    void RemoveLast();
    void Clear();

    std::size_t Count() const { return array_.Count(); }
    const CLDAPItem& At(std::size_t index) const { return *array_.At(index); }
    CLDAPItem* const* begin() const { return array_.begin(); }
    CLDAPItem* const* end() const { return array_.end(); }

private:
    PointerArray<CLDAPItem> array_;
};

}  // namespace depot
