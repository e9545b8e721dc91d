#include "fileops/transfer_source.h"

#include "directory/comparable_dn.h"
#include "platform/text.h"

namespace depot {
namespace {

std::uint32_t Read(CLDAPItems& directory, const std::string& dn, FileBuffer& contents) {
    const bool found = directory.ReadFileContents(dn, contents) != 0;
    return found ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
}

std::uint32_t List(CLDAPItems& directory, const std::string& dn, LdapItemList& children) {
    const bool listed = directory.ListChildren(dn, children) != 0;
    return listed ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
}

std::string Comparable(const CLDAPItems& directory, const std::string& dn) {
    return ComparableDN(directory.NormalDN(dn));
}

// An entry that showed neither bytes nor children: only its class tells what it is.
std::uint32_t ReadByClass(CLDAPItems& directory, const std::string& dn, SourceFate fate,
                          SourceEntry& source) {
    EntryKind kind = EntryKind::kOther;
    std::uint32_t code = directory.FindKind(dn, kind);
    if (code != LDAP_SUCCESS) return code;
    if (kind == EntryKind::kOther) {
        source.isFolder = LooksLikeFolder(directory, dn);
        return fate == SourceFate::kGoes ? LDAP_OBJECT_CLASS_VIOLATION : LDAP_SUCCESS;
    }
    source.isFolder = kind == EntryKind::kFolder;
    if (source.isFolder) return LDAP_SUCCESS;
    code = Read(directory, dn, source.contents);
    if (code != LDAP_SUCCESS || source.contents.bytes) return code;
    return fate == SourceFate::kGoes ? LDAP_NO_SUCH_ATTRIBUTE : LDAP_SUCCESS;
}

}  // namespace

std::uint32_t RefuseChildren(CLDAPItems& directory, const std::string& dn) {
    LdapItemList children;
    const std::uint32_t code = List(directory, dn, children);
    if (code != LDAP_SUCCESS) return code;
    const bool isLeaf = children.Count() == 0 && directory.UnsafeNames() == 0;
    return isLeaf ? LDAP_SUCCESS : LDAP_NOT_ALLOWED_ON_NONLEAF;
}

std::uint32_t RefuseFile(CLDAPItems& directory, const std::string& dn) {
    EntryKind kind = EntryKind::kOther;
    const std::uint32_t code = directory.FindKind(dn, kind);
    if (code != LDAP_SUCCESS) return code;
    const bool isFile = kind == EntryKind::kFile;
    return isFile ? std::uint32_t{LDAP_NOT_ALLOWED_ON_NONLEAF} : std::uint32_t{LDAP_SUCCESS};
}

bool LooksLikeFolder(CLDAPItems& directory, const std::string& dn) {
    std::string name;
    bool isFolder = false;
    return directory.SplitEntryName(dn, name, isFolder) == 0 || isFolder;
}

std::uint32_t ReadSource(CLDAPItems& directory, const std::string& dn, SourceFate fate,
                         SourceEntry& source) {
    if (!LooksLikeFolder(directory, dn)) {
        const std::uint32_t code = Read(directory, dn, source.contents);
        if (code != LDAP_SUCCESS) return code;
        if (source.contents.bytes) {
            return fate == SourceFate::kGoes ? RefuseChildren(directory, dn) : code;
        }
    }
    const std::uint32_t code = List(directory, dn, source.children);
    if (code != LDAP_SUCCESS) return code;
    if (source.children.Count() == 0) return ReadByClass(directory, dn, fate, source);
    source.isFolder = true;
    return fate == SourceFate::kGoes ? RefuseFile(directory, dn) : std::uint32_t{LDAP_SUCCESS};
}

bool IsSameEntry(const CLDAPItems& directory, const std::string& dn, const std::string& other) {
    return Comparable(directory, dn) == Comparable(directory, other);
}

bool IsBelowEntry(const CLDAPItems& directory, const std::string& dn, const std::string& folder) {
    return Comparable(directory, dn).ends_with("," + Comparable(directory, folder));
}

bool IsSameServer(const CLDAPItems& one, const CLDAPItems& other) {
    return &one == &other || (EqualsNoCase(one.GetHost(), other.GetHost()) &&
                              one.Location().port == other.Location().port);
}

EntryIdentity CompareEntry(CLDAPItems& one, CLDAPItems& other, const std::string& dn) {
    if (IsSameServer(one, other)) return EntryIdentity::kSame;
    EntryIdentifiers first, second;
    if (one.ReadIdentifiers(dn, first) != LDAP_SUCCESS) return EntryIdentity::kUnknown;
    const std::uint32_t code = other.ReadIdentifiers(dn, second);
    if (code == LDAP_NO_SUCH_OBJECT) return EntryIdentity::kUnseen;
    if (code != LDAP_SUCCESS) return EntryIdentity::kUnknown;
    for (std::size_t index = 0; index < first.size(); ++index) {
        if (first[index].empty() || second[index].empty()) continue;
        return first[index] == second[index] ? EntryIdentity::kSame : EntryIdentity::kOther;
    }
    return EntryIdentity::kUnknown;
}

bool IsSameDirectory(CLDAPItems& one, CLDAPItems& other, const std::string& dn, SourceFate fate) {
    const EntryIdentity identity = CompareEntry(one, other, dn);
    return identity == EntryIdentity::kSame ||
           (identity == EntryIdentity::kUnknown && fate == SourceFate::kGoes);
}

}  // namespace depot
