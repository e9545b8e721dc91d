#include "directory/root_entry.h"

#include "directory/paged_search.h"

namespace depot {

std::uint32_t RootEntry::Read(std::vector<std::string> attributes, std::optional<LONG> seconds) {
    std::vector<char*> names;
    for (std::string& attribute : attributes) names.push_back(attribute.data());
    names.push_back(nullptr);
    std::string noName, filter = kAnyEntry;
    l_timeval limit = {seconds.value_or(0), 0};
    LDAPMessage* message = nullptr;
    const std::uint32_t code =
        seconds ? client_.ldap_search_st(connection_, noName.data(), LDAP_SCOPE_BASE, filter.data(),
                                         names.data(), 0, &limit, &message)
                : client_.ldap_search_s(connection_, noName.data(), LDAP_SCOPE_BASE, filter.data(),
                                        names.data(), 0, &message);
    result_.reset(message);
    return code;
}

std::vector<std::string> RootEntry::Values(const std::string& attribute) const {
    std::vector<std::string> texts;
    LDAPMessage* const entry =
        result_ ? client_.ldap_first_entry(connection_, result_.get()) : nullptr;
    if (entry == nullptr) return texts;
    const UniqueLdapValues values(
        client_.ldap_get_values(connection_, entry, ClientText(attribute)), {&client_});
    for (char** value = values.get(); value != nullptr && *value != nullptr; ++value) {
        texts.emplace_back(*value);
    }
    return texts;
}

}  // namespace depot
