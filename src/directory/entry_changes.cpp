// Adding, rewriting, renaming and deleting single entries.
#include <array>
#include <cstring>

#include "directory/assertion_control.h"
#include "directory/entry_batches.h"
#include "directory/entry_store.h"
#include "directory/refused_sizes.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr char kObjectClass[] = "objectClass";

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

// The attributes of a folder or, with contents, of a file that is to be added.
class NewEntry {
public:
    NewEntry(std::string nameAttribute, const std::string& name, std::string className)
        : naming_(std::move(nameAttribute), name),
          objectClass_(kObjectClass, std::move(className)) {}

    LDAPModA** Attributes(LDAPModA* contents = nullptr) {
        attributes_ = {naming_.Get(), objectClass_.Get(), contents, nullptr};
        return attributes_.data();
    }

private:
    TextAttribute naming_;
    TextAttribute objectClass_;
    std::array<LDAPModA*, 4> attributes_ = {};
};

// The contents of a file, to be added or to replace others. The bytes are copied.
class Contents {
public:
    Contents(std::string name, const void* data, std::uint32_t length)
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

// A server that takes no file of this size ends the connection over it, and with it whatever else
// is under way.
bool IsLarge(const ContentsWrite& file) {
    return file.contents->length > kLargeContents;
}

std::vector<ContentsWrite*> SentTogether(std::span<ContentsWrite> files) {
    std::vector<ContentsWrite*> together;
    together.reserve(files.size());
    for (ContentsWrite& file : files) {
        if (!IsLarge(file)) together.push_back(&file);
    }
    return together;
}

}  // namespace

std::string EntryStore::NameOf(const std::string& dn) const {
    const std::optional<EntryName> entry = schema_.SplitEntryName(dn);
    return entry ? entry->name : std::string();
}

// What was done stays done also when memory runs out behind it: nothing is named then.
Result EntryStore::NamedOutcome(std::uint32_t code, const std::string& name) {
    if (code == LDAP_SUCCESS) return {};
    const auto refused = RefusedName(code, name, WideFromAnsi(name).size());
    return refused ? Result(*refused) : connection_.Outcome(code);
}

Result EntryStore::StoredOutcome(std::uint32_t code, const std::string& name,
                                 std::uint32_t length) {
    if (code == LDAP_SERVER_DOWN && length > kLargeContents && connection_.Replace()) {
        return RefusedContents(name, length);
    }
    return NamedOutcome(code, name);
}

Result EntryStore::AddFolder(const std::string& dn, const std::string& name, bool& added) {
    return NamedOutcome(AddFolderCode(dn, name, added), name);
}

std::uint32_t EntryStore::AddFolderCode(const std::string& dn, const std::string& name,
                                        bool& added) {
    added = false;
    const std::uint32_t found = FindCode(dn);
    if (found == LDAP_INVALID_DN_SYNTAX || found == LDAP_SUCCESS) return found;
    const std::uint32_t code = AddNewFolderCode(dn, name);
    added = code == LDAP_SUCCESS;
    return code;
}

Result EntryStore::AddNewFolder(const std::string& dn, const std::string& name) {
    return NamedOutcome(AddNewFolderCode(dn, name), name);
}

std::uint32_t EntryStore::AddNewFolderCode(const std::string& dn, const std::string& name) {
    if (const auto gone = Unusable()) return *gone;
    NewEntry folder(schema_.NamingNames().folder, name, schema_.FolderClass());
    return Client().ldap_add_s(Handle(), ClientText(dn), folder.Attributes());
}

Result EntryStore::AddFile(const std::string& dn, const std::string& name, const void* data,
                           std::uint32_t length) {
    if (const auto gone = Unusable()) return connection_.Outcome(*gone);
    NewEntry file(schema_.NamingNames().file, name, schema_.FileClass());
    Contents contents(schema_.ContentsAttribute(), data, length);
    return StoredOutcome(
        Client().ldap_add_s(Handle(), ClientText(dn), file.Attributes(contents.Get(LDAP_MOD_ADD))),
        name, length);
}

Result EntryStore::Replace(const std::string& dn, const void* data, std::uint32_t length) {
    if (!connection_.IsConnected()) return connection_.Outcome(LDAP_SERVER_DOWN);
    const bool isUnproven = connection_.TakeUnproven();
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    std::uint32_t code = Client().ldap_modify_s(Handle(), ClientText(dn), changes);
    // The same bytes may be stored twice.
    if (isUnproven && IsOfALostConnection(code) && connection_.Replace()) {
        code = Client().ldap_modify_s(Handle(), ClientText(dn), changes);
    }
    return code == LDAP_SUCCESS ? Result() : StoredOutcome(code, NameOf(dn), length);
}

std::optional<std::uint32_t> EntryStore::Unusable() {
    if (!connection_.IsConnected()) return LDAP_SERVER_DOWN;
    const std::uint32_t code = Prove();
    return code == LDAP_SUCCESS ? std::nullopt : std::optional(code);
}

void EntryStore::AddFilesTogether(std::span<ContentsWrite> files) {
    const std::string naming = schema_.NamingNames().file;
    const std::vector<ContentsWrite*> small = SentTogether(files);
    const auto alone = [&](ContentsWrite& file) {
        file.result =
            AddFile(file.dn, file.name, file.contents->bytes.get(), file.contents->length);
    };
    Together(
        small.size(),
        [&](RequestBatch& batch, std::size_t index) {
            const ContentsWrite& file = *small[index];
            NewEntry entry(naming, file.name, schema_.FileClass());
            Contents contents(schema_.ContentsAttribute(), file.contents->bytes.get(),
                              file.contents->length);
            batch.Add(file.dn, entry.Attributes(contents.Get(LDAP_MOD_ADD)));
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage*) {
            small[index]->result = NamedOutcome(code, small[index]->name);
        },
        [&](std::size_t index) { alone(*small[index]); });
    for (ContentsWrite& file : files) {
        if (IsLarge(file)) alone(file);
    }
}

void EntryStore::ReplaceTogether(std::span<ContentsWrite> files) {
    const std::vector<ContentsWrite*> small = SentTogether(files);
    const auto alone = [&](ContentsWrite& file) {
        file.result = Replace(file.dn, file.contents->bytes.get(), file.contents->length);
    };
    Together(
        small.size(),
        [&](RequestBatch& batch, std::size_t index) {
            const ContentsWrite& file = *small[index];
            Contents contents(schema_.ContentsAttribute(), file.contents->bytes.get(),
                              file.contents->length);
            LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
            batch.Modify(file.dn, changes);
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage*) {
            small[index]->result = connection_.Outcome(code);
        },
        [&](std::size_t index) { alone(*small[index]); });
    for (ContentsWrite& file : files) {
        if (IsLarge(file)) alone(file);
    }
}

void EntryStore::AddFoldersTogether(std::span<FolderAddition> folders) {
    const std::string naming = schema_.NamingNames().folder;
    std::vector<std::size_t> refused;
    const auto alone = [&](std::size_t index) {
        bool added = false;
        FolderAddition& folder = folders[index];
        folder.result = AddFolder(folder.dn, folder.name, added);
        folder.isThere = folder.result && !added;
    };
    Together(
        folders.size(),
        [&](RequestBatch& batch, std::size_t index) {
            NewEntry entry(naming, folders[index].name, schema_.FolderClass());
            batch.Add(folders[index].dn, entry.Attributes());
        },
        [&](std::size_t index, std::uint32_t code, LDAPMessage*) {
            FolderAddition& folder = folders[index];
            folder.isThere = code == LDAP_ALREADY_EXISTS;
            const bool isAdded = code == LDAP_SUCCESS || folder.isThere;
            folder.result = connection_.Outcome(isAdded ? std::uint32_t{LDAP_SUCCESS} : code);
            if (!isAdded) refused.push_back(index);
        },
        alone);
    // Whoever may not add a folder may still use one that exists.
    for (const std::size_t index : refused) {
        if (!folders[index].result.Is(Reason::kUnreachable)) alone(index);
    }
}

Result EntryStore::ReplaceUnchanged(const std::string& dn, const void* data, std::uint32_t length,
                                    const FileBuffer& present) {
    if (!connection_.IsConnected() || present.length > kLargestCondition)
        return Replace(dn, data, length);
    if (!OffersAssertions()) {
        // Both versions have to fit the smallest request that servers take as they come.
        const bool fits =
            present.bytes && std::uint64_t{present.length} + length <= kLargestCondition;
        return fits ? connection_.Outcome(ExchangeCode(dn, data, length, present))
                    : Replace(dn, data, length);
    }
    ContentsAssertion unchanged(schema_.ContentsAttribute(), present);
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    return connection_.Outcome(Client().ldap_modify_ext_s(Handle(), ClientText(dn), changes,
                                                          unchanged.Controls(), nullptr));
}

void EntryStore::ReplaceUnchangedTogether(std::span<ConditionalWrite> writes) {
    if (!connection_.IsConnected() || !OffersAssertions()) return;
    std::vector<ContentsRead> reads;
    reads.reserve(writes.size());
    for (const ConditionalWrite& write : writes) reads.push_back({write.dn});
    ReadTogether(reads);
    std::vector<std::size_t> unchanged;
    for (std::size_t index = 0; index < writes.size(); ++index) {
        const FileBuffer& present = reads[index].contents;
        const bool isSmall =
            present.length <= kLargestCondition && writes[index].contents.size() <= kLargeContents;
        if (!reads[index].result || !present.bytes || !isSmall) continue;
        if (DigestOf(present) == writes[index].fetched) unchanged.push_back(index);
    }
    Together(
        unchanged.size(),
        [&](RequestBatch& batch, std::size_t at) {
            const ConditionalWrite& write = writes[unchanged[at]];
            ContentsAssertion condition(schema_.ContentsAttribute(), reads[unchanged[at]].contents);
            Contents contents(schema_.ContentsAttribute(), write.contents.data(),
                              static_cast<std::uint32_t>(write.contents.size()));
            LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
            batch.Modify(write.dn, changes, condition.Controls());
        },
        [&](std::size_t at, std::uint32_t code, LDAPMessage*) {
            writes[unchanged[at]].isStored = code == LDAP_SUCCESS;
        },
        [](std::size_t) {});
}

// Deletes the value that is believed to be there and adds the new one. A server does all of a
// modification or nothing, and refuses to delete a value that is not there.
std::uint32_t EntryStore::ExchangeCode(const std::string& dn, const void* data,
                                       std::uint32_t length, const FileBuffer& present) {
    Contents former(schema_.ContentsAttribute(), present.bytes.get(), present.length);
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* changes[] = {former.Get(LDAP_MOD_DELETE), contents.Get(LDAP_MOD_ADD), nullptr};
    const std::uint32_t code = Client().ldap_modify_s(Handle(), ClientText(dn), changes);
    switch (code) {
        case LDAP_NO_SUCH_ATTRIBUTE:
            return kContentsChanged;
        // The schema has no rule by which values could be compared.
        case LDAP_INAPPROPRIATE_MATCHING:
            return LDAP_UNAVAILABLE_CRIT_EXTENSION;
        default:
            return code;
    }
}

Result EntryStore::Rename(const std::string& oldDN, const std::string& newDN) {
    const ExplodedDN exploded = schema_.Explode(newDN);
    if (exploded.code != LDAP_SUCCESS) return connection_.Outcome(exploded.code);
    if (exploded.components.empty()) return connection_.Outcome(LDAP_INVALID_DN_SYNTAX);
    if (const auto gone = Unusable()) return connection_.Outcome(*gone);
    constexpr INT kDeleteOldName = 1;
    const std::string parent = JoinComponents(exploded.components, 1);
    const std::uint32_t code = Client().ldap_rename_ext_s(
        Handle(), ClientText(oldDN), ClientText(exploded.components.front()), ClientText(parent),
        kDeleteOldName, nullptr, nullptr);
    return code == LDAP_SUCCESS ? Result() : NamedOutcome(code, NameOf(newDN));
}

Result EntryStore::Remove(const std::string& dn) {
    return connection_.Outcome(RemoveCode(dn));
}

std::uint32_t EntryStore::RemoveCode(const std::string& dn) {
    if (const auto gone = Unusable()) return *gone;
    return Client().ldap_delete_s(Handle(), ClientText(dn));
}

}  // namespace depot
