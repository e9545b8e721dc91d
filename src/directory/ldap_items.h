// Access to one directory location under the names by which its operations are described.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/depot_path.h"
#include "directory/entry_store.h"
#include "directory/ldap_connection.h"
#include "directory/location_schema.h"
#include "platform/not_copied.h"

namespace depot {

// The directory access object of one location: its connection, its schema and its entries. Borrows
// the location's record, or owns a default one when it is given none. Used by one thread at a time.
//
// The operations are those of the parts. Unless stated otherwise one returns 1 or 0 and leaves the
// code of a failed directory call as the last error; an `errorText`, where one is given, receives
// the message.
class CLDAPItems : NotCopied {
public:
    explicit CLDAPItems(CDepotPath* location);
    // Unbinds every handle and closes the last view of the shared block.
    ~CLDAPItems();

    LdapConnection& Connection() { return connection_; }
    const LocationSchema& Schema() const { return schema_; }
    EntryStore& Entries() { return entries_; }

    int Connect(const std::string& host, const std::string& password, const std::string& userName,
                std::string* errorText);
    int ConnectLocation(std::string* errorText);
    int ConnectQuietly();
    int Close() { return connection_.Close() ? 1 : 0; }

    // Stores the code as the last error and, unless it is LDAP_SUCCESS, hands out its text and
    // shows it.
    void ReportError(std::uint32_t code, std::string* errorText = nullptr);
    // The message for the last error that any process saw at this server, else for this object's.
    std::string ErrorText() { return connection_.Text(lastError_); }

    std::string GetHost() const { return location_.host; }

    // Contract: nothing here calls these.
    //
    // Always returns 0.
    int Disconnect();
    int PromptAndConnect(std::string* errorText);
    int PromptForCredentials() { return connection_.PromptForCredentials() ? 1 : 0; }
    void SetUserName(const std::string& userName) { connection_.Shared().SetUserName(userName); }
    void SetPassword(const std::string& password) { connection_.Shared().SetPassword(password); }
    std::string GetSharedUserName() { return connection_.Shared().SharedUserName(); }
    std::string GetSharedPassword() { return connection_.Shared().SharedPassword(); }
    std::string GetUserName() const { return location_.username; }
    std::string GetPassword() const { return location_.password; }

    int ListChildren(const std::string& baseDN, LdapItemList& items,
                     const std::string& localBase = {});
    int AddFolderEntry(const std::string& dn, const std::string& name, std::string* errorText);
    // These two return the directory's code.
    std::uint32_t AddFileEntry(const std::string& dn, const std::string& name, const void* data,
                               std::uint32_t length);
    std::uint32_t ReplaceFileContents(const std::string& dn, const void* data,
                                      std::uint32_t length);
    int RenameEntry(const std::string& oldDN, const std::string& newDN, std::string* errorText);
    int DeleteTree(const std::string& dn, std::string* errorText);
    std::string PathToDN(const std::string& path) const { return schema_.PathToDN(path); }
    // Returns 0 for another kind of entry.
    int SplitEntryName(const std::string& dn, std::string& name, bool& isFolder,
                       FileExtension extension = FileExtension::kKeep) const;
    int ReadFileContents(const std::string& dn, FileBuffer& buffer,
                         const char* attributeName = nullptr);
    // With `connect` the object connects first and is not connected afterwards. `added`, which may
    // be null, receives the folders that were added.
    int EnsureFolderPath(const std::string& dn, bool connect, std::string* errorText,
                         LdapItemList* added = nullptr);

    CDepotPath& Location() const { return location_; }
    bool IsBound() const { return connection_.IsBound(); }
    bool IsConnected() const { return connection_.IsConnected(); }
    bool IsUsable() const { return connection_.IsUsable(); }
    std::uint32_t LastError() const { return lastError_; }
    void SetLastError(std::uint32_t code) { lastError_ = code; }
    TreeBounds& Bounds() { return entries_.Bounds(); }
    DirectoryClient& Client() { return connection_.Client(); }
    // Returns the result as 1 or 0; a failure becomes the last error.
    int AsFlag(const Result& result, std::string* errorText);

private:
    // Returns the result's code, which becomes the last error.
    std::uint32_t AsCode(const Result& result) { return lastError_ = CodeOf(result); }
    // AsFlag for an operation that may have added folders: adding the last one left no error.
    int AsFlagOfFolders(const Result& result, bool addedAny, std::string* errorText);

    std::unique_ptr<CDepotPath> ownLocation_;  // only when none was given
    CDepotPath& location_;
    LdapConnection connection_;
    LocationSchema schema_;
    EntryStore entries_;
    std::uint32_t lastError_ = 0;
};

}  // namespace depot
