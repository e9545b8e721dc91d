#include "directory/location_schema.h"

#include "directory/ldap_handles.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

const std::string& OrDefault(const std::string& name, const std::string& defaultName) {
    return name.empty() ? defaultName : name;
}

}  // namespace

NamingAttributes LocationSchema::NamingNames() const {
    return {OrDefault(location_.folderAttributeName, kDefaultNamingAttribute),
            OrDefault(location_.fileAttributeName, kDefaultNamingAttribute)};
}

std::string LocationSchema::FolderClass() const {
    return OrDefault(location_.folderObjectClass, kDefaultFolderClass);
}

std::string LocationSchema::FileClass() const {
    return OrDefault(location_.fileObjectClass, kDefaultFileClass);
}

std::string LocationSchema::ContentsAttribute() const {
    return OrDefault(location_.fileContentsAttributeName, kDefaultContentsAttribute);
}

std::string LocationSchema::PathToDN(const std::string& path) const {
    return depot::PathToDN(path, NamingNames());
}

std::optional<EntryName> LocationSchema::SplitEntryName(const std::string& dn,
                                                        FileExtension extension) const {
    const ExplodedDN exploded = Explode(dn);
    if (exploded.components.empty()) return std::nullopt;
    return SplitFirstComponent(exploded.components.front(), NamingNames(), extension);
}

ExplodedDN LocationSchema::Explode(const std::string& dn) const {
    const UniqueLdapValues exploded(client_.ldap_explode_dn(ClientText(dn), 0), {&client_});
    ExplodedDN result;
    if (!exploded) {
        result.code =
            IsMissing(client_.ldap_explode_dn) ? LDAP_SERVER_DOWN : LDAP_INVALID_DN_SYNTAX;
        return result;
    }
    for (char** component = exploded.get(); *component != nullptr; ++component) {
        // Some clients turn every letter beyond ASCII into escapes, others leave it.
        result.components.push_back(DecodeNonAsciiEscapes(*component, &ExactAnsiFromUtf8));
    }
    return result;
}

std::string LocationSchema::NormalDN(const std::string& dn) const {
    const ExplodedDN exploded = Explode(dn);
    return ToLower(exploded.code == LDAP_SUCCESS ? JoinComponents(exploded.components, 0) : dn);
}

}  // namespace depot
