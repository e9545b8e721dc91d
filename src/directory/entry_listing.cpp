// Listing the children of a folder entry.
#include <chrono>
#include <string_view>
#include <utility>

#include "directory/client_support.h"
#include "directory/entry_batches.h"
#include "directory/entry_store.h"
#include "platform/local_name.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr char kObjectClass[] = "objectClass";

// What is known so far of a child whose attributes are being read.
struct ChildFacts {
    std::string folderName;
    std::string fileName;
    bool isFolder = false;
    bool isFile = false;
    bool showsClass = false;
    // Whether narrow texts cannot hold its name of the kind.
    bool isUnsafeFolderName = false;
    bool isUnsafeFileName = false;
    bool complete = true;  // whether the client had the memory to hand out all there is

    bool IsUnsafe() const {
        return (isFolder && isUnsafeFolderName) || (isFile && isUnsafeFileName);
    }
    bool IsNamedFolder() const { return isFolder && !folderName.empty() && !IsUnsafe(); }
    bool IsNamedFile() const { return isFile && !fileName.empty() && !IsUnsafe(); }
};

// The names by which a location's folders and files are known.
struct ChildNames {
    NamingAttributes naming;
    std::string folderClass;
    std::string fileClass;

    void Note(const char* attribute, std::string_view value, ChildFacts& facts) const {
        if (EqualsNoCase(attribute, naming.folder)) {
            facts.folderName = Name(value, facts.isUnsafeFolderName);
            if (!naming.AreTheSame()) return;
            facts.fileName = facts.folderName;
            facts.isUnsafeFileName = facts.isUnsafeFolderName;
        } else if (EqualsNoCase(attribute, naming.file)) {
            facts.fileName = Name(value, facts.isUnsafeFileName);
        } else if (EqualsNoCase(attribute, kObjectClass)) {
            facts.showsClass = true;
            facts.isFolder = facts.isFolder || EqualsNoCase(value, folderClass);
            facts.isFile = facts.isFile || EqualsNoCase(value, fileClass);
        }
    }

private:
    // The client would replace what the code page cannot hold by the name of another entry.
    static std::string Name(std::string_view utf8, bool& isUnsafe) {
        const bool hasNul = utf8.find('\0') != std::string_view::npos;
        std::optional<std::string> name = hasNul ? std::nullopt : ExactAnsiFromUtf8(utf8);
        if (!name) isUnsafe = true;
        return std::move(name).value_or(std::string());
    }
};

// Reads values only until the child is known to be a named folder or a named file: the order in
// which a server returns them does not matter.
ChildFacts ReadFacts(AttributeWalk& walk, const ChildNames& names) {
    ChildFacts facts;
    for (; walk.Name(); walk.Next()) {
        const UniqueLdapBytes values = walk.Bytes();
        if (!values) facts.complete = facts.complete && !walk.RanOut();
        for (berval** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            names.Note(walk.Name(), {(*value)->bv_val, (*value)->bv_len}, facts);
            if (facts.IsNamedFolder() || facts.IsNamedFile()) return facts;
        }
    }
    facts.complete = facts.complete && !walk.RanOut();
    return facts;
}

}  // namespace

// One listing: what it looks for and what receives its finds.
struct EntryStore::Listing {
    const std::string& baseDN;
    const std::string& localBase;
    ChildNames names;
    LdapItemList& items;

    // Contents stay where they are: they would be most of what a folder sends.
    std::vector<std::string> Attributes() const {
        std::vector<std::string> wanted = {names.naming.folder, kObjectClass};
        if (!names.naming.AreTheSame()) wanted.push_back(names.naming.file);
        return wanted;
    }
};

Result EntryStore::List(const std::string& baseDN, LdapItemList& items,
                        const std::string& localBase) {
    items.Clear();
    unsafeNames_ = 0;
    const std::uint32_t code = ListCode(ListingOf(baseDN, localBase, items));
    if (code != LDAP_SUCCESS) {
        // Half a listing would be taken for a whole one.
        items.Clear();
        unsafeNames_ = 0;
    }
    return connection_.Outcome(code);
}

EntryStore::Listing EntryStore::ListingOf(const std::string& baseDN, const std::string& localBase,
                                          LdapItemList& items) const {
    return {baseDN,
            localBase,
            {schema_.NamingNames(), schema_.FolderClass(), schema_.FileClass()},
            items};
}

void EntryStore::ListTogether(std::span<FolderListing> listings) {
    const auto alone = [&](std::size_t index) {
        FolderListing& folder = listings[index];
        folder.result = List(folder.dn, folder.items);
        folder.unsafeNames = unsafeNames_;
    };
    const std::vector<std::string> attributes =
        ListingOf({}, {}, listings.front().items).Attributes();
    std::vector<std::size_t> limited;
    Together(
        listings.size(),
        [&](RequestBatch& batch, std::size_t index) {
            batch.Search(listings[index].dn, LDAP_SCOPE_ONELEVEL, attributes);
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage* found) {
            FolderListing& folder = listings[index];
            unsafeNames_ = 0;
            if (code == LDAP_SUCCESS) {
                code = AddChildren(found, ListingOf(folder.dn, {}, folder.items));
            }
            if (code == LDAP_SIZELIMIT_EXCEEDED) limited.push_back(index);
            if (code != LDAP_SUCCESS) folder.items.Clear();
            folder.unsafeNames = code == LDAP_SUCCESS ? unsafeNames_ : 0;
            folder.result = connection_.Outcome(code);
        },
        alone);
    for (const std::size_t index : limited) alone(index);
}

std::uint32_t EntryStore::ListCode(const Listing& listing) {
    if (!CanRead()) return LDAP_SERVER_DOWN;
    UniqueLdapMessage result;
    std::uint32_t code = Search(listing.baseDN, LDAP_SCOPE_ONELEVEL, listing.Attributes(), result);
    if (code == LDAP_SUCCESS) code = AddChildren(result.get(), listing);
    return code == LDAP_SIZELIMIT_EXCEEDED ? ListInPages(listing) : code;
}

std::uint32_t EntryStore::ListInPages(const Listing& listing) {
    PagedSearch pages(Client(), connection_.Paging(), Handle());
    if (!pages.IsOffered()) return LDAP_SIZELIMIT_EXCEEDED;
    const ListingSearch search = {listing.baseDN, kAnyEntry, listing.Attributes()};
    const auto end = std::chrono::steady_clock::now() + bounds_.listingTime;
    do {
        UniqueLdapMessage page;
        std::uint32_t code = pages.Next(search, page);
        if (code == LDAP_SUCCESS) code = AddChildren(page.get(), listing);
        if (code != LDAP_SUCCESS) return code;
        if (listing.items.Count() > bounds_.entries) return LDAP_SIZELIMIT_EXCEEDED;
        if (std::chrono::steady_clock::now() > end) return LDAP_TIMELIMIT_EXCEEDED;
    } while (pages.HasMore());
    return LDAP_SUCCESS;
}

std::uint32_t EntryStore::AddChildren(LDAPMessage* result, const Listing& listing) {
    ULONG seen = 0;
    bool complete = true;
    for (LDAPMessage* entry = Client().ldap_first_entry(Handle(), result); entry != nullptr;
         entry = Client().ldap_next_entry(Handle(), entry)) {
        ++seen;
        complete = AddChild(entry, listing) && complete;
    }
    const bool all = complete && seen >= Client().ldap_count_entries(Handle(), result);
    return all ? LDAP_SUCCESS : LDAP_NO_MEMORY;
}

void EntryStore::TraceLeftOutEntry(LDAPMessage* entry, const Listing& listing,
                                   const char* reason) const {
    if (!IsTracing() || IsMissing(Client().ldap_get_dn)) return;
    const UniqueLdapText dn(Client().ldap_get_dn(Handle(), entry), {&Client()});
    TraceLeftOut(listing.baseDN, dn ? dn.get() : "", reason);
}

bool EntryStore::AddChild(LDAPMessage* entry, const Listing& listing) {
    AttributeWalk walk(Client(), Handle(), entry);
    const ChildFacts facts = ReadFacts(walk, listing.names);
    if (facts.IsUnsafe()) {
        ++unsafeNames_;
        TraceLeftOutEntry(entry, listing, "a name that the code page cannot hold");
        return true;
    }
    const bool isFolder = facts.IsNamedFolder();
    if (!isFolder && !facts.IsNamedFile()) {
        TraceLeftOutEntry(
            entry, listing,
            facts.showsClass ? "neither a folder nor a file" : "its class may not be read");
        return facts.complete;
    }
    const std::string& name = isFolder ? facts.folderName : facts.fileName;
    if (listing.localBase.empty()) {
        const NamingAttributes& naming = listing.names.naming;
        const std::string& attribute = isFolder ? naming.folder : naming.file;
        listing.items.Add(EntryDN(attribute, name, listing.baseDN), isFolder);
    } else if (IsSafeForeignName(name)) {
        listing.items.Add(listing.localBase + "\\" + name, isFolder);
    } else {
        ++unsafeNames_;
    }
    return true;
}

}  // namespace depot
