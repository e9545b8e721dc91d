// One storage location of a depot, as the registry defines it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/depot_values.h"
#include "platform/registry_key.h"

namespace depot {

class CDepotPaths;

// The names of the authentication kinds, in the order of their numbers.
//
// Contract: nothing here uses them.
inline constexpr const char* kAuthenticationNames[] = {"Anonymous", "Simple", "GSSAPI/Windows"};

// A storage location: a folder of the file system, or a subtree of an LDAP directory with all that
// is needed to reach it. The record owns its texts; the collection that holds it owns the record.
class CDepotPath : public LocationSettings {
public:
    static constexpr std::int32_t kWritabilityUnknown = -1;

    explicit CDepotPath(CDepotPaths* owningPaths);
    CDepotPath(const CDepotPath& other);
    CDepotPath& operator=(const CDepotPath&) = delete;
    virtual ~CDepotPath() = default;

    // Gives every member its default, with `owningPaths` as the owner.
    //
    // Kept: the path stays as it was.
    // Contract: nothing here calls it.
    virtual void Reset(CDepotPaths* owningPaths);

    // Returns a copy, or null when memory is exhausted.
    virtual std::unique_ptr<CDepotPath> Clone() const;

    // Copies every member of `other` but the handle slot; a null `other` changes nothing.
    //
    // Kept: the target's handle slot stays.
    virtual void CopyFrom(const CDepotPath* other);

    // Reads the values that carry `index` (1-based) in their names. Returns 1, or 0 with the record
    // untouched when the key has no path of that number. Other missing values, and numbers of a
    // wrong type or size, leave their defaults.
    int LoadFromRegistry(const RegistryKey& key, int index);

    CDepotPaths* owner = nullptr;  // never owned
    std::string locationText;      // the expanded path, once asked for
    void* handleSlot = nullptr;
    std::int32_t indexSlot = kWritabilityUnknown;  // what the writability test found, 1 or 0
};

}  // namespace depot
