#include "bench/raw_directory.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "directory/ldap_items.h"
#include "support/directory_server.h"

namespace depot::bench {
namespace {

// The client never writes to its arguments.
char* Raw(const char* text) {
    return const_cast<char*>(text);
}

char* Raw(const std::string& text) {
    return Raw(text.c_str());
}

// The contents of a file as one value of a change. Borrows the bytes.
struct ContentsChange {
    ContentsChange(ULONG operation, const std::string& contents)
        : value{static_cast<ULONG>(contents.size()), Raw(contents)} {
        change.mod_op = operation | LDAP_MOD_BVALUES;
        change.mod_type = Raw(kDefaultContentsAttribute);
        change.mod_vals.modv_bvals = values;
    }
    ContentsChange(const ContentsChange&) = delete;
    ContentsChange& operator=(const ContentsChange&) = delete;

    berval value;
    berval* values[2] = {&value, nullptr};
    LDAPModA change = {};
};

}  // namespace

void Require(bool done, const char* step) {
    if (done) return;
    std::fprintf(stderr, "The directory could not be measured: %s failed.\n", step);
    std::exit(1);
}

RawDirectory::RawDirectory(unsigned port) : connection_(ldap_initA(Raw("127.0.0.1"), port)) {
    ULONG version = LDAP_VERSION3, seconds = CDepotPath::kDefaultConnectTimeout;
    ldap_set_option(connection_, LDAP_OPT_PROTOCOL_VERSION, &version);
    ldap_set_option(connection_, LDAP_OPT_TIMELIMIT, &seconds);
    Require(ldap_bind_sA(connection_, Raw(test::kEditor), Raw(test::kEditorPassword),
                         LDAP_AUTH_SIMPLE) == LDAP_SUCCESS,
            "bind");
}

RawDirectory::~RawDirectory() {
    ldap_unbind_s(connection_);
}

LDAPMessage* RawDirectory::Search(const std::string& dn, ULONG scope,
                                  std::vector<char*> attributes) const {
    attributes.push_back(nullptr);
    LDAPMessage* result = nullptr;
    Require(ldap_search_sA(connection_, Raw(dn), scope, Raw("(objectClass=*)"), attributes.data(),
                           0, &result) == LDAP_SUCCESS,
            "search");
    return result;
}

std::pair<std::string, bool> RawDirectory::Child(LDAPMessage* entry,
                                                 const std::string& folder) const {
    std::pair<std::string, bool> child;
    BerElement* position = nullptr;
    char* attribute = ldap_first_attributeA(connection_, entry, &position);
    while (attribute != nullptr) {
        char** const values = ldap_get_valuesA(connection_, entry, attribute);
        if (_stricmp(attribute, kDefaultNamingAttribute) == 0) {
            child.first = std::string("CN=") + values[0] + "," + folder;
        } else {
            child.second = _stricmp(values[0], kDefaultFolderClass) == 0;
        }
        ldap_value_freeA(values);
        ldap_memfreeA(attribute);
        attribute = ldap_next_attributeA(connection_, entry, position);
    }
    ber_free(position, 0);
    return child;
}

std::vector<std::pair<std::string, bool>> RawDirectory::List(const std::string& folder) const {
    LDAPMessage* const result =
        Search(folder, LDAP_SCOPE_ONELEVEL, {Raw(kDefaultNamingAttribute), Raw("objectClass")});
    std::vector<std::pair<std::string, bool>> children;
    for (LDAPMessage* entry = ldap_first_entry(connection_, result); entry != nullptr;
         entry = ldap_next_entry(connection_, entry)) {
        children.push_back(Child(entry, folder));
    }
    ldap_msgfree(result);
    return children;
}

void RawDirectory::Find(const std::string& dn) const {
    ldap_msgfree(Search(dn, LDAP_SCOPE_BASE, {Raw("1.1")}));
}

std::vector<char> RawDirectory::Read(const std::string& dn) const {
    LDAPMessage* const result = Search(dn, LDAP_SCOPE_BASE, {Raw(kDefaultContentsAttribute)});
    LDAPMessage* const entry = ldap_first_entry(connection_, result);
    berval** const values =
        ldap_get_values_lenA(connection_, entry, Raw(kDefaultContentsAttribute));
    Require(values != nullptr, "read");
    std::vector<char> bytes(values[0]->bv_val, values[0]->bv_val + values[0]->bv_len);
    ldap_value_free_len(values);
    ldap_msgfree(result);
    return bytes;
}

void RawDirectory::Add(const std::string& dn, const std::string& name,
                       const std::string& contents) const {
    char* names[] = {Raw(name), nullptr};
    char* classes[] = {Raw(kDefaultFileClass), nullptr};
    LDAPModA naming = {LDAP_MOD_ADD, Raw(kDefaultNamingAttribute), {names}};
    LDAPModA objectClass = {LDAP_MOD_ADD, Raw("objectClass"), {classes}};
    ContentsChange bytes(LDAP_MOD_ADD, contents);
    LDAPModA* attributes[] = {&naming, &objectClass, &bytes.change, nullptr};
    Require(ldap_add_sA(connection_, Raw(dn), attributes) == LDAP_SUCCESS, "add");
}

void RawDirectory::AddFolder(const std::string& dn, const std::string& name) const {
    char* names[] = {Raw(name), nullptr};
    char* classes[] = {Raw(kDefaultFolderClass), nullptr};
    LDAPModA naming = {LDAP_MOD_ADD, Raw(kDefaultNamingAttribute), {names}};
    LDAPModA objectClass = {LDAP_MOD_ADD, Raw("objectClass"), {classes}};
    LDAPModA* attributes[] = {&naming, &objectClass, nullptr};
    Require(ldap_add_sA(connection_, Raw(dn), attributes) == LDAP_SUCCESS, "add a folder");
}

void RawDirectory::Replace(const std::string& dn, const std::string& contents) const {
    ContentsChange bytes(LDAP_MOD_REPLACE, contents);
    LDAPModA* changes[] = {&bytes.change, nullptr};
    Require(ldap_modify_sA(connection_, Raw(dn), changes) == LDAP_SUCCESS, "replace");
}

void RawDirectory::Rename(const std::string& dn, const std::string& newName,
                          const std::string& parent) const {
    Require(ldap_rename_ext_sA(connection_, Raw(dn), Raw("CN=" + newName), Raw(parent), 1, nullptr,
                               nullptr) == LDAP_SUCCESS,
            "rename");
}

void RawDirectory::Delete(const std::string& dn) const {
    Require(List(dn).empty() && ldap_delete_sA(connection_, Raw(dn)) == LDAP_SUCCESS, "delete");
}

}  // namespace depot::bench
