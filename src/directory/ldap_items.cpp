#include "directory/ldap_items.h"

namespace depot {

CLDAPItems::CLDAPItems(CDepotPath* location)
    : ownLocation_(location ? nullptr : std::make_unique<CDepotPath>(nullptr)),
      location_(location ? *location : *ownLocation_),
      connection_(location_),
      schema_(location_, connection_.Client()),
      entries_(connection_, schema_) {}

CLDAPItems::~CLDAPItems() = default;

int CLDAPItems::Connect(const std::string& host, const std::string& password,
                        const std::string& userName, std::string* errorText) {
    return AsFlag(connection_.Connect({host, userName, password}), errorText);
}

int CLDAPItems::ConnectLocation(std::string* errorText) {
    return AsFlag(connection_.Connect(connection_.Shared().Own()), errorText);
}

int CLDAPItems::ConnectQuietly() {
    return AsCode(connection_.ConnectQuietly()) == LDAP_SUCCESS ? 1 : 0;
}

int CLDAPItems::Disconnect() {
    connection_.Disconnect();
    return 0;
}

int CLDAPItems::PromptAndConnect(std::string* errorText) {
    return AsFlag(connection_.PromptAndConnect(), errorText);
}

void CLDAPItems::ReportError(std::uint32_t code, std::string* errorText) {
    lastError_ = code;
    AsFlag(connection_.Report(code), errorText);
}

int CLDAPItems::ListChildren(const std::string& baseDN, LdapItemList& items,
                             const std::string& localBase) {
    return AsFlag(entries_.List(baseDN, items, localBase), nullptr);
}

int CLDAPItems::AddFolderEntry(const std::string& dn, const std::string& name,
                               std::string* errorText) {
    bool added = false;
    return AsFlagOfFolders(entries_.AddFolder(dn, name, added), added, errorText);
}

std::uint32_t CLDAPItems::AddFileEntry(const std::string& dn, const std::string& name,
                                       const void* data, std::uint32_t length) {
    return AsCode(entries_.AddFile(dn, name, data, length));
}

std::uint32_t CLDAPItems::ReplaceFileContents(const std::string& dn, const void* data,
                                              std::uint32_t length) {
    return AsCode(entries_.Replace(dn, data, length));
}

int CLDAPItems::RenameEntry(const std::string& oldDN, const std::string& newDN,
                            std::string* errorText) {
    lastError_ = LDAP_SUCCESS;
    return AsFlag(entries_.Rename(oldDN, newDN), errorText);
}

int CLDAPItems::DeleteTree(const std::string& dn, std::string* errorText) {
    Result resisted;
    const Result removed = entries_.RemoveTree(dn, resisted);
    resisted.AsFlag(errorText);
    lastError_ = LDAP_SUCCESS;
    return AsFlag(removed, errorText);
}

int CLDAPItems::SplitEntryName(const std::string& dn, std::string& name, bool& isFolder,
                               FileExtension extension) const {
    std::optional<EntryName> entry = schema_.SplitEntryName(dn, extension);
    name = entry ? std::move(entry->name) : std::string();
    isFolder = entry && entry->isFolder;
    return entry ? 1 : 0;
}

int CLDAPItems::ReadFileContents(const std::string& dn, FileBuffer& buffer,
                                 const char* attributeName) {
    return AsFlag(entries_.Read(dn, buffer, attributeName), nullptr);
}

int CLDAPItems::EnsureFolderPath(const std::string& dn, bool connect, std::string* errorText,
                                 LdapItemList* added) {
    if (dn.empty()) return 0;
    if (connect && !IsConnected() && AsFlag(connection_.PromptAndConnect(), errorText) == 0) {
        return 0;
    }
    LdapItemList own;
    LdapItemList& list = added ? *added : own;
    const std::size_t before = list.Count();
    const Result ensured = entries_.EnsureFolders(dn, list);
    // Kept: also a connection that was there before is not kept.
    if (connect) Close();
    return AsFlagOfFolders(ensured, list.Count() > before, errorText);
}

int CLDAPItems::AsFlag(const Result& result, std::string* errorText) {
    if (!result) lastError_ = result.Why().code;
    return result.AsFlag(errorText);
}

int CLDAPItems::AsFlagOfFolders(const Result& result, bool addedAny, std::string* errorText) {
    if (addedAny) lastError_ = LDAP_SUCCESS;
    return AsFlag(result, errorText);
}

}  // namespace depot
