#include "depotctl/hidden_entries.h"

#include "depotctl/encoding.h"
#include "directory/ldap_handles.h"

namespace depot::ctl {
namespace {

constexpr char kObjectClass[] = "objectClass";

// A line feed parts the name of such an entry from its identifier, or an attribute marks it. Some
// servers hide those that are marked from whoever does not ask for their class.
std::string ConflictFilter(const std::string& attribute) {
    return "(|(" + attribute + "=*\\0aCNF:*)(&(objectClass=ldapSubEntry)(nsds5ReplConflict=*)))";
}

// The entries of one search, for which one attribute is asked.
class Found {
public:
    Found(CLDAPItems& directory, std::string attribute)
        : client_(directory.Client()),
          session_(directory.Connection().Handle()),
          attribute_(std::move(attribute)) {}

    std::uint32_t Search(std::string dn, ULONG scope, std::string filter) {
        char* attributes[] = {attribute_.data(), nullptr};
        LDAPMessage* found = nullptr;
        const std::uint32_t code =
            client_.ldap_search_s(session_, dn.data(), scope, filter.data(), attributes, 0, &found);
        message_ = UniqueLdapMessage(found, {&client_});
        return code;
    }

    // Calls `take` with the first value of each entry, or with null.
    template <class Take>
    void ForEach(const Take& take) {
        if (!message_) return;
        LDAPMessage* entry = client_.ldap_first_entry(session_, message_.get());
        for (; entry != nullptr; entry = client_.ldap_next_entry(session_, entry)) {
            const UniqueLdapValues values(
                client_.ldap_get_values(session_, entry, attribute_.data()), {&client_});
            take(values ? *values : nullptr);
        }
    }

private:
    DirectoryClient& client_;
    LDAP* const session_;
    std::string attribute_;
    UniqueLdapMessage message_;
};

}  // namespace

bool HidesClasses(CLDAPItems& directory, const std::string& dn) {
    Found found(directory, kObjectClass);
    static_cast<void>(found.Search(dn, LDAP_SCOPE_ONELEVEL, "(objectClass=*)"));
    bool hides = false;
    found.ForEach([&](const char* value) { hides = hides || value == nullptr; });
    return hides;
}

Result FindReplicationConflicts(CLDAPItems& directory, const std::string& dn,
                                std::vector<std::string>& names) {
    const std::string naming = directory.Schema().NamingNames().file;
    Found found(directory, naming);
    const std::uint32_t code = found.Search(dn, LDAP_SCOPE_SUBTREE, ConflictFilter(naming));
    found.ForEach([&](const char* value) {
        const std::string name = value != nullptr ? value : "?";
        names.push_back(Utf8FromAnsi(name.substr(0, name.find('\n'))));
    });
    // More than a server hands out at once are shown as far as they came.
    return names.empty() ? directory.Connection().Outcome(code) : Result();
}

}  // namespace depot::ctl
