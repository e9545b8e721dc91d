// One configured depot.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "directory/ldap_items.h"
#include "model/depot_paths.h"
#include "model/working_copy.h"
#include "platform/registry_key.h"
#include "platform/win32.h"
#include "store/store.h"

namespace depot {

class CDepots;

struct IconDestroyer {
    void operator()(HICON icon) const { DestroyIcon(icon); }
};
using UniqueIcon = std::unique_ptr<std::remove_pointer_t<HICON>, IconDestroyer>;

// A named storage place for profile files, as the user sees it. Owns its locations and its icon;
// belongs to the list it was made for, or to the caller that cloned it.
class CDepot {
public:
    static constexpr std::int32_t kNoOrderIndex = -1;

    // Makes an empty depot whose macros are expanded for `owningList`.
    explicit CDepot(CDepots* owningList);
    CDepot(const CDepot& other);
    CDepot& operator=(const CDepot&) = delete;
    virtual ~CDepot();

    // Empties the depot again and gives it a fresh list of locations.
    //
    // Kept: the old list of locations is not freed.
    // Contract: nothing here calls it.
    virtual void Init(CDepots* owningList);

    // Returns a copy, or null when memory is exhausted.
    virtual std::unique_ptr<CDepot> Clone() const;

    // Copies the definition, the locations and the icon of `other`; a null `other` changes nothing.
    virtual void CopyFrom(const CDepot* other);

    // Reads the definition in the subkey `subkeyName` of the depot list's key, with
    // `registryViewFlags` as extra access; `language` is the user's, such as "eng". Returns false
    // when the subkey cannot be opened or defines no first location: such a subkey is no depot.
    bool ReadDefinition(const RegistryKey& listKey, const std::string& subkeyName,
                        const std::string& language);

    // Whether memory sufficed for all locations that ReadDefinition found.
    bool WasReadWhole() const { return wasReadWhole_; }

    // Returns the depot's connection object, made on first need for the active location and kept as
    // long as that location; null when the active location is a folder. No server is contacted but
    // to choose the location.
    CLDAPItems* DirectoryConnection();

    // Returns the store that the depot's storage paths are paths of: that connection's, else the
    // file system. It stays as long as the location is the active one.
    Store& ActiveStore();

    // What is kept and noted of the active location. Belongs to the location, and to the working
    // copies that are made of it.
    CopyMemory Memory();

    // See LdapConnection::Leave.
    bool LeaveConnections();

    std::string name;           // the registry subkey; empty for the built-in depot
    std::string displayName;    // the name shown to the user
    std::string icon;           // the icon location, as written in the registry
    std::string profileFolder;  // the display form of the "Profile" folder, once asked for
    UniqueIcon iconHandle;
    bool isDefault = false;
    std::int32_t orderIndex = kNoOrderIndex;
    std::uint32_t contains = 0;          // the kinds of files the depot holds, one bit a kind
    std::unique_ptr<CDepotPaths> paths;  // never null
    HKEY rootKey = HKEY_CURRENT_USER;
    REGSAM registryViewFlags = 0;  // 0 or KEY_WOW64_64KEY
    CDepots* owner;                // never owned

private:
    struct Place;
    struct DirectoryPlace;

    // Returns the place of the active location, which is made anew where that is another one.
    Place& ActivePlace();
    void ReadOwnValues(const RegistryKey& key);
    void ReadLocations(const RegistryKey& key);
    void TakeDefaults(const RegistryKey& key, int index, CDepotPath& location) const;

    std::unique_ptr<Place> place_;
    bool wasReadWhole_ = true;
};

}  // namespace depot
