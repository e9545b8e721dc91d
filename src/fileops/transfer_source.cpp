#include "fileops/transfer_source.h"

#include <cstring>

#include "directory/comparable_dn.h"
#include "platform/text.h"

namespace depot {
namespace {

// By which servers tell entries apart whatever becomes of their names.
constexpr char kEntryIdentifier[] = "entryUUID";

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

std::string Identifier(CLDAPItems& directory, const std::string& dn) {
    FileBuffer value;
    if (directory.ReadFileContents(dn, value, kEntryIdentifier) == 0 || !value.bytes) return {};
    return std::string(reinterpret_cast<const char*>(value.bytes.get()), value.length);
}

}  // namespace

std::uint32_t RefuseChildren(CLDAPItems& directory, const std::string& dn) {
    LdapItemList children;
    const std::uint32_t code = List(directory, dn, children);
    if (code != LDAP_SUCCESS) return code;
    return children.Count() == 0 ? LDAP_SUCCESS : LDAP_NOT_ALLOWED_ON_NONLEAF;
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

bool IsSameDirectory(CLDAPItems& one, CLDAPItems& other, const std::string& dn) {
    if (IsSameServer(one, other)) return true;
    const std::string identifier = Identifier(one, dn);
    return !identifier.empty() && identifier == Identifier(other, dn);
}

}  // namespace depot
