// Listing, adding, rewriting, renaming and deleting single entries.
#include <array>
#include <chrono>
#include <cstring>

#include "directory/assertion_control.h"
#include "directory/client_support.h"
#include "directory/ldap_items.h"
#include "platform/text.h"
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

// The names that tell a location's folders from its files.
struct Schema {
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
ChildFacts ReadFacts(AttributeWalk& walk, const Schema& schema) {
    ChildFacts facts;
    for (; walk.Name(); walk.Next()) {
        const UniqueLdapBytes values = walk.Bytes();
        if (!values) facts.complete = facts.complete && !walk.RanOut();
        for (berval** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            schema.Note(walk.Name(), {(*value)->bv_val, (*value)->bv_len}, facts);
            if (facts.IsNamedFolder() || facts.IsNamedFile()) return facts;
        }
    }
    facts.complete = facts.complete && !walk.RanOut();
    return facts;
}

// One text attribute of an entry that is to be added. The client reads it through Get.
class TextAttribute {
public:
    TextAttribute(std::string name, std::string value)
        : name_(std::move(name)), value_(std::move(value)) {}

    LDAPModA* Get() {
        values_[0] = value_.data();
        change_.mod_op = LDAP_MOD_ADD;
        change_.mod_type = name_.data();
        change_.mod_vals.modv_strvals = values_.data();
        return &change_;
    }

private:
    std::string name_;
    std::string value_;
    std::array<char*, 2> values_ = {};
    LDAPModA change_ = {};
};

// The contents of a file, to be added or to replace others. The bytes are copied.
class ContentsAttribute {
public:
    ContentsAttribute(std::string name, const void* data, std::uint32_t length)
        : name_(std::move(name)),
          bytes_(std::make_unique<char[]>(std::size_t{length} + kFileBufferReserve)) {
        // An attribute value cannot be empty.
        bytes_[0] = ' ';
        if (length > 0) std::memcpy(bytes_.get(), data, length);
        value_ = {length > 0 ? length : 1, bytes_.get()};
    }

    LDAPModA* Get(ULONG operation) {
        values_[0] = &value_;
        change_.mod_op = operation | LDAP_MOD_BVALUES;
        change_.mod_type = name_.data();
        change_.mod_vals.modv_bvals = values_.data();
        return &change_;
    }

private:
    std::string name_;
    std::unique_ptr<char[]> bytes_;
    berval value_ = {};
    std::array<berval*, 2> values_ = {};
    LDAPModA change_ = {};
};

}  // namespace

int CLDAPItems::ListChildren(const std::string& baseDN, LdapItemList& items,
                             const std::string& localBase) {
    items.Clear();
    unsafeNames_ = 0;
    if (LacksAny(client_.ldap_first_entry, client_.ldap_next_entry, client_.ldap_first_attribute,
                 client_.ldap_next_attribute, client_.ldap_get_values_len)) {
        return Fail(LDAP_SERVER_DOWN, nullptr);
    }
    // Contents stay where they are: they would be most of what a folder sends.
    const NamingAttributes naming = NamingNames();
    std::vector<std::string> wanted = {naming.folder, kObjectClass};
    if (!naming.AreTheSame()) wanted.push_back(naming.file);
    UniqueLdapMessage result;
    std::uint32_t code = Search(baseDN, LDAP_SCOPE_ONELEVEL, wanted, result);
    if (code == LDAP_SUCCESS) code = AddChildren(result.get(), baseDN, localBase, items);
    if (code == LDAP_SIZELIMIT_EXCEEDED) {
        code = ListInPages({baseDN, filter_, wanted}, localBase, items);
    }
    return code == LDAP_SUCCESS ? 1 : Fail(code, nullptr);
}

PagingClient& CLDAPItems::Paging() {
    if (!paging_) paging_.emplace(client_.library);
    return *paging_;
}

std::uint32_t CLDAPItems::ListInPages(const ListingSearch& search, const std::string& localBase,
                                      LdapItemList& items) {
    PagedSearch pages(client_, Paging(), handle_.get());
    if (!pages.IsOffered()) return LDAP_SIZELIMIT_EXCEEDED;
    const auto end = std::chrono::steady_clock::now() + bounds_.listingTime;
    do {
        UniqueLdapMessage page;
        std::uint32_t code = pages.Next(search, page);
        if (code == LDAP_SUCCESS) code = AddChildren(page.get(), search.base, localBase, items);
        if (code == LDAP_SUCCESS && items.Count() > bounds_.entries) code = LDAP_SIZELIMIT_EXCEEDED;
        if (code == LDAP_SUCCESS && std::chrono::steady_clock::now() > end) {
            code = LDAP_TIMELIMIT_EXCEEDED;
        }
        if (code != LDAP_SUCCESS) {
            items.Clear();
            unsafeNames_ = 0;
            return code;
        }
    } while (pages.HasMore());
    return LDAP_SUCCESS;
}

std::uint32_t CLDAPItems::AddChildren(LDAPMessage* result, const std::string& baseDN,
                                      const std::string& localBase, LdapItemList& items) {
    LDAP* const connection = handle_.get();
    ULONG seen = 0;
    bool complete = true;
    for (LDAPMessage* entry = client_.ldap_first_entry(connection, result); entry != nullptr;
         entry = client_.ldap_next_entry(connection, entry)) {
        ++seen;
        complete = AddChild(entry, baseDN, localBase, items) && complete;
    }
    if (complete && seen >= client_.ldap_count_entries(connection, result)) return LDAP_SUCCESS;
    // Half a listing would be taken for a whole one.
    items.Clear();
    unsafeNames_ = 0;
    return LDAP_NO_MEMORY;
}

bool CLDAPItems::AddChild(LDAPMessage* entry, const std::string& baseDN,
                          const std::string& localBase, LdapItemList& items) {
    const Schema schema = {NamingNames(), FolderClass(), FileClass()};
    AttributeWalk walk(client_, handle_.get(), entry);
    const ChildFacts facts = ReadFacts(walk, schema);
    if (facts.IsUnsafe()) {
        ++unsafeNames_;
        return true;
    }
    const bool isFolder = facts.IsNamedFolder();
    if (!isFolder && !facts.IsNamedFile()) return facts.complete;
    const std::string& name = isFolder ? facts.folderName : facts.fileName;
    if (localBase.empty()) {
        const std::string& attribute = isFolder ? schema.naming.folder : schema.naming.file;
        items.Add(EntryDN(attribute, name, baseDN), isFolder);
    } else if (IsSafeLocalName(name)) {
        items.Add(localBase + "\\" + name, isFolder);
    } else {
        ++unsafeNames_;
    }
    return true;
}

int CLDAPItems::AddFolderEntry(const std::string& dn, const std::string& name,
                               std::string* errorText) {
    return AddFolder(dn, name, errorText) == FolderAddition::kFailed ? 0 : 1;
}

CLDAPItems::FolderAddition CLDAPItems::AddFolder(const std::string& dn, const std::string& name,
                                                 std::string* errorText) {
    const auto fail = [&](std::uint32_t code) {
        Fail(code, errorText);
        return FolderAddition::kFailed;
    };
    const std::uint32_t found = FindEntry(dn);
    if (found == LDAP_INVALID_DN_SYNTAX) return fail(found);
    if (found == LDAP_SUCCESS) return FolderAddition::kWasThere;
    if (!IsConnected()) return fail(LDAP_SERVER_DOWN);
    TextAttribute naming(NamingNames().folder, name);
    TextAttribute objectClass(kObjectClass, FolderClass());
    LDAPModA* attributes[] = {naming.Get(), objectClass.Get(), nullptr};
    lastError_ = client_.ldap_add_s(handle_.get(), ClientText(dn), attributes);
    return lastError_ == LDAP_SUCCESS ? FolderAddition::kAdded : fail(lastError_);
}

std::uint32_t CLDAPItems::AddFileEntry(const std::string& dn, const std::string& name,
                                       const void* data, std::uint32_t length) {
    if (!IsConnected()) return lastError_ = LDAP_SERVER_DOWN;
    TextAttribute naming(NamingNames().file, name);
    TextAttribute objectClass(kObjectClass, FileClass());
    depot::ContentsAttribute contents(ContentsAttribute(), data, length);
    LDAPModA* attributes[] = {naming.Get(), objectClass.Get(), contents.Get(LDAP_MOD_ADD), nullptr};
    return lastError_ = client_.ldap_add_s(handle_.get(), ClientText(dn), attributes);
}

std::uint32_t CLDAPItems::ReplaceFileContents(const std::string& dn, const void* data,
                                              std::uint32_t length) {
    if (!IsConnected()) return lastError_ = LDAP_SERVER_DOWN;
    depot::ContentsAttribute contents(ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    return lastError_ = client_.ldap_modify_s(handle_.get(), ClientText(dn), changes);
}

std::uint32_t CLDAPItems::ReplaceUnchangedContents(const std::string& dn, const void* data,
                                                   std::uint32_t length,
                                                   const FileBuffer& present) {
    if (!IsConnected() || present.length > kLargestCondition || !OffersAssertions())
        return ReplaceFileContents(dn, data, length);
    ContentsAssertion unchanged(ContentsAttribute(), present);
    depot::ContentsAttribute contents(ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    return lastError_ = client_.ldap_modify_ext_s(handle_.get(), ClientText(dn), changes,
                                                  unchanged.Controls(), nullptr);
}

int CLDAPItems::RenameEntry(const std::string& oldDN, const std::string& newDN,
                            std::string* errorText) {
    std::uint32_t code = LDAP_SUCCESS;
    const auto components = ExplodeDN(newDN, code);
    if (!components || components->empty()) {
        return Fail(code == LDAP_SUCCESS ? std::uint32_t{LDAP_INVALID_DN_SYNTAX} : code, errorText);
    }
    if (!IsConnected()) return Fail(LDAP_SERVER_DOWN, errorText);
    constexpr INT kDeleteOldName = 1;
    const std::string parent = JoinComponents(*components, 1);
    lastError_ =
        client_.ldap_rename_ext_s(handle_.get(), ClientText(oldDN), ClientText(components->front()),
                                  ClientText(parent), kDeleteOldName, nullptr, nullptr);
    return lastError_ == LDAP_SUCCESS ? 1 : Fail(lastError_, errorText);
}

std::uint32_t CLDAPItems::RemoveEmptyEntry(const std::string& dn) {
    lastError_ = IsConnected() ? client_.ldap_delete_s(handle_.get(), ClientText(dn))
                               : std::uint32_t{LDAP_SERVER_DOWN};
    return lastError_;
}

}  // namespace depot
