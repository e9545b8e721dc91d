#include "model/help_texts.h"

#include <algorithm>
#include <iterator>

#include "model/localization.h"
#include "platform/directory_client.h"
#include "resource_ids.h"

namespace depot {
namespace {

struct HelpText {
    std::uint32_t code;
    unsigned id;
};

constexpr HelpText kHelpTexts[] = {
    {LDAP_INVALID_CREDENTIALS, IDS_CREDENTIALS_REFUSED},
    {LDAP_SERVER_DOWN, IDS_CREDENTIALS_UNREACHABLE},
    {LDAP_TIMEOUT, IDS_CREDENTIALS_UNREACHABLE},
    {LDAP_CONNECT_ERROR, IDS_CREDENTIALS_UNREACHABLE},
    {LDAP_STRONG_AUTH_REQUIRED, IDS_CREDENTIALS_STRONGER},
    {LDAP_CONFIDENTIALITY_REQUIRED, IDS_CREDENTIALS_SECURED},
    {LDAP_INSUFFICIENT_RIGHTS, IDS_CREDENTIALS_RIGHTS},
    {LDAP_UNWILLING_TO_PERFORM, IDS_CREDENTIALS_UNWILLING},
    {LDAP_BUSY, IDS_CREDENTIALS_BUSY},
    {LDAP_UNAVAILABLE, IDS_CREDENTIALS_BUSY},
};

}  // namespace

std::optional<std::string> HelpForDirectoryCode(std::uint32_t code) {
    const auto help = std::find_if(std::begin(kHelpTexts), std::end(kHelpTexts),
                                   [code](const HelpText& known) { return known.code == code; });
    return help == std::end(kHelpTexts) ? std::nullopt : LocalizedText(help->id);
}

}  // namespace depot
