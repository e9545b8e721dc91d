// One storage location of a depot, as the registry defines it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/registry_key.h"

namespace depot {

class CDepotPaths;

enum LocationType : std::uint32_t { kFolderLocation = 0, kDirectoryLocation = 1 };

enum AuthenticationKind : std::uint32_t {
    kAnonymousAuthentication = 0,
    kSimpleAuthentication = 1,  // and every value that has no name of its own
    kNegotiateAuthentication = 2,
};

// The names of the authentication kinds, in the order of their numbers.
inline constexpr const char* kAuthenticationNames[] = {"Anonymous", "Simple", "GSSAPI/Windows"};

// A storage location: a folder of the file system, or a subtree of an LDAP directory with all that
// is needed to reach it. The record owns its texts; the collection that holds it owns the record.
class CDepotPath {
public:
    static constexpr std::uint32_t kDefaultPort = 389;
    static constexpr std::uint32_t kDefaultVersion = 3;
    static constexpr std::uint32_t kDefaultConnectTimeout = 120;
    static constexpr std::int32_t kWritabilityUnknown = -1;

    explicit CDepotPath(CDepotPaths* owningPaths);
    CDepotPath(const CDepotPath& other);
    CDepotPath& operator=(const CDepotPath&) = delete;
    virtual ~CDepotPath() = default;

    // Gives every member its default, with `owningPaths` as the owner.
    //
    // Kept: the path stays as it was.
    // Relied on by: existing clients that reset a location's settings without moving it.
    virtual void Reset(CDepotPaths* owningPaths);

    // Returns a copy, or null when memory is exhausted.
    virtual std::unique_ptr<CDepotPath> Clone() const;

    // Copies every member of `other` but the handle slot; a null `other` changes nothing.
    //
    // Kept: the target's handle slot stays.
    // Relied on by: holders of a run-time handle, which belongs to one record alone.
    virtual void CopyFrom(const CDepotPath* other);

    // Reads the values that carry `index` (1-based) in their names. Returns 1, or 0 with the record
    // untouched when the key has no path of that number. Other missing values, and numbers of a
    // wrong type or size, leave their defaults.
    int LoadFromRegistry(const RegistryKey& key, int index);

    std::uint32_t type = kFolderLocation;
    std::string path;  // as written in the registry, macros and all
    std::string host;
    std::string username;
    std::string password;  // as it stands in the registry, never encoded or decoded
    // Empty names stand for the defaults that the directory layer knows.
    std::string fileAttributeName;
    std::string fileObjectClass;
    std::string folderAttributeName;
    std::string folderObjectClass;
    std::string fileContentsAttributeName;
    std::uint32_t port = kDefaultPort;
    std::uint32_t authentication = kSimpleAuthentication;
    std::uint32_t version = kDefaultVersion;
    std::uint32_t connectTimeout = kDefaultConnectTimeout;  // seconds
    CDepotPaths* owner = nullptr;                           // never owned
    std::string locationText;                               // the expanded path, once asked for
    void* handleSlot = nullptr;
    std::int32_t indexSlot = kWritabilityUnknown;  // what the writability test found, 1 or 0
    std::uint32_t security = 0;  // 0 none, 1 StartTLS before the bind, 2 TLS from the start
    // 1 when a write-back must not replace what someone else stored meanwhile
    std::uint32_t detectConflicts = 0;

private:
    void LoadDirectorySettings(const RegistryKey& key, const std::string& number);
};

}  // namespace depot
