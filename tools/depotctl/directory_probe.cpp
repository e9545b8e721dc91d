#include "depotctl/directory_probe.h"

#include <algorithm>

#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/network.h"
#include "directory/paged_search.h"
#include "model/depot_paths.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kTlsFromTheStart = 2;

bool Defines(const std::vector<std::string>& definitions, const std::string& name) {
    const std::string quoted = "'" + name + "'";
    return std::any_of(definitions.begin(), definitions.end(), [&](const std::string& definition) {
        return FindNoCase(definition, quoted) != std::string::npos;
    });
}

std::optional<Problem> UnlessDone(std::uint32_t code) {
    if (code == LDAP_SUCCESS) return std::nullopt;
    return ProblemFor(code);
}

}  // namespace

Problem ProblemFor(std::uint32_t code) {
    const DirectoryWords words = WordsFor(code);
    return {words.text, words.advice, code, MeansUnreachable(code)};
}

std::optional<Problem> DirectoryProbe::Reach() const {
    if (client_.library == nullptr) {
        return Problem{"this machine has no directory client (wldap32.dll)",
                       "repair the Windows installation", LDAP_SERVER_DOWN, true};
    }
    if (location_.host.empty()) {
        return Problem{"no server is named", "set Host", LDAP_PARAM_ERROR, true};
    }
    const std::optional<std::string> reason =
        WhyNobodyAnswers(location_.host, location_.port, location_.connectTimeout);
    if (!reason) return std::nullopt;
    return Problem{*reason, "check Host and Port, the network, and that the server runs",
                   LDAP_SERVER_DOWN, true};
}

std::optional<Problem> DirectoryProbe::LogOn(const std::string& userName,
                                             const std::string& password) {
    if (auto problem = Open()) return problem;
    return UnlessDone(Bind(userName, password));
}

std::optional<Problem> DirectoryProbe::Open() {
    char* const host = ClientText(location_.host);
    LDAP* const session = location_.security == kTlsFromTheStart
                              ? client_.ldap_sslinit(host, location_.port, 1)
                              : client_.ldap_init(host, location_.port);
    session_ = UniqueLdap(session, {&client_});
    if (!session_) return ProblemFor(LDAP_SERVER_DOWN);
    ULONG version = location_.version;
    const std::uint32_t code =
        client_.ldap_set_option(session, LDAP_OPT_PROTOCOL_VERSION, &version);
    if (code != LDAP_SUCCESS) return ProblemFor(code);
    return Secure();
}

std::optional<Problem> DirectoryProbe::Secure() {
    if (location_.security == 0 || location_.security == kTlsFromTheStart) return std::nullopt;
    ULONG serverCode = LDAP_SUCCESS;
    const std::uint32_t code =
        client_.ldap_start_tls_s(session_.get(), &serverCode, nullptr, nullptr, nullptr);
    if (code == LDAP_SUCCESS) return std::nullopt;
    return Problem{
        "the connection cannot be secured with StartTLS (LDAP " + std::to_string(code) + ")",
        "check the server's certificate, or set Security", code, MeansUnreachable(code)};
}

std::uint32_t DirectoryProbe::Bind(const std::string& userName, const std::string& password) {
    LDAP* const session = session_.get();
    switch (location_.authentication) {
        case kAnonymousAuthentication:
            return client_.ldap_simple_bind_s(session, nullptr, nullptr);
        case kNegotiateAuthentication:
            return client_.ldap_bind_s(session, nullptr, nullptr, LDAP_AUTH_NEGOTIATE);
        default:
            return client_.ldap_bind_s(session, ClientText(userName), ClientText(password),
                                       LDAP_AUTH_SIMPLE);
    }
}

std::string DirectoryProbe::BaseDN() const {
    return names_.PathToDN(ExpandedPath(location_));
}

DirectoryProbe::Answer DirectoryProbe::Search(const std::string& dn, ULONG scope,
                                              const std::string& attribute) {
    char all[] = "(objectClass=*)";
    char* attributes[] = {ClientText(attribute), nullptr};
    LDAPMessage* found = nullptr;
    const std::uint32_t code =
        client_.ldap_search_s(session_.get(), ClientText(dn), scope, all, attributes, 0, &found);
    return {code, UniqueLdapMessage(found, {&client_})};
}

std::optional<Problem> DirectoryProbe::FindBase() {
    const std::string base = BaseDN();
    const std::uint32_t code = Search(base, LDAP_SCOPE_BASE, "1.1").code;
    if (code != LDAP_NO_SUCH_OBJECT) return UnlessDone(code);
    return Problem{"the base \"" + Utf8FromAnsi(base) + "\" is not there, or may not be seen",
                   "create the entry, correct Path, or grant the right to read it", code, false};
}

std::optional<Problem> DirectoryProbe::ListBase(bool& inPages) {
    const std::uint32_t code = Search(BaseDN(), LDAP_SCOPE_ONELEVEL, "1.1").code;
    inPages = code == LDAP_SIZELIMIT_EXCEEDED;
    return UnlessDone(inPages ? ListBaseInPages() : code);
}

std::uint32_t DirectoryProbe::ListBaseInPages() {
    const PagingClient paging(client_.library);
    PagedSearch pages(client_, paging, session_.get());
    if (!pages.IsOffered()) return LDAP_SIZELIMIT_EXCEEDED;
    std::uint32_t code = LDAP_SUCCESS;
    do {
        UniqueLdapMessage page;
        code = pages.Next({BaseDN(), "(objectClass=*)", {"1.1"}}, page);
    } while (code == LDAP_SUCCESS && pages.HasMore());
    return code;
}

std::vector<std::string> DirectoryProbe::Values(const std::string& dn,
                                                const std::string& attribute) {
    const Answer answer = Search(dn, LDAP_SCOPE_BASE, attribute);
    std::vector<std::string> texts;
    LDAPMessage* const entry = answer.code == LDAP_SUCCESS
                                   ? client_.ldap_first_entry(session_.get(), answer.message.get())
                                   : nullptr;
    if (entry == nullptr) return texts;
    const UniqueLdapValues values(
        client_.ldap_get_values(session_.get(), entry, ClientText(attribute)), {&client_});
    for (char** value = values.get(); value != nullptr && *value != nullptr; ++value) {
        texts.emplace_back(*value);
    }
    return texts;
}

std::optional<std::vector<std::string>> DirectoryProbe::MissingFromSchema() {
    const std::vector<std::string> subentry = Values({}, "subschemaSubentry");
    if (subentry.empty()) return std::nullopt;
    const std::vector<std::string> classes = Values(subentry.front(), "objectClasses");
    const std::vector<std::string> attributes = Values(subentry.front(), "attributeTypes");
    if (classes.empty() || attributes.empty()) return std::nullopt;
    std::vector<std::string> missing;
    for (const std::string& name : {names_.Schema().FolderClass(), names_.Schema().FileClass()}) {
        if (!Defines(classes, name)) missing.push_back(Utf8FromAnsi(name));
    }
    for (const std::string& name :
         {names_.Schema().NamingNames().folder, names_.Schema().NamingNames().file,
          names_.Schema().ContentsAttribute()}) {
        if (!Defines(attributes, name)) missing.push_back(Utf8FromAnsi(name));
    }
    return missing;
}

}  // namespace depot::ctl
