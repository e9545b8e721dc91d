#include "depotctl/directory_words.h"

#include <algorithm>
#include <iterator>

#include "depotctl/encoding.h"
#include "model/help_texts.h"
#include "model/localization.h"
#include "platform/directory_client.h"

namespace depot::ctl {
namespace {

// The system's headers have no name for it.
constexpr std::uint32_t kCertificateRefused = 112;

struct Row {
    std::uint32_t code;
    const char* text;
    const char* advice;
};

constexpr Row kRows[] = {
    {LDAP_OPERATIONS_ERROR, "the server failed in the operation", "look into the server's log"},
    {LDAP_PROTOCOL_ERROR, "the server does not speak this protocol version", "set Version to 3"},
    {LDAP_TIMELIMIT_EXCEEDED, "the server's time limit was exceeded",
     "raise the server's time limit for users"},
    {LDAP_SIZELIMIT_EXCEEDED, "the server returns fewer entries than there are: its size limit",
     "raise the server's size limit for users above the number of entries of the largest folder"},
    {LDAP_REFERRAL, "the entry is kept by another server",
     "name that server as Host, or set FollowReferrals to 1 where nothing is secured"},
    {LDAP_STRONG_AUTH_REQUIRED, "the server wants a stronger way of logging on",
     "set Authentication or Security"},
    {LDAP_CONFIDENTIALITY_REQUIRED, "the server wants a secured connection",
     "set Security to 1 (StartTLS) or 2 (LDAPS)"},
    {LDAP_NO_SUCH_ATTRIBUTE, "the contents may not be read",
     "grant the user the right to read the entries' contents"},
    {LDAP_UNDEFINED_TYPE, "the server does not know an attribute of profile files",
     "load the schema into the server"},
    {LDAP_ADMIN_LIMIT_EXCEEDED, "a limit of the server was exceeded; the file may be too large",
     "raise the server's limit for the size of a request or a value"},
    {LDAP_CONSTRAINT_VIOLATION,
     "the server does not accept the value; the name may be too long or the file too large",
     "choose a shorter name, or raise the server's limits"},
    {LDAP_INVALID_SYNTAX, "the server does not accept the value",
     "load the schema into the server"},
    {LDAP_NO_SUCH_OBJECT, "there is no such entry",
     "check the path; the base must exist in the directory"},
    {LDAP_INVALID_DN_SYNTAX, "the name is not a valid distinguished name", "correct the path"},
    {LDAP_INAPPROPRIATE_AUTH, "the server does not allow this way of logging on",
     "set Authentication"},
    {LDAP_INVALID_CREDENTIALS, "the user name or the password is wrong",
     "correct Username and Password"},
    {LDAP_INSUFFICIENT_RIGHTS, "the rights do not suffice",
     "grant the user rights in the server's access rules"},
    {LDAP_BUSY, "the server is busy", "try again later"},
    {LDAP_UNAVAILABLE, "the server is not available", "try again later"},
    {LDAP_UNWILLING_TO_PERFORM, "the server is not willing to do this",
     "look into the server's log"},
    {LDAP_NAMING_VIOLATION, "the name does not fit the entry", "choose another name"},
    {LDAP_OBJECT_CLASS_VIOLATION, "the server does not accept an entry of this class",
     "load the schema into the server; its classes must allow these entries"},
    {LDAP_NOT_ALLOWED_ON_NONLEAF, "the entry has others below it", "remove those first"},
    {LDAP_NOT_ALLOWED_ON_RDN, "the name of the entry cannot be changed this way",
     "choose another name"},
    {LDAP_ALREADY_EXISTS, "there is an entry of that name already", "choose another name"},
    {LDAP_SERVER_DOWN, "the server cannot be reached",
     "check Host and Port, and that the server runs"},
    {LDAP_LOCAL_ERROR, "a local file or folder could not be read or written",
     "check the local path"},
    {LDAP_TIMEOUT, "the server did not answer in time", "check the network and ConnectTimeout"},
    {LDAP_FILTER_ERROR, "the search was not understood", "check the class and attribute names"},
    {LDAP_USER_CANCELLED, "the operation was cancelled", ""},
    {LDAP_PARAM_ERROR, "the path cannot be used for this", "check both paths"},
    {LDAP_CONNECT_ERROR, "the server cannot be reached",
     "check Host and Port, and that the server runs"},
    {kCertificateRefused, "the server's certificate is not accepted",
     "check the server's certificate"},
};

constexpr char kEnglish[] = "eng";

constexpr std::uint32_t kUnreachable[] = {LDAP_BUSY, LDAP_UNAVAILABLE, LDAP_SERVER_DOWN,
                                          LDAP_TIMEOUT, LDAP_CONNECT_ERROR};

}  // namespace

DirectoryWords WordsFor(std::uint32_t code) {
    const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                  [code](const Row& known) { return known.code == code; });
    const std::string number = " (LDAP " + std::to_string(code) + ")";
    if (row == std::end(kRows)) return {"the directory refused it" + number, {}};
    return {row->text + number, row->advice};
}

std::string HelpFor(std::uint32_t code, const std::string& advice) {
    if (LanguageCode() == kEnglish) return advice;
    const std::optional<std::string> text = HelpForDirectoryCode(code);
    return text ? Utf8FromAnsi(*text) : advice;
}

bool MeansUnreachable(std::uint32_t code) {
    return std::find(std::begin(kUnreachable), std::end(kUnreachable), code) !=
           std::end(kUnreachable);
}

}  // namespace depot::ctl
