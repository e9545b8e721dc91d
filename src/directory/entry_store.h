// The entries of one directory location and their contents.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "directory/ldap_connection.h"
#include "directory/ldap_item.h"
#include "directory/location_schema.h"
#include "directory/paged_search.h"
#include "directory/tree_bounds.h"
#include "platform/digest.h"
#include "platform/not_copied.h"
#include "platform/result.h"

namespace depot {

// A file's bytes on their way between an entry and a local file, in a block with room for
// kFileBufferReserve bytes more. Without bytes the pointer is null.
struct FileBuffer {
    std::uint32_t length = 0;
    std::unique_ptr<std::uint8_t[]> bytes;
};
inline constexpr std::uint32_t kFileBufferReserve = 4;

// Returns a buffer with a copy of the bytes, or of the characters.
template <class Bytes>
FileBuffer BufferOf(const Bytes& bytes) {
    FileBuffer buffer = {static_cast<std::uint32_t>(bytes.size()),
                         std::make_unique<std::uint8_t[]>(bytes.size() + kFileBufferReserve)};
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.get());
    return buffer;
}

inline Digest DigestOf(const FileBuffer& buffer) {
    return DigestOf(buffer.bytes.get(), buffer.length);
}

// What an entry is by its object classes; anything that is neither a folder nor a file of the
// location's schema is another entry.
enum class EntryKind { kOther, kFolder, kFile };

// Servers limit the size of a request, and a condition carries all bytes that it is about.
inline constexpr std::uint32_t kLargestCondition = 1024 * 1024;

// The identifiers by which servers know entries whatever becomes of their names, in the order
// of kIdentifierAttributes; empty where the server shows none.
using EntryIdentifiers = std::array<std::string, 3>;
inline constexpr const char* kIdentifierAttributes[] = {"entryUUID", "objectGUID", "nsUniqueId"};

// Parts of work on several entries whose requests are under way together. Each names its entry and
// receives its own result.
struct ContentsRead {
    std::string dn;
    FileBuffer contents{};
    Result result{};
};
struct KindLookup {
    std::string dn;
    std::string name{};    // by which it is to be known; may be empty
    bool isOther = false;  // it shows its name, and that is another one
    EntryKind kind = EntryKind::kOther;
    Result result{};
};
struct FolderListing {
    std::string dn;
    LdapItemList items{};
    std::uint32_t unsafeNames = 0;
    Result result{};
};
struct FolderAddition {
    std::string dn;
    std::string name;
    bool isThere = false;  // and was before
    Result result{};
};
struct ContentsWrite {
    std::string dn;
    std::string name;                      // for an entry that is added
    const FileBuffer* contents = nullptr;  // never owned
    Result result{};
};
struct ConditionalWrite {
    std::string dn;
    std::span<const std::uint8_t> contents{};  // never owned
    Digest fetched{};                          // what the entry has to hold still
    bool isStored = false;                     // else it is to be stored, or not, by itself
};
struct Removal {
    std::string dn;
    std::optional<Digest> contents{};  // for a file that is deleted only while it holds these
    Result result{};
};

// Finds, lists, reads and changes entries. Borrows the connection and the schema.
//
// A failure carries the directory's code and its text; without a connection, and without the client
// library or an entry point, the code is LDAP_SERVER_DOWN.
class EntryStore : NotCopied {
public:
    EntryStore(LdapConnection& connection, const LocationSchema& schema)
        : connection_(connection), schema_(schema) {}

    // Lists the children of a folder into `items`, which is emptied first; each child's path is its
    // DN or, with a `localBase`, that folder's path joined with the child's name. What has a name
    // that narrow texts do not hold exactly is left out and counted; with a `localBase` so are
    // names that cannot be local names.
    //
    // A listing above the server's size limit is repeated in pages where the server offers that;
    // otherwise it fails with LDAP_SIZELIMIT_EXCEEDED, and so does one that passes the bounds on
    // trees. A listing that fails leaves `items` empty.
    Result List(const std::string& baseDN, LdapItemList& items, const std::string& localBase = {});
    // How many children the last listing left out.
    std::uint32_t UnsafeNames() const { return unsafeNames_; }

    // Asks whether the entry exists. An entry that is missing has no text: it is an answer. A
    // search that succeeds without an entry has found none, here and below.
    Result Find(const std::string& dn);

    // Asks what the entry is, as Find does. Of an entry that is both a folder and a file, or whose
    // classes cannot be seen, nothing is known.
    Result FindKind(const std::string& dn, EntryKind& kind);
    // Asks the same, and whether the entry is known by the name looked for: a server finds it also
    // by other names that it takes for its own.
    void FindKind(KindLookup& lookup);

    // Reads the identifiers of an entry, as Find does.
    Result ReadIdentifiers(const std::string& dn, EntryIdentifiers& identifiers);

    // Reads the contents of the file entry, or the named attribute. An entry that could be searched
    // and has no such value leaves `buffer` empty, and so does a search without an entry.
    Result Read(const std::string& dn, FileBuffer& buffer, const char* attributeName = nullptr);

    // Reads the contents of the file entry, and fails as Unseen says where it shows none.
    Result ReadSeen(const std::string& dn, FileBuffer& buffer);
    // The failure of a file entry that shows no contents. Files always have some, so that they are
    // hidden from the user and not empty: nothing is made of them, and nothing replaces them.
    static Error Unseen();

    // Adds a folder entry; one that exists is left as it is, and `added` is false.
    Result AddFolder(const std::string& dn, const std::string& name, bool& added);
    // The same without looking first; fails for one that exists.
    Result AddNewFolder(const std::string& dn, const std::string& name);

    // Add a file entry and replace a file entry's contents. A server that ends the connection over
    // more than kLargeContents bytes, and then answers again, has refused them:
    // LDAP_ADMIN_LIMIT_EXCEEDED.
    //
    // Kept: a file without bytes is stored as a single blank.
    // Relied on by: existing directories, in which an attribute value cannot be empty.
    Result AddFile(const std::string& dn, const std::string& name, const void* data,
                   std::uint32_t length);
    Result Replace(const std::string& dn, const void* data, std::uint32_t length);

    // Replaces the contents only while they are what `present` says, with kContentsChanged as the
    // code when they are not. The server tests and replaces in one request, by the assertion
    // control where it offers that, else by a modification that deletes `present` itself. Above
    // kLargestCondition bytes (of both versions, without the control) the caller, who has just read
    // `present`, has tested, and whatever is stored in between is replaced.
    // LDAP_UNAVAILABLE_CRIT_EXTENSION is the code where the server cannot compare.
    Result ReplaceUnchanged(const std::string& dn, const void* data, std::uint32_t length,
                            const FileBuffer& present);

    // Renames an entry, or moves it when the parent differs.
    Result Rename(const std::string& oldDN, const std::string& newDN);

    // Deletes an entry that holds no others.
    Result Remove(const std::string& dn);

    // Deletes a file entry only while its contents are what `present` says, with kContentsChanged
    // as the code when they are not. The server tests and deletes in one request when it offers to;
    // else this looks just before. Contents that the user may not see do not differ.
    Result RemoveUnchanged(const std::string& dn, const FileBuffer& present);
    // The same for contents of which only the digest is known. The entry is read first; contents
    // that the user may not see differ.
    Result RemoveUnchanged(const std::string& dn, const Digest& contents);

    // Deletes an entry with everything below it; done when the entry itself is deleted. Entries
    // that resist stay, with the folders above them, and all others are deleted, until a bound on
    // trees is passed. `resisted` receives the failure of the last file of the entry itself that
    // stays.
    Result RemoveTree(const std::string& dn, Result& resisted);

    // Makes sure that every folder above `dn`, and `dn` itself when it names a folder, exists. The
    // folders that were added, also by a call that failed later, are appended to `added`, the
    // uppermost first.
    Result EnsureFolders(const std::string& dn, LdapItemList& added);

    // The same for every folder above `dn`, whatever `dn` itself looks like.
    Result EnsureFoldersAbove(const std::string& dn, LdapItemList& added);

    // The same work on several entries at once, as if each was done by itself: all requests are
    // sent before the first answer is awaited, at most Window() of them. The server may do the
    // work in any order. Where it takes one request at a time, they are sent one after another.
    void ReadTogether(std::span<ContentsRead> reads);
    void FindKindsTogether(std::span<KindLookup> lookups);
    // A listing above a limit of the server is repeated by itself, as List does.
    void ListTogether(std::span<FolderListing> listings);
    void AddFoldersTogether(std::span<FolderAddition> folders);
    void AddFilesTogether(std::span<ContentsWrite> files);
    void ReplaceTogether(std::span<ContentsWrite> files);
    void RemoveTogether(std::span<Removal> removals);
    // Replaces the contents of those entries that hold what was fetched, as far as the server tests
    // that itself. Whatever else becomes of an entry, by itself it shows.
    void ReplaceUnchangedTogether(std::span<ConditionalWrite> writes);

    // How many requests are sent together at first; 1 where server or client take no more. Work on
    // more entries than that goes on with twice as many each time, as the server has taken them.
    std::size_t Window() const;
    static constexpr std::size_t kWindow = 32;
    static constexpr std::size_t kWidestWindow = 128;

    LdapConnection& Connection() const { return connection_; }
    const LocationSchema& Schema() const { return schema_; }
    // How much of a tree each operation looks at.
    TreeBounds& Bounds() { return bounds_; }

private:
    struct Listing;
    class TreeDeletion;

    // How the requests of one kind are sent, answered, and made one by one.
    template <class Send, class Take, class Alone>
    void Together(std::size_t count, const Send& send, const Take& take, const Alone& alone);

    const DirectoryClient& Client() const { return connection_.Client(); }
    LDAP* Handle() const { return connection_.Handle(); }

    // These return the directory's code.
    std::uint32_t Search(const std::string& base, ULONG scope,
                         const std::vector<std::string>& attributes, UniqueLdapMessage& result);
    std::uint32_t SearchOnce(const std::string& base, ULONG scope,
                             const std::vector<std::string>& attributes, UniqueLdapMessage& result);
    // Makes sure that a connection which was kept for long is there before anything is changed
    // that cannot be changed twice.
    std::uint32_t Prove();
    // Returns why nothing can be changed; nothing where it can.
    std::optional<std::uint32_t> Unusable();
    std::uint32_t FindCode(const std::string& dn);
    // Whether what a successful search has found is an entry.
    std::uint32_t FoundCode(LDAPMessage* result) const;
    std::vector<std::string> KindAttributes(const KindLookup& lookup) const;
    Result TakeKind(std::uint32_t code, LDAPMessage* result, KindLookup& lookup);
    bool IsNamedOtherwise(LDAPMessage* entry, const std::string& name) const;
    Listing ListingOf(const std::string& baseDN, const std::string& localBase,
                      LdapItemList& items) const;
    std::uint32_t ListCode(const Listing& listing);
    std::uint32_t ListInPages(const Listing& listing);
    std::uint32_t AddChildren(LDAPMessage* result, const Listing& listing);
    // What a search is that succeeds without an entry.
    enum class WithoutEntry : std::uint8_t { kIsMissing, kIsEmpty };
    std::uint32_t ReadCode(const std::string& dn, FileBuffer& buffer, const std::string& wanted,
                           WithoutEntry none = WithoutEntry::kIsMissing);
    // Whether the client has all that lists and reads what a search has found.
    bool CanRead() const;
    std::uint32_t TakeContents(LDAPMessage* result, const std::string& dn,
                               const std::string& wanted, FileBuffer& buffer) const;
    void RemoveUnchangedTogether(std::span<Removal*> removals);
    std::uint32_t ReadUnchanged(const std::string& dn, const Digest& contents, FileBuffer& present);
    std::uint32_t AddNewFolderCode(const std::string& dn, const std::string& name);
    std::uint32_t AddFolderCode(const std::string& dn, const std::string& name, bool& added);
    std::uint32_t ExchangeCode(const std::string& dn, const void* data, std::uint32_t length,
                               const FileBuffer& present);
    std::uint32_t RemoveCode(const std::string& dn);
    std::uint32_t RemoveUnchangedCode(const std::string& dn, const FileBuffer& present);
    std::uint32_t RemoveUnchangedCode(const std::string& dn, const Digest& contents);
    std::optional<std::uint32_t> RemoveOnCondition(const std::string& dn,
                                                   const FileBuffer& present);
    std::uint32_t EnsureCode(const std::vector<std::string>& components, std::size_t first,
                             LdapItemList& added);
    std::uint32_t AddFolders(const LdapItemList& missing, LdapItemList& added);

    static bool IsOfALostConnection(std::uint32_t code);

    // The same as the connection's, but without a text for an entry that is missing.
    Result Answer(std::uint32_t code);
    // The same as the connection's, but in words for a name, or for so many bytes of it, that the
    // server may be refusing for its length.
    Result NamedOutcome(std::uint32_t code, const std::string& name);
    Result StoredOutcome(std::uint32_t code, const std::string& name, std::uint32_t length);
    std::string NameOf(const std::string& dn) const;

    // Returns false when the client had no memory to say what the entry is.
    bool AddChild(LDAPMessage* entry, const Listing& listing);
    void TraceLeftOutEntry(LDAPMessage* entry, const Listing& listing, const char* reason) const;
    LDAPMessage* EntryNamed(LDAPMessage* result, const std::string& dn) const;
    bool HasValue(LDAPMessage* entry, const char* attribute, const char* wanted) const;
    bool OffersAssertions();

    LdapConnection& connection_;
    const LocationSchema& schema_;
    bool takesOneAtATime_ = false;  // as the server has shown
    std::uint32_t unsafeNames_ = 0;
    TreeBounds bounds_;
    std::optional<bool> offersAssertions_;  // once the server was asked
};

}  // namespace depot
