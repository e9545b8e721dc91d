// Making sure that folder entries exist.
#include "directory/entry_store.h"

namespace depot {

Result EntryStore::EnsureFolders(const std::string& dn, LdapItemList& added) {
    const ExplodedDN exploded = schema_.Explode(dn);
    if (exploded.code != LDAP_SUCCESS) return connection_.Outcome(exploded.code);
    const std::optional<EntryName> name = schema_.SplitEntryName(dn);
    const bool isFile = name && !name->isFolder;
    return connection_.Outcome(EnsureCode(exploded.components, isFile ? 1 : 0, added));
}

Result EntryStore::EnsureFoldersAbove(const std::string& dn, LdapItemList& added) {
    const ExplodedDN exploded = schema_.Explode(dn);
    if (exploded.code != LDAP_SUCCESS) return connection_.Outcome(exploded.code);
    return connection_.Outcome(EnsureCode(exploded.components, 1, added));
}

std::uint32_t EntryStore::EnsureCode(const std::vector<std::string>& components, std::size_t first,
                                     LdapItemList& added) {
    LdapItemList missing;
    for (std::size_t index = first; index < components.size(); ++index) {
        std::string folder = JoinComponents(components, index);
        const std::uint32_t code = FindCode(folder);
        if (code == LDAP_SUCCESS) break;
        if (code == LDAP_INVALID_DN_SYNTAX) return code;
        missing.Add(std::move(folder), true);
    }
    return AddFolders(missing, added);
}

std::uint32_t EntryStore::AddFolders(const LdapItemList& missing, LdapItemList& added) {
    for (std::size_t index = missing.Count(); index > 0; --index) {
        const std::string& dn = missing.At(index - 1).path;
        const std::optional<EntryName> name = schema_.SplitEntryName(dn);
        if (!name) return LDAP_INVALID_DN_SYNTAX;
        // Noted before it is there: it could not be removed if memory ran out afterwards.
        added.Add(dn, true);
        const std::uint32_t code = AddNewFolderCode(dn, name->name);
        if (code != LDAP_SUCCESS) added.RemoveLast();
        // Somebody else may have added it since it was looked for.
        if (code != LDAP_SUCCESS && code != LDAP_ALREADY_EXISTS) return LDAP_PARAM_ERROR;
    }
    return LDAP_SUCCESS;
}

}  // namespace depot
