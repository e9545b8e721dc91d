// Adding, rewriting, renaming and deleting single entries.
#include <array>
#include <cstring>

#include "directory/assertion_control.h"
#include "directory/entry_store.h"

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

}  // namespace

Result EntryStore::AddFolder(const std::string& dn, const std::string& name, bool& added) {
    return connection_.Outcome(AddFolderCode(dn, name, added));
}

std::uint32_t EntryStore::AddFolderCode(const std::string& dn, const std::string& name,
                                        bool& added) {
    added = false;
    const std::uint32_t found = FindCode(dn);
    if (found == LDAP_INVALID_DN_SYNTAX || found == LDAP_SUCCESS) return found;
    if (!connection_.IsConnected()) return LDAP_SERVER_DOWN;
    TextAttribute naming(schema_.NamingNames().folder, name);
    TextAttribute objectClass(kObjectClass, schema_.FolderClass());
    LDAPModA* attributes[] = {naming.Get(), objectClass.Get(), nullptr};
    const std::uint32_t code = Client().ldap_add_s(Handle(), ClientText(dn), attributes);
    added = code == LDAP_SUCCESS;
    return code;
}

Result EntryStore::AddFile(const std::string& dn, const std::string& name, const void* data,
                           std::uint32_t length) {
    if (!connection_.IsConnected()) return connection_.Outcome(LDAP_SERVER_DOWN);
    TextAttribute naming(schema_.NamingNames().file, name);
    TextAttribute objectClass(kObjectClass, schema_.FileClass());
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* attributes[] = {naming.Get(), objectClass.Get(), contents.Get(LDAP_MOD_ADD), nullptr};
    return connection_.Outcome(Client().ldap_add_s(Handle(), ClientText(dn), attributes));
}

Result EntryStore::Replace(const std::string& dn, const void* data, std::uint32_t length) {
    if (!connection_.IsConnected()) return connection_.Outcome(LDAP_SERVER_DOWN);
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    return connection_.Outcome(Client().ldap_modify_s(Handle(), ClientText(dn), changes));
}

Result EntryStore::ReplaceUnchanged(const std::string& dn, const void* data, std::uint32_t length,
                                    const FileBuffer& present) {
    if (!connection_.IsConnected() || present.length > kLargestCondition || !OffersAssertions())
        return Replace(dn, data, length);
    ContentsAssertion unchanged(schema_.ContentsAttribute(), present);
    Contents contents(schema_.ContentsAttribute(), data, length);
    LDAPModA* changes[] = {contents.Get(LDAP_MOD_REPLACE), nullptr};
    return connection_.Outcome(Client().ldap_modify_ext_s(Handle(), ClientText(dn), changes,
                                                          unchanged.Controls(), nullptr));
}

Result EntryStore::Rename(const std::string& oldDN, const std::string& newDN) {
    const ExplodedDN exploded = schema_.Explode(newDN);
    if (exploded.code != LDAP_SUCCESS) return connection_.Outcome(exploded.code);
    if (exploded.components.empty()) return connection_.Outcome(LDAP_INVALID_DN_SYNTAX);
    if (!connection_.IsConnected()) return connection_.Outcome(LDAP_SERVER_DOWN);
    constexpr INT kDeleteOldName = 1;
    const std::string parent = JoinComponents(exploded.components, 1);
    return connection_.Outcome(Client().ldap_rename_ext_s(
        Handle(), ClientText(oldDN), ClientText(exploded.components.front()), ClientText(parent),
        kDeleteOldName, nullptr, nullptr));
}

Result EntryStore::Remove(const std::string& dn) {
    return connection_.Outcome(RemoveCode(dn));
}

std::uint32_t EntryStore::RemoveCode(const std::string& dn) {
    return connection_.IsConnected() ? Client().ldap_delete_s(Handle(), ClientText(dn))
                                     : std::uint32_t{LDAP_SERVER_DOWN};
}

}  // namespace depot
