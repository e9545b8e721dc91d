// Access to one directory location: its connection, its entries and their contents.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/depot_path.h"
#include "directory/credentials_prompt.h"
#include "directory/dn.h"
#include "directory/ldap_handles.h"
#include "directory/ldap_item.h"
#include "directory/paged_search.h"
#include "directory/tree_bounds.h"
#include "platform/digest.h"
#include "platform/directory_client.h"
#include "platform/directory_info_block.h"

namespace depot {

// A file's bytes on their way between an entry and a local file, in a block with room for
// kFileBufferReserve bytes more. Without bytes the pointer is null.
struct FileBuffer {
    std::uint32_t length = 0;
    std::unique_ptr<std::uint8_t[]> bytes;
};
inline constexpr std::uint32_t kFileBufferReserve = 4;

// What an entry is by its object classes; anything that is neither a folder nor a file of the
// location's schema is another entry.
enum class EntryKind { kOther, kFolder, kFile };

// The directory's code for a change whose condition does not hold.
inline constexpr std::uint32_t kContentsChanged = 122;

// Servers limit the size of a request, and a condition carries all bytes that it is about.
inline constexpr std::uint32_t kLargestCondition = 1024 * 1024;

// The identifiers by which servers tell entries apart whatever becomes of their names, in the order
// of kIdentifierAttributes; empty where the server shows none.
using EntryIdentifiers = std::array<std::string, 3>;
inline constexpr const char* kIdentifierAttributes[] = {"entryUUID", "objectGUID", "nsUniqueId"};

// The default names of a location's schema, for which an empty text in its record stands.
inline constexpr char kDefaultNamingAttribute[] = "CN";
inline constexpr char kDefaultFolderClass[] = "quillonFolder";
inline constexpr char kDefaultFileClass[] = "quillonFileBinary";
inline constexpr char kDefaultContentsAttribute[] = "quillonFileContentsBinary";

// Makes `prompt` the one that every connection asks for credentials from now on; it stays the
// caller's. With null, as at the beginning, nobody can be asked: what would have to be asked fails
// as if prompting were off, which stays as it is for all other processes. Returns the one before.
CredentialsPrompt* InstallCredentialsPrompt(CredentialsPrompt* prompt);

// The directory access object of one location. Borrows the location's record, or owns a default one
// when it is given none; owns its connections. Used by one thread at a time.
//
// Unless stated otherwise an operation returns 1 or 0 and leaves the code of a failed directory
// call as the last error; an `errorText`, where one is given, receives the message. An object that
// is not connected, and a missing client library or entry point, fail with code 81.
class CLDAPItems {
public:
    explicit CLDAPItems(CDepotPath* location);
    // Unbinds every handle and closes the last view of the shared block.
    ~CLDAPItems();
    CLDAPItems(const CLDAPItems&) = delete;
    CLDAPItems& operator=(const CLDAPItems&) = delete;

    // Connects to `host` and binds as the location says. A failure is shown in a message box; after
    // a failed simple bind the user is asked for credentials, until the user gives up. Credentials
    // that failed are not tried again unasked. Any other failure leaves the object unusable for
    // good: each later attempt fails with code 81.
    int Connect(const std::string& host, const std::string& password, const std::string& userName,
                std::string* errorText);

    // The same with the host and the credentials of the location's record.
    int ConnectLocation(std::string* errorText);

    // The same as a probe does it: with what is known of the credentials, asking for nothing. A
    // failure is not shown, is not recorded for other processes, and leaves the object unusable.
    int ConnectQuietly();

    // Gives the connection up and leaves the object unusable. Always returns 0.
    int Disconnect();

    // Ends the connection; the object can connect again. Returns 0 only when the client could not
    // unbind.
    int Close();

    // Forgets the connection and the handles of failed binds without ending them, for a library
    // that is being taken out of the process: ending one takes the network. Returns whether there
    // were any.
    bool LeaveConnections();

    // Asks for credentials, unless they are known and no error is recorded for the server, and
    // connects with them. Returns 0 with code 88 when the user cancels (with a message box) or when
    // there is something to ask while prompting is off for the server (without one).
    int PromptAndConnect(std::string* errorText);

    // Makes sure that user name and password of a simple location are known. Returns 1 to go on,
    // also when nothing had to be asked, and 0 when the user cancelled or nobody can be asked. Only
    // the former empties the record's password and turns prompting for the server off in every
    // process.
    int PromptForCredentials();

    // Stores the code as the last error and, unless it is 0, hands out its text and shows it.
    void ReportError(std::uint32_t code, std::string* errorText = nullptr);

    // The message for the last error that any process saw at this server, else for this object's.
    std::string ErrorText();

    // Store a text in the location's record and, cut to its 260 bytes, in the shared block.
    void SetUserName(const std::string& userName);
    void SetPassword(const std::string& password);
    // Return what is in the shared block; empty when there is none.
    std::string GetSharedUserName();
    std::string GetSharedPassword();

    std::string GetHost() const { return location_->host; }
    std::string GetUserName() const { return location_->username; }
    std::string GetPassword() const { return location_->password; }

    // Lists the children of a folder into `items`, which is emptied first; each child's path is its
    // DN or, with a `localBase`, that folder's path joined with the child's name. What has a name
    // that narrow texts do not hold exactly is left out and counted; with a `localBase` so are
    // names that cannot be local names.
    //
    // A listing above the server's size limit is repeated in pages where the server offers that;
    // otherwise it fails with code 4, and so does one that passes the bounds on trees. A listing
    // that fails leaves `items` empty.
    int ListChildren(const std::string& baseDN, LdapItemList& items,
                     const std::string& localBase = {});
    // How many children the last listing left out.
    std::uint32_t UnsafeNames() const { return unsafeNames_; }

    // Adds a folder entry; an entry that exists is left as it is and counts as success.
    int AddFolderEntry(const std::string& dn, const std::string& name, std::string* errorText);

    // Add a file entry and replace a file entry's contents; both return the directory's code.
    //
    // Kept: a file without bytes is stored as a single blank.
    // Relied on by: existing directories, in which an attribute value cannot be empty.
    std::uint32_t AddFileEntry(const std::string& dn, const std::string& name, const void* data,
                               std::uint32_t length);
    std::uint32_t ReplaceFileContents(const std::string& dn, const void* data,
                                      std::uint32_t length);

    // Replaces the contents only while they are what `present` says, with kContentsChanged as the
    // code when they are not. The server tests and replaces in one request when it offers to and
    // `present` has no more than kLargestCondition bytes; else the caller, who has just read
    // `present`, has tested, and whatever is stored in between is replaced.
    std::uint32_t ReplaceUnchangedContents(const std::string& dn, const void* data,
                                           std::uint32_t length, const FileBuffer& present);

    // Renames an entry, or moves it when the parent differs.
    int RenameEntry(const std::string& oldDN, const std::string& newDN, std::string* errorText);

    // Deletes an entry with everything below it. Returns 1 when the entry itself is gone. Entries
    // that resist stay, with the folders above them, and all others are deleted, until a bound on
    // trees is passed.
    int DeleteTree(const std::string& dn, std::string* errorText);

    // Turns "base DN\folder\file" into the DN of the entry.
    std::string PathToDN(const std::string& path) const;

    // Reads the name and the kind of an entry from its DN. Returns 0 for another kind of entry.
    int SplitEntryName(const std::string& dn, std::string& name, bool& isFolder,
                       FileExtension extension = FileExtension::kKeep);

    // Asks whether the entry exists; returns the directory's code, 0 when it does.
    std::uint32_t FindEntry(const std::string& dn);

    // Asks what the entry is; returns the directory's code. Of an entry that is both a folder and a
    // file, or whose classes cannot be seen, nothing is known.
    std::uint32_t FindKind(const std::string& dn, EntryKind& kind);

    // Reads the identifiers of an entry. Returns the directory's code; LDAP_NO_SUCH_OBJECT for an
    // entry that cannot be seen.
    std::uint32_t ReadIdentifiers(const std::string& dn, EntryIdentifiers& identifiers);

    // Returns the name as it compares: in lower case, and without the blanks that mean nothing.
    std::string NormalDN(const std::string& dn) const;

    // Reads the contents of the file entry, or the named attribute. Returns 1 when the entry could
    // be searched, also when it has no such value: `buffer` is then empty.
    int ReadFileContents(const std::string& dn, FileBuffer& buffer,
                         const char* attributeName = nullptr);

    // Makes sure that every folder above `dn`, and `dn` itself when it names a folder, exists. With
    // `connect` the object connects first and is not connected afterwards. The folders that were
    // added, also by a call that failed later, are appended to `added`, the uppermost first.
    int EnsureFolderPath(const std::string& dn, bool connect, std::string* errorText,
                         LdapItemList* added = nullptr);

    // Makes sure that every folder above `dn` exists, whatever `dn` itself looks like. The folders
    // that were added are appended to `added` as above. REQUIRES: the object is connected.
    int EnsureFoldersAbove(const std::string& dn, std::string* errorText, LdapItemList* added);

    // Deletes an entry that holds no others. Returns the directory's code.
    std::uint32_t RemoveEmptyEntry(const std::string& dn);

    // Deletes a file entry only while its contents are what `present` says, with kContentsChanged
    // as the code when they are not. The server tests and deletes in one request when it offers to;
    // else this looks just before. Contents that the user may not see do not differ.
    std::uint32_t RemoveUnchangedEntry(const std::string& dn, const FileBuffer& present);
    // The same for contents of which only the digest is known. The entry is read first; contents
    // that the user may not see differ.
    std::uint32_t RemoveUnchangedEntry(const std::string& dn, const Digest& contents);

    // The effective names of the location's schema.
    NamingAttributes NamingNames() const;
    std::string FolderClass() const;
    std::string FileClass() const;
    std::string ContentsAttribute() const;

    CDepotPath& Location() const { return *location_; }
    bool IsBound() const { return clientBound_ != 0; }
    bool IsConnected() const { return connected_ != 0; }
    bool IsUsable() const { return usable_ != 0; }
    std::uint32_t LastError() const { return lastError_; }
    void SetLastError(std::uint32_t code) { lastError_ = code; }
    // Stores a failure as the last error and hands out its text, without showing it. Returns 0.
    int Fail(std::uint32_t code, std::string* errorText);
    DirectoryInfoBlock& SharedInfo() { return info_; }
    // How much of a tree each operation looks at.
    TreeBounds& Bounds() { return bounds_; }
    // The entry points through which this object calls the client.
    DirectoryClient& Client() { return client_; }
    // Those for listings in pages, bound on first need.
    PagingClient& Paging();
    // Has this object ask `prompt` and not the installed one.
    void SetPrompt(CredentialsPrompt* prompt) { ownPrompt_ = prompt; }

private:
    enum class PromptResult { kCancelled, kNobodyAsked, kNothingAsked, kConfirmed };
    struct Attempt {
        Credentials credentials;
        bool isUnasked = false;  // follows a failed one without anything having been shown
    };
    enum class FolderAddition { kFailed, kWasThere, kAdded };

    CredentialsPrompt* Prompt() const;
    UniqueLdap Own(LDAP* connection) const { return UniqueLdap(connection, {&client_}); }
    CredentialsPrompt* PromptUnlessOff();
    std::uint32_t OpenConnection(const std::string& host);
    std::uint32_t SetOptions();
    std::uint32_t ReachServer();
    std::uint32_t Secure();
    std::uint32_t Bind(const Credentials& credentials);
    bool BindsWithoutCredentials() const;
    int FinishBind();
    // Returns whether `attempt` holds credentials to go on with.
    bool FindOtherCredentials(Attempt& attempt, std::string* errorText);
    void SetSharedError(std::uint32_t code);
    bool ErrorIsRecorded();
    bool PromptingIsOff();
    void TurnPromptingOff();
    // A null `prompt` stands for nobody who can be asked, a null `failed` for no bind so far.
    PromptResult AskForCredentials(CredentialsPrompt* prompt, const Attempt* failed);
    // The record's credentials, completed by those that processes share.
    Credentials KnownCredentials();
    void KeepInRecord(const Credentials& credentials);
    // The credentials that can be tried without asking, if there are any.
    std::optional<Credentials> UntriedCredentials(const Credentials& known, const Attempt* failed);

    std::uint32_t Search(const std::string& base, ULONG scope,
                         const std::vector<std::string>& attributes, UniqueLdapMessage& result);
    std::uint32_t ListInPages(const ListingSearch& search, const std::string& localBase,
                              LdapItemList& items);
    std::uint32_t AddChildren(LDAPMessage* result, const std::string& baseDN,
                              const std::string& localBase, LdapItemList& items);
    // Returns false when the client had no memory to tell what the entry is.
    bool AddChild(LDAPMessage* entry, const std::string& baseDN, const std::string& localBase,
                  LdapItemList& items);
    LDAPMessage* EntryNamed(LDAPMessage* result, const std::string& dn) const;
    bool HasValue(LDAPMessage* entry, const char* attribute, const char* wanted) const;
    bool OffersAssertions();
    std::uint32_t ReadUnchanged(const std::string& dn, const Digest& contents, FileBuffer& present);
    std::optional<std::uint32_t> RemoveOnCondition(const std::string& dn,
                                                   const FileBuffer& present);
    std::optional<std::vector<std::string>> ExplodeDN(const std::string& dn,
                                                      std::uint32_t& code) const;
    int CreateMissingFolders(const std::string& dn, std::string* errorText, LdapItemList* added);
    bool FindMissingFolders(const std::string& dn, LdapItemList& missing, std::string* errorText);
    bool FindMissingFolders(const std::vector<std::string>& components, std::size_t first,
                            LdapItemList& missing, std::string* errorText);
    int AddFolders(const LdapItemList& missing, std::string* errorText, LdapItemList* added);
    FolderAddition AddFolder(const std::string& dn, const std::string& name,
                             std::string* errorText);

    DirectoryClient client_;
    std::optional<PagingClient> paging_;
    std::uint32_t clientBound_ = 0;
    std::uint32_t connected_ = 0;
    std::string filter_ = "(objectClass=*)";
    std::uint32_t usable_ = 1;
    std::unique_ptr<CDepotPath> ownLocation_;  // only when none was given
    CDepotPath* location_;
    std::uint32_t lastError_ = 0;
    DirectoryInfoBlock info_;
    std::optional<CredentialsPrompt*> ownPrompt_;
    std::uint32_t unsafeNames_ = 0;
    TreeBounds bounds_;
    std::optional<bool> offersAssertions_;  // once the server was asked
    // After the table, through which they are unbound.
    std::vector<UniqueLdap> replacedHandles_;
    UniqueLdap handle_;
};

}  // namespace depot
