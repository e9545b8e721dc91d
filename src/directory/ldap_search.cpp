// Finding entries, reading contents, and making sure that folders exist.
#include <algorithm>
#include <cstring>

#include "directory/assertion.h"
#include "directory/client_support.h"
#include "directory/ldap_items.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// Asks for no attribute at all.
constexpr char kNoAttributes[] = "1.1";

constexpr char kObjectClass[] = "objectClass";

// What a server says of itself: the entry without a name.
constexpr char kServerEntry[] = "";
constexpr char kOfferedControls[] = "supportedControl";

void CopyValue(const berval& value, FileBuffer& buffer) {
    const std::size_t room = std::size_t{value.bv_len} + kFileBufferReserve;
    buffer.bytes = std::make_unique<std::uint8_t[]>(room);
    std::memcpy(buffer.bytes.get(), value.bv_val, value.bv_len);
    buffer.length = value.bv_len;
}

}  // namespace

std::uint32_t CLDAPItems::Search(const std::string& base, ULONG scope,
                                 const std::vector<std::string>& attributes,
                                 UniqueLdapMessage& result) {
    if (!IsConnected()) return LDAP_SERVER_DOWN;
    std::vector<char*> names;
    names.reserve(attributes.size() + 1);
    for (const std::string& attribute : attributes) names.push_back(ClientText(attribute));
    names.push_back(nullptr);
    LDAPMessage* message = nullptr;
    const std::uint32_t code = client_.ldap_search_s(
        handle_.get(), ClientText(base), scope, ClientText(filter_), names.data(), 0, &message);
    // A refused search has a message, too.
    result = UniqueLdapMessage(message, {&client_});
    return code;
}

std::uint32_t CLDAPItems::FindKind(const std::string& dn, EntryKind& kind) {
    kind = EntryKind::kOther;
    UniqueLdapMessage result;
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {kObjectClass}, result);
    if (code != LDAP_SUCCESS) return code;
    LDAPMessage* const entry = client_.ldap_first_entry(handle_.get(), result.get());
    if (entry == nullptr) return LDAP_SUCCESS;
    const bool isFolder = HasValue(entry, kObjectClass, FolderClass().c_str());
    const bool isFile = HasValue(entry, kObjectClass, FileClass().c_str());
    if (isFolder != isFile) kind = isFolder ? EntryKind::kFolder : EntryKind::kFile;
    return LDAP_SUCCESS;
}

std::string CLDAPItems::NormalDN(const std::string& dn) const {
    std::uint32_t code = LDAP_SUCCESS;
    const auto components = ExplodeDN(dn, code);
    return ToLower(components ? JoinComponents(*components, 0) : dn);
}

std::uint32_t CLDAPItems::FindEntry(const std::string& dn) {
    // The entry alone, without attributes: its subtree would carry every file's contents.
    UniqueLdapMessage result;
    return Search(dn, LDAP_SCOPE_BASE, {kNoAttributes}, result);
}

LDAPMessage* CLDAPItems::EntryNamed(LDAPMessage* result, const std::string& dn) const {
    LDAP* const connection = handle_.get();
    for (LDAPMessage* entry = client_.ldap_first_entry(connection, result); entry != nullptr;
         entry = client_.ldap_next_entry(connection, entry)) {
        const UniqueLdapText name(client_.ldap_get_dn(connection, entry), {&client_});
        if (name && EqualsNoCase(name.get(), dn)) return entry;
    }
    return nullptr;
}

int CLDAPItems::ReadFileContents(const std::string& dn, FileBuffer& buffer,
                                 const char* attributeName) {
    buffer = {};
    if (LacksAny(client_.ldap_first_entry, client_.ldap_next_entry, client_.ldap_get_dn,
                 client_.ldap_first_attribute, client_.ldap_next_attribute,
                 client_.ldap_get_values_len)) {
        return Fail(LDAP_SERVER_DOWN, nullptr);
    }
    const std::string wanted = attributeName ? attributeName : ContentsAttribute();
    UniqueLdapMessage result;
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {wanted}, result);
    if (code != LDAP_SUCCESS) return Fail(code, nullptr);
    // The search finds one entry at most. A server may spell its name in another way than the
    // caller, with other blanks or escapes: taking it for missing would lose what it holds.
    LDAPMessage* const named = EntryNamed(result.get(), dn);
    LDAPMessage* const entry =
        named ? named : client_.ldap_first_entry(handle_.get(), result.get());
    if (entry == nullptr) {
        // Without memory the client hands out nothing although there is something.
        const bool none = client_.ldap_count_entries(handle_.get(), result.get()) == 0;
        return none ? 1 : Fail(LDAP_NO_MEMORY, nullptr);
    }
    AttributeWalk walk(client_, handle_.get(), entry);
    for (; walk.Name(); walk.Next()) {
        if (!EqualsNoCase(walk.Name(), wanted)) continue;
        const UniqueLdapBytes values = walk.Bytes();
        // Taken for empty, the file would be replaced by what the user makes of an empty one.
        if (!values) return Fail(LDAP_NO_MEMORY, nullptr);
        if (*values) CopyValue(**values, buffer);
        return 1;
    }
    return walk.RanOut() ? Fail(LDAP_NO_MEMORY, nullptr) : 1;
}

bool CLDAPItems::HasValue(LDAPMessage* entry, const char* attribute, const char* wanted) const {
    AttributeWalk walk(client_, handle_.get(), entry);
    for (; walk.Name(); walk.Next()) {
        if (!EqualsNoCase(walk.Name(), attribute)) continue;
        const UniqueLdapValues values = walk.Texts();
        for (char** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            if (EqualsNoCase(*value, wanted)) return true;
        }
    }
    return false;
}

bool CLDAPItems::OffersAssertions() {
    if (offersAssertions_) return *offersAssertions_;
    UniqueLdapMessage result;
    const std::uint32_t code = Search(kServerEntry, LDAP_SCOPE_BASE, {kOfferedControls}, result);
    if (code != LDAP_SUCCESS) return false;
    LDAPMessage* const server = client_.ldap_first_entry(handle_.get(), result.get());
    offersAssertions_ = server != nullptr && HasValue(server, kOfferedControls, kAssertionControl);
    return *offersAssertions_;
}

std::uint32_t CLDAPItems::ReadIdentifiers(const std::string& dn, EntryIdentifiers& identifiers) {
    identifiers = {};
    UniqueLdapMessage result;
    const std::vector<std::string> names(std::begin(kIdentifierAttributes),
                                         std::end(kIdentifierAttributes));
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, names, result);
    if (code != LDAP_SUCCESS) return code;
    LDAPMessage* const entry = client_.ldap_first_entry(handle_.get(), result.get());
    if (entry == nullptr) return LDAP_NO_SUCH_OBJECT;
    AttributeWalk walk(client_, handle_.get(), entry);
    for (; walk.Name(); walk.Next()) {
        const UniqueLdapBytes values = walk.Bytes();
        if (!values || *values == nullptr) continue;
        for (std::size_t index = 0; index < names.size(); ++index) {
            if (!EqualsNoCase(walk.Name(), names[index])) continue;
            identifiers[index].assign((*values)->bv_val, (*values)->bv_len);
        }
    }
    return LDAP_SUCCESS;
}

std::optional<std::vector<std::string>> CLDAPItems::ExplodeDN(const std::string& dn,
                                                              std::uint32_t& code) const {
    const UniqueLdapValues exploded(client_.ldap_explode_dn(ClientText(dn), 0), {&client_});
    code = LDAP_SUCCESS;
    if (!exploded) {
        code = IsMissing(client_.ldap_explode_dn) ? LDAP_SERVER_DOWN : LDAP_INVALID_DN_SYNTAX;
        return std::nullopt;
    }
    std::vector<std::string> components;
    for (char** component = exploded.get(); *component != nullptr; ++component) {
        // Some clients turn every letter beyond ASCII into escapes, others leave it.
        components.push_back(DecodeNonAsciiEscapes(*component, &ExactAnsiFromUtf8));
    }
    return components;
}

int CLDAPItems::SplitEntryName(const std::string& dn, std::string& name, bool& isFolder,
                               FileExtension extension) {
    name.clear();
    isFolder = false;
    std::uint32_t code = LDAP_SUCCESS;
    const auto components = ExplodeDN(dn, code);
    if (!components || components->empty()) return 0;
    std::optional<EntryName> entry =
        SplitFirstComponent(components->front(), NamingNames(), extension);
    if (!entry) return 0;
    name = std::move(entry->name);
    isFolder = entry->isFolder;
    return 1;
}

int CLDAPItems::EnsureFolderPath(const std::string& dn, bool connect, std::string* errorText,
                                 LdapItemList* added) {
    if (dn.empty()) return 0;
    if (connect && !IsConnected() && PromptAndConnect(errorText) == 0) return 0;
    const int result = CreateMissingFolders(dn, errorText, added);
    // Kept: also a connection that was there before is not kept.
    // Relied on by: existing clients, whose next operation connects for itself.
    if (connect) Close();
    return result;
}

int CLDAPItems::EnsureFoldersAbove(const std::string& dn, std::string* errorText,
                                   LdapItemList* added) {
    std::uint32_t code = LDAP_SUCCESS;
    const auto components = ExplodeDN(dn, code);
    if (!components) return Fail(code, errorText);
    LdapItemList missing;
    return FindMissingFolders(*components, 1, missing, errorText)
               ? AddFolders(missing, errorText, added)
               : 0;
}

int CLDAPItems::CreateMissingFolders(const std::string& dn, std::string* errorText,
                                     LdapItemList* added) {
    LdapItemList missing;
    return FindMissingFolders(dn, missing, errorText) ? AddFolders(missing, errorText, added) : 0;
}

bool CLDAPItems::FindMissingFolders(const std::string& dn, LdapItemList& missing,
                                    std::string* errorText) {
    std::uint32_t code = LDAP_SUCCESS;
    const auto components = ExplodeDN(dn, code);
    if (!components) return Fail(code, errorText) != 0;
    std::string name;
    bool isFolder = false;
    const bool isFile = SplitEntryName(dn, name, isFolder) != 0 && !isFolder;
    return FindMissingFolders(*components, isFile ? 1 : 0, missing, errorText);
}

bool CLDAPItems::FindMissingFolders(const std::vector<std::string>& components, std::size_t first,
                                    LdapItemList& missing, std::string* errorText) {
    for (std::size_t index = first; index < components.size(); ++index) {
        std::string folder = JoinComponents(components, index);
        const std::uint32_t code = FindEntry(folder);
        if (code == LDAP_SUCCESS) return true;
        if (code == LDAP_INVALID_DN_SYNTAX) return Fail(code, errorText) != 0;
        missing.Add(std::move(folder), true);
    }
    return true;
}

int CLDAPItems::AddFolders(const LdapItemList& missing, std::string* errorText,
                           LdapItemList* added) {
    for (std::size_t index = missing.Count(); index > 0; --index) {
        const std::string& dn = missing.At(index - 1).path;
        std::string name;
        bool isFolder = false;
        if (SplitEntryName(dn, name, isFolder) == 0) {
            return Fail(LDAP_INVALID_DN_SYNTAX, errorText);
        }
        // Noted before it is there: nobody could remove it if memory ran out afterwards.
        if (added != nullptr) added->Add(dn, true);
        const FolderAddition addition = AddFolder(dn, name, nullptr);
        if (addition != FolderAddition::kAdded && added != nullptr) added->RemoveLast();
        if (addition == FolderAddition::kFailed) return Fail(LDAP_PARAM_ERROR, errorText);
    }
    return 1;
}

}  // namespace depot
