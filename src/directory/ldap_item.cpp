#include "directory/ldap_item.h"

#include <new>

namespace depot {

std::unique_ptr<CLDAPItem> CLDAPItem::Clone() const {
    try {
        return std::make_unique<CLDAPItem>(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CLDAPItem::CopyFrom(const CLDAPItem* other) {
    if (other == nullptr) return;
    path = other->path;
    isFolder = other->isFolder;
}

void LdapItemList::Add(std::string path, bool isFolder) {
    auto item = std::make_unique<CLDAPItem>(std::move(path), isFolder);
    // A list that lacks an element would be taken for a whole one.
    if (!array_.Add(item.get())) throw std::bad_alloc();
    static_cast<void>(item.release());  // the list's from here on
}

void LdapItemList::RemoveLast() {
    CLDAPItem* const last = array_.At(array_.Count() - 1);
    array_.Remove(last);
    std::default_delete<CLDAPItem>()(last);
}

void LdapItemList::Clear() {
    PointerArray<CLDAPItem> removed;
    removed.Swap(array_);
    for (CLDAPItem* item : removed) std::default_delete<CLDAPItem>()(item);
}

}  // namespace depot
