#include "depotctl/hidden_entries.h"

#include <algorithm>

#include "depotctl/encoding.h"

namespace depot::ctl {
namespace {

constexpr char kObjectClass[] = "objectClass";

// A line feed parts the name of such an entry from its identifier, or an attribute marks it. Some
// servers hide those that are marked from whoever does not ask for their class.
std::string ConflictFilter(const std::string& attribute) {
    return "(|(" + attribute + "=*\\0aCNF:*)(&(objectClass=ldapSubEntry)(nsds5ReplConflict=*)))";
}

}  // namespace

std::uint32_t EntrySearch::Run(std::string dn, ULONG scope, std::string filter) {
    char* attributes[] = {attribute_.data(), nullptr};
    LDAPMessage* found = nullptr;
    const std::uint32_t code =
        client_.ldap_search_s(session_, dn.data(), scope, filter.data(), attributes, 0, &found);
    message_ = UniqueLdapMessage(found, {&client_});
    return code;
}

std::vector<std::vector<std::string>> EntrySearch::Values() {
    std::vector<std::vector<std::string>> all;
    if (!message_) return all;
    LDAPMessage* entry = client_.ldap_first_entry(session_, message_.get());
    for (; entry != nullptr; entry = client_.ldap_next_entry(session_, entry)) {
        const UniqueLdapValues values(client_.ldap_get_values(session_, entry, attribute_.data()),
                                      {&client_});
        std::vector<std::string>& texts = all.emplace_back();
        for (char** value = values.get(); value != nullptr && *value != nullptr; ++value) {
            texts.emplace_back(*value);
        }
    }
    return all;
}

bool HidesClasses(CLDAPItems& directory, const std::string& dn) {
    EntrySearch search(directory, kObjectClass);
    static_cast<void>(search.Run(dn, LDAP_SCOPE_ONELEVEL));
    const auto all = search.Values();
    return std::any_of(all.begin(), all.end(), [](const auto& values) { return values.empty(); });
}

Result FindReplicationConflicts(CLDAPItems& directory, const std::string& dn,
                                std::vector<std::string>& names) {
    const std::string naming = directory.Schema().NamingNames().file;
    EntrySearch search(directory, naming);
    const std::uint32_t code = search.Run(dn, LDAP_SCOPE_SUBTREE, ConflictFilter(naming));
    for (const std::vector<std::string>& values : search.Values()) {
        const std::string name = values.empty() ? "?" : values.front();
        names.push_back(Utf8FromAnsi(name.substr(0, name.find('\n'))));
    }
    // More than a server hands out at once are shown as far as they came.
    return names.empty() ? directory.Connection().Outcome(code) : Result();
}

}  // namespace depot::ctl
