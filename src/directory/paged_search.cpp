#include "directory/paged_search.h"

#include <algorithm>
#include <memory>

#include "directory/client_support.h"
#include "directory/root_entry.h"

namespace depot {
namespace {

constexpr char kPagingControl[] = "1.2.840.113556.1.4.319";
constexpr char kOfferedControls[] = "supportedControl";

// A server may send pages without entries; one that sends nothing else would never end.
constexpr int kMaxEmptyPages = 100;

template <class Owned, auto kRelease>
using OwnedByPaging = std::unique_ptr<Owned, ClientReleaser<PagingClient, kRelease>>;
using UniqueControl = OwnedByPaging<LDAPControlA, &PagingClient::ldap_control_free>;
using UniqueControls = OwnedByPaging<LDAPControlA*, &PagingClient::ldap_controls_free>;

// Whether a server says that it gives no pages to this user or of this size: of the first page in
// whatever way, later in one of these. Codes from "server down" on are those of the client itself.
bool IsRefusal(std::uint32_t code, bool isFirstPage) {
    switch (code) {
        case LDAP_PROTOCOL_ERROR:
        case LDAP_ADMIN_LIMIT_EXCEEDED:
        case LDAP_UNAVAILABLE_CRIT_EXTENSION:
        case LDAP_UNWILLING_TO_PERFORM:
            return true;
        default:
            return isFirstPage && code < LDAP_SERVER_DOWN;
    }
}

}  // namespace

bool PagedSearch::IsOffered() const {
    if (!paging_.IsComplete()) return false;
    RootEntry server(client_, connection_);
    if (server.Read({kOfferedControls}) != LDAP_SUCCESS) return false;
    const std::vector<std::string> offered = server.Values(kOfferedControls);
    return std::find(offered.begin(), offered.end(), kPagingControl) != offered.end();
}

std::uint32_t PagedSearch::Next(const ListingSearch& search, UniqueLdapMessage& page) {
    const bool isFirstPage = cookie_ == nullptr;
    std::uint32_t code = Fetch(search, page);
    if (code == LDAP_SUCCESS) code = ReadCookie(page.get());
    if (code != LDAP_SUCCESS) {
        page.reset();
        return IsRefusal(code, isFirstPage) ? std::uint32_t{LDAP_SIZELIMIT_EXCEEDED} : code;
    }
    const bool empty = client_.ldap_first_entry(connection_, page.get()) == nullptr;
    emptyPages_ = empty ? emptyPages_ + 1 : 0;
    return emptyPages_ > kMaxEmptyPages ? LDAP_SIZELIMIT_EXCEEDED : LDAP_SUCCESS;
}

std::uint32_t PagedSearch::Fetch(const ListingSearch& search, UniqueLdapMessage& page) const {
    // Critical: a server that cannot answer in pages refuses instead of sending what it can.
    constexpr UCHAR kCritical = 1;
    LDAPControlA* created = nullptr;
    const ULONG code = paging_.ldap_create_page_control(connection_, kEntriesAPage, cookie_.get(),
                                                        kCritical, &created);
    const UniqueControl control(created, {&paging_});
    if (code != LDAP_SUCCESS) return code;
    std::vector<char*> names;
    for (const std::string& attribute : search.attributes) names.push_back(ClientText(attribute));
    names.push_back(nullptr);
    LDAPControlA* controls[] = {control.get(), nullptr};
    LDAPMessage* message = nullptr;
    const std::uint32_t searched = paging_.ldap_search_ext_s(
        connection_, ClientText(search.base), LDAP_SCOPE_ONELEVEL, ClientText(search.filter),
        names.data(), 0, controls, nullptr, nullptr, 0, &message);
    page = UniqueLdapMessage(message, {&client_});
    return searched;
}

std::uint32_t PagedSearch::ReadCookie(LDAPMessage* page) {
    ULONG serverCode = LDAP_SUCCESS;
    LDAPControlA** received = nullptr;
    const ULONG parsed = paging_.ldap_parse_result(connection_, page, &serverCode, nullptr, nullptr,
                                                   nullptr, &received, FALSE);
    const UniqueControls controls(received, {&paging_});
    if (parsed != LDAP_SUCCESS) return parsed;
    if (serverCode != LDAP_SUCCESS) return serverCode;
    ULONG estimate = 0;
    berval* cookie = nullptr;
    const ULONG code =
        paging_.ldap_parse_page_control(connection_, controls.get(), &estimate, &cookie);
    cookie_.reset(cookie);
    return code;
}

}  // namespace depot
