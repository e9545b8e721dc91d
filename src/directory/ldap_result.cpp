#include "directory/ldap_result.h"

#include "platform/directory_client.h"

namespace depot {

Reason ReasonOf(std::uint32_t code) {
    switch (code) {
        case LDAP_NO_SUCH_OBJECT:
            return Reason::kMissing;
        case LDAP_ALREADY_EXISTS:
            return Reason::kExists;
        case kContentsChanged:
            return Reason::kChanged;
        case LDAP_NOT_ALLOWED_ON_NONLEAF:
            return Reason::kNotEmpty;
        case LDAP_NO_SUCH_ATTRIBUTE:
            return Reason::kUnseen;
        case LDAP_INVALID_DN_SYNTAX:
        case LDAP_NAMING_VIOLATION:
            return Reason::kBadName;
        case LDAP_USER_CANCELLED:
            return Reason::kStopped;
        case LDAP_SERVER_DOWN:
        case LDAP_TIMEOUT:
        case LDAP_CONNECT_ERROR:
            return Reason::kUnreachable;
        case LDAP_PARAM_ERROR:
            return Reason::kInvalid;
        default:
            return Reason::kRefused;
    }
}

bool CredentialsMayHelp(std::uint32_t code) {
    switch (code) {
        case LDAP_PROTOCOL_ERROR:
        case LDAP_AUTH_METHOD_NOT_SUPPORTED:
        case LDAP_STRONG_AUTH_REQUIRED:
        case LDAP_CONFIDENTIALITY_REQUIRED:
        case LDAP_BUSY:
        case LDAP_UNAVAILABLE:
        case LDAP_SERVER_DOWN:
        case LDAP_LOCAL_ERROR:
        case LDAP_TIMEOUT:
        case LDAP_NO_MEMORY:
        case LDAP_CONNECT_ERROR:
            return false;
        default:
            return true;
    }
}

}  // namespace depot
