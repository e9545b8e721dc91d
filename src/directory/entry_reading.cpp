// Finding entries and reading what they hold.
#include <algorithm>
#include <cstring>

#include "directory/assertion.h"
#include "directory/client_support.h"
#include "directory/entry_store.h"
#include "platform/text.h"

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

Result EntryStore::Answer(std::uint32_t code) {
    if (code != LDAP_NO_SUCH_OBJECT) return connection_.Outcome(code);
    return Error{ReasonOf(code), CodeKind::kDirectory, code};
}

std::uint32_t EntryStore::Search(const std::string& base, ULONG scope,
                                 const std::vector<std::string>& attributes,
                                 UniqueLdapMessage& result) {
    if (!connection_.IsConnected()) return LDAP_SERVER_DOWN;
    std::vector<char*> names;
    names.reserve(attributes.size() + 1);
    for (const std::string& attribute : attributes) names.push_back(ClientText(attribute));
    names.push_back(nullptr);
    std::string filter = kAnyEntry;
    LDAPMessage* message = nullptr;
    const std::uint32_t code = Client().ldap_search_s(Handle(), ClientText(base), scope,
                                                      filter.data(), names.data(), 0, &message);
    // A refused search has a message, too.
    result = UniqueLdapMessage(message, {&Client()});
    return code;
}

Result EntryStore::Find(const std::string& dn) {
    return Answer(FindCode(dn));
}

std::uint32_t EntryStore::FindCode(const std::string& dn) {
    // The entry alone, without attributes: its subtree would carry every file's contents.
    UniqueLdapMessage result;
    return Search(dn, LDAP_SCOPE_BASE, {kNoAttributes}, result);
}

Result EntryStore::FindKind(const std::string& dn, EntryKind& kind) {
    kind = EntryKind::kOther;
    UniqueLdapMessage result;
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {kObjectClass}, result);
    if (code != LDAP_SUCCESS) return Answer(code);
    LDAPMessage* const entry = Client().ldap_first_entry(Handle(), result.get());
    if (entry == nullptr) return {};
    const bool isFolder = HasValue(entry, kObjectClass, schema_.FolderClass().c_str());
    const bool isFile = HasValue(entry, kObjectClass, schema_.FileClass().c_str());
    if (isFolder != isFile) kind = isFolder ? EntryKind::kFolder : EntryKind::kFile;
    return {};
}

Result EntryStore::ReadIdentifiers(const std::string& dn, EntryIdentifiers& identifiers) {
    identifiers = {};
    UniqueLdapMessage result;
    const std::vector<std::string> names(std::begin(kIdentifierAttributes),
                                         std::end(kIdentifierAttributes));
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, names, result);
    if (code != LDAP_SUCCESS) return Answer(code);
    LDAPMessage* const entry = Client().ldap_first_entry(Handle(), result.get());
    if (entry == nullptr) return Answer(LDAP_NO_SUCH_OBJECT);
    AttributeWalk walk(Client(), Handle(), entry);
    for (; walk.Name(); walk.Next()) {
        const UniqueLdapBytes values = walk.Bytes();
        if (!values || *values == nullptr) continue;
        for (std::size_t index = 0; index < names.size(); ++index) {
            if (!EqualsNoCase(walk.Name(), names[index])) continue;
            identifiers[index].assign((*values)->bv_val, (*values)->bv_len);
        }
    }
    return {};
}

LDAPMessage* EntryStore::EntryNamed(LDAPMessage* result, const std::string& dn) const {
    for (LDAPMessage* entry = Client().ldap_first_entry(Handle(), result); entry != nullptr;
         entry = Client().ldap_next_entry(Handle(), entry)) {
        const UniqueLdapText name(Client().ldap_get_dn(Handle(), entry), {&Client()});
        if (name && EqualsNoCase(name.get(), dn)) return entry;
    }
    return nullptr;
}

Result EntryStore::Read(const std::string& dn, FileBuffer& buffer, const char* attributeName) {
    return connection_.Outcome(
        ReadCode(dn, buffer, attributeName ? attributeName : schema_.ContentsAttribute()));
}

std::uint32_t EntryStore::ReadCode(const std::string& dn, FileBuffer& buffer,
                                   const std::string& wanted) {
    buffer = {};
    const DirectoryClient& client = Client();
    if (LacksAny(client.ldap_first_entry, client.ldap_next_entry, client.ldap_get_dn,
                 client.ldap_first_attribute, client.ldap_next_attribute,
                 client.ldap_get_values_len)) {
        return LDAP_SERVER_DOWN;
    }
    UniqueLdapMessage result;
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {wanted}, result);
    if (code != LDAP_SUCCESS) return code;
    // The search finds one entry at most. A server may spell its name in another way than the
    // caller, with other blanks or escapes: taking it for missing would lose what it holds.
    LDAPMessage* const named = EntryNamed(result.get(), dn);
    LDAPMessage* const entry = named ? named : client.ldap_first_entry(Handle(), result.get());
    if (entry == nullptr) {
        // Without memory the client hands out nothing although there is something.
        const bool none = client.ldap_count_entries(Handle(), result.get()) == 0;
        return none ? LDAP_SUCCESS : LDAP_NO_MEMORY;
    }
    AttributeWalk walk(client, Handle(), entry);
    for (; walk.Name(); walk.Next()) {
        if (!EqualsNoCase(walk.Name(), wanted)) continue;
        const UniqueLdapBytes values = walk.Bytes();
        // Taken for empty, the file would be replaced by what the user makes of an empty one.
        if (!values) return LDAP_NO_MEMORY;
        if (*values) CopyValue(**values, buffer);
        return LDAP_SUCCESS;
    }
    return walk.RanOut() ? LDAP_NO_MEMORY : LDAP_SUCCESS;
}

bool EntryStore::HasValue(LDAPMessage* entry, const char* attribute, const char* wanted) const {
    AttributeWalk walk(Client(), Handle(), entry);
    for (; walk.Name(); walk.Next()) {
        if (!EqualsNoCase(walk.Name(), attribute)) continue;
        const UniqueLdapValues values = walk.Texts();
        for (char** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            if (EqualsNoCase(*value, wanted)) return true;
        }
    }
    return false;
}

bool EntryStore::OffersAssertions() {
    if (offersAssertions_) return *offersAssertions_;
    UniqueLdapMessage result;
    const std::uint32_t code = Search(kServerEntry, LDAP_SCOPE_BASE, {kOfferedControls}, result);
    if (code != LDAP_SUCCESS) return false;
    LDAPMessage* const server = Client().ldap_first_entry(Handle(), result.get());
    offersAssertions_ = server != nullptr && HasValue(server, kOfferedControls, kAssertionControl);
    return *offersAssertions_;
}

}  // namespace depot
