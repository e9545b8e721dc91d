// Finding entries and reading what they hold.
#include <cstring>

#include "directory/assertion.h"
#include "directory/client_support.h"
#include "directory/comparable_dn.h"
#include "directory/entry_batches.h"
#include "directory/entry_store.h"
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

// Whether a connection that was kept is no use any more: it is gone, or its log-on is.
bool EntryStore::IsOfALostConnection(std::uint32_t code) {
    return code == LDAP_SERVER_DOWN || code == LDAP_CONNECT_ERROR || code == LDAP_TIMEOUT ||
           code == LDAP_INVALID_CREDENTIALS;
}

Result EntryStore::Answer(std::uint32_t code) {
    if (code != LDAP_NO_SUCH_OBJECT) return connection_.Outcome(code);
    return Error{ReasonOf(code), CodeKind::kDirectory, code};
}

std::uint32_t EntryStore::Search(const std::string& base, ULONG scope,
                                 const std::vector<std::string>& attributes,
                                 UniqueLdapMessage& result) {
    const bool isUnproven = connection_.TakeUnproven();
    const std::uint32_t code = SearchOnce(base, scope, attributes, result);
    if (!isUnproven || !IsOfALostConnection(code) || !connection_.Replace()) return code;
    return SearchOnce(base, scope, attributes, result);
}

std::uint32_t EntryStore::Prove() {
    if (!connection_.TakeUnproven()) return LDAP_SUCCESS;
    UniqueLdapMessage result;
    const std::uint32_t code = SearchOnce(kServerEntry, LDAP_SCOPE_BASE, {kNoAttributes}, result);
    return IsOfALostConnection(code) ? CodeOf(connection_.Replace()) : std::uint32_t{LDAP_SUCCESS};
}

std::uint32_t EntryStore::SearchOnce(const std::string& base, ULONG scope,
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
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {kNoAttributes}, result);
    return code == LDAP_SUCCESS ? FoundCode(result.get()) : code;
}

// Some servers have a search succeed without an entry that the user may not see.
std::uint32_t EntryStore::FoundCode(LDAPMessage* result) const {
    if (LacksAny(Client().ldap_first_entry, Client().ldap_count_entries)) return LDAP_SERVER_DOWN;
    if (Client().ldap_first_entry(Handle(), result) != nullptr) return LDAP_SUCCESS;
    // Without memory the client hands out nothing although there is something.
    const bool none = Client().ldap_count_entries(Handle(), result) == 0;
    return none ? LDAP_NO_SUCH_OBJECT : LDAP_NO_MEMORY;
}

Result EntryStore::FindKind(const std::string& dn, EntryKind& kind) {
    KindLookup lookup = {dn};
    FindKind(lookup);
    kind = lookup.kind;
    return std::move(lookup.result);
}

void EntryStore::FindKind(KindLookup& lookup) {
    UniqueLdapMessage found;
    const std::uint32_t code = Search(lookup.dn, LDAP_SCOPE_BASE, KindAttributes(lookup), found);
    lookup.result = TakeKind(code, found.get(), lookup);
}

std::vector<std::string> EntryStore::KindAttributes(const KindLookup& lookup) const {
    if (lookup.name.empty()) return {kObjectClass};
    const NamingAttributes naming = schema_.NamingNames();
    return {kObjectClass, naming.folder, naming.file};
}

Result EntryStore::TakeKind(std::uint32_t code, LDAPMessage* result, KindLookup& lookup) {
    lookup.kind = EntryKind::kOther;
    lookup.isOther = false;
    if (code == LDAP_SUCCESS) code = FoundCode(result);
    if (code != LDAP_SUCCESS) return Answer(code);
    LDAPMessage* const entry = Client().ldap_first_entry(Handle(), result);
    const bool isFolder = HasValue(entry, kObjectClass, schema_.FolderClass().c_str());
    const bool isFile = HasValue(entry, kObjectClass, schema_.FileClass().c_str());
    if (isFolder != isFile) lookup.kind = isFolder ? EntryKind::kFolder : EntryKind::kFile;
    if (!lookup.name.empty()) lookup.isOther = IsNamedOtherwise(entry, lookup.name);
    return {};
}

// Whether the entry shows names and none of them is this one. What the code page cannot hold is
// another one.
bool EntryStore::IsNamedOtherwise(LDAPMessage* entry, const std::string& name) const {
    const NamingAttributes naming = schema_.NamingNames();
    bool isNamed = false;
    AttributeWalk walk(Client(), Handle(), entry);
    for (; walk.Name(); walk.Next()) {
        const bool names =
            EqualsNoCase(walk.Name(), naming.folder) || EqualsNoCase(walk.Name(), naming.file);
        if (!names) continue;
        const UniqueLdapBytes values = walk.Bytes();
        for (berval** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            const auto shown = ExactAnsiFromUtf8({(*value)->bv_val, (*value)->bv_len});
            if (shown && AreOneName(*shown, name)) return false;
            isNamed = true;
        }
    }
    return isNamed;
}

void EntryStore::FindKindsTogether(std::span<KindLookup> lookups) {
    Together(
        lookups.size(),
        [&](RequestBatch& batch, std::size_t index) {
            batch.Search(lookups[index].dn, LDAP_SCOPE_BASE, KindAttributes(lookups[index]));
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage* found) {
            lookups[index].result = TakeKind(code, found, lookups[index]);
        },
        [&](std::size_t index) { FindKind(lookups[index]); });
}

Result EntryStore::ReadIdentifiers(const std::string& dn, EntryIdentifiers& identifiers) {
    identifiers = {};
    UniqueLdapMessage result;
    const std::vector<std::string> names(std::begin(kIdentifierAttributes),
                                         std::end(kIdentifierAttributes));
    std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, names, result);
    if (code == LDAP_SUCCESS) code = FoundCode(result.get());
    if (code != LDAP_SUCCESS) return Answer(code);
    LDAPMessage* const entry = Client().ldap_first_entry(Handle(), result.get());
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
    return connection_.Outcome(ReadCode(dn, buffer,
                                        attributeName ? attributeName : schema_.ContentsAttribute(),
                                        WithoutEntry::kIsEmpty));
}

Result EntryStore::ReadSeen(const std::string& dn, FileBuffer& buffer) {
    const std::uint32_t code =
        ReadCode(dn, buffer, schema_.ContentsAttribute(), WithoutEntry::kIsMissing);
    if (code == LDAP_SUCCESS && !buffer.bytes) return Unseen();
    return connection_.Outcome(code);
}

Error EntryStore::Unseen() {
    return {ReasonOf(LDAP_NO_SUCH_ATTRIBUTE), CodeKind::kDirectory, LDAP_NO_SUCH_ATTRIBUTE,
            kUnseenContentsText};
}

bool EntryStore::CanRead() const {
    const DirectoryClient& client = Client();
    return !LacksAny(client.ldap_first_entry, client.ldap_next_entry, client.ldap_get_dn,
                     client.ldap_first_attribute, client.ldap_next_attribute,
                     client.ldap_get_values_len);
}

std::uint32_t EntryStore::ReadCode(const std::string& dn, FileBuffer& buffer,
                                   const std::string& wanted, WithoutEntry none) {
    buffer = {};
    if (!CanRead()) return LDAP_SERVER_DOWN;
    UniqueLdapMessage result;
    const std::uint32_t code = Search(dn, LDAP_SCOPE_BASE, {wanted}, result);
    if (code != LDAP_SUCCESS) return code;
    const std::uint32_t taken = TakeContents(result.get(), dn, wanted, buffer);
    const bool isEmpty = taken == LDAP_NO_SUCH_OBJECT && none == WithoutEntry::kIsEmpty;
    return isEmpty ? std::uint32_t{LDAP_SUCCESS} : taken;
}

// Takes the value out of what a search for the entry has found.
std::uint32_t EntryStore::TakeContents(LDAPMessage* result, const std::string& dn,
                                       const std::string& wanted, FileBuffer& buffer) const {
    const DirectoryClient& client = Client();
    // The search finds one entry at most. A server may spell its name in another way than the
    // caller, with other blanks or escapes: taking it for missing would lose what it holds.
    LDAPMessage* const named = EntryNamed(result, dn);
    LDAPMessage* const entry = named ? named : client.ldap_first_entry(Handle(), result);
    if (entry == nullptr) return FoundCode(result);
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

void EntryStore::ReadTogether(std::span<ContentsRead> reads) {
    const std::string wanted = schema_.ContentsAttribute();
    Together(
        reads.size(),
        [&](RequestBatch& batch, std::size_t index) {
            batch.Search(reads[index].dn, LDAP_SCOPE_BASE, {wanted});
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage* found) {
            ContentsRead& read = reads[index];
            read.contents = {};
            if (code == LDAP_SUCCESS) code = TakeContents(found, read.dn, wanted, read.contents);
            read.result = connection_.Outcome(code);
        },
        [&](std::size_t index) {
            reads[index].result = Read(reads[index].dn, reads[index].contents);
        });
}

std::size_t EntryStore::Window() const {
    const bool isPossible = !takesOneAtATime_ && CanRead() && RequestBatch::IsPossible(Client());
    return isPossible ? kWindow : 1;
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
