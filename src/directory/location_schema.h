// How a location's entries are named, and by which classes and attributes they are known.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/depot_path.h"
#include "directory/dn.h"
#include "platform/directory_client.h"

namespace depot {

// The default names of a location's schema, for which an empty text in its record stands.
inline constexpr char kDefaultNamingAttribute[] = "CN";
inline constexpr char kDefaultFolderClass[] = "quillonFolder";
inline constexpr char kDefaultFileClass[] = "quillonFileBinary";
inline constexpr char kDefaultContentsAttribute[] = "quillonFileContentsBinary";

// What the components of a DN are, or why they cannot be known: LDAP_INVALID_DN_SYNTAX, or
// LDAP_SERVER_DOWN without the client.
struct ExplodedDN {
    std::vector<std::string> components;
    std::uint32_t code = 0;
};

// The schema that a location's record says, as it is at the time of each call. No server is asked.
// Borrows the record and the client, which takes names apart.
class LocationSchema {
public:
    LocationSchema(const CDepotPath& location, const DirectoryClient& client)
        : location_(location), client_(client) {}

    // The effective names.
    NamingAttributes NamingNames() const;
    std::string FolderClass() const;
    std::string FileClass() const;
    std::string ContentsAttribute() const;

    // Turns "base DN\folder\file" into the DN of the entry.
    std::string PathToDN(const std::string& path) const;

    // Returns the name and the kind of an entry as its DN says; nothing for another kind of entry.
    std::optional<EntryName> SplitEntryName(const std::string& dn,
                                            FileExtension extension = FileExtension::kKeep) const;

    ExplodedDN Explode(const std::string& dn) const;

    // Returns the name as it compares: in lower case, and without the blanks that mean nothing.
    std::string NormalDN(const std::string& dn) const;

private:
    const CDepotPath& location_;
    const DirectoryClient& client_;
};

}  // namespace depot
