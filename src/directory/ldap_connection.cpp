// Connecting, binding, asking for credentials and letting go.
#include "directory/ldap_items.h"

namespace depot {
namespace {

// The client's own number for the longest time that sending a request may take.
constexpr int kSendTimeoutOption = 0x42;

constexpr std::uint32_t kTlsFromTheStart = 2;

// Why a connection failed, for whoever debugs it: users see the code's own message only.
void Trace(const char* stage, std::uint32_t code) {
    OutputDebugStringA((std::string(stage) + std::to_string(code) + "\n").c_str());
}

}  // namespace

int CLDAPItems::Connect(const std::string& host, const std::string& password,
                        const std::string& userName, std::string* errorText) {
    if (IsConnected()) return 1;
    if (!IsUsable()) {
        ReportError(LDAP_SERVER_DOWN, errorText);
        return 0;
    }
    if (!OpenConnection(host, errorText)) return 0;
    const std::uint32_t code = Bind(password, userName);
    if (code != LDAP_SUCCESS) {
        Trace("ldap_bind ", code);
        ReportError(code, errorText);
        return FinishFailedBind(password, userName, errorText);
    }
    SetSharedError(code);
    failedCredentials_.reset();
    connected_ = 1;
    return 1;
}

int CLDAPItems::ConnectLocation(std::string* errorText) {
    return Connect(GetHost(), GetPassword(), GetUserName(), errorText);
}

bool CLDAPItems::OpenConnection(const std::string& host, std::string* errorText) {
    // Other code may still work on the handle of a bind that failed.
    if (handle_) replacedHandles_.push_back(std::move(handle_));
    char* const server = ClientText(host);
    // Some clients answer with the system's last error, which may be older than the call.
    ::SetLastError(ERROR_SUCCESS);
    handle_ = Own(location_->security == kTlsFromTheStart
                      ? client_.ldap_sslinit(server, location_->port, 1)
                      : client_.ldap_init(server, location_->port));
    if (!handle_) {
        const std::uint32_t code = client_.LdapGetLastError();
        // The client gives no reason for an empty host name; without one the failure would be
        // silent.
        FailStage("ldap_init ", code == LDAP_SUCCESS ? std::uint32_t{LDAP_SERVER_DOWN} : code,
                  errorText);
        return false;
    }
    return SetOptions(errorText) && Secure(errorText);
}

bool CLDAPItems::SetOptions(std::string* errorText) {
    ULONG version = location_->version;
    std::uint32_t code =
        client_.ldap_set_option(handle_.get(), LDAP_OPT_PROTOCOL_VERSION, &version);
    if (code != LDAP_SUCCESS) {
        FailStage("ldap_set_option PROTOCOL_VERSION ", code, errorText);
        return false;
    }
    // A referral may lead from a secured server to one that is not.
    if (location_->security != 0) {
        code = client_.ldap_set_option(handle_.get(), LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
        if (code != LDAP_SUCCESS) {
            FailStage("ldap_set_option REFERRALS ", code, errorText);
            return false;
        }
    }
    const std::uint32_t timeout = location_->connectTimeout;
    // A server that accepts and then says nothing must not hold a call for ever. Clients that do
    // not know one of these limits go without it.
    ULONG seconds = timeout == 0 ? CDepotPath::kDefaultConnectTimeout : timeout;
    client_.ldap_set_option(handle_.get(), LDAP_OPT_TIMELIMIT, &seconds);
    client_.ldap_set_option(handle_.get(), kSendTimeoutOption, &seconds);
    if (timeout == CDepotPath::kDefaultConnectTimeout) return true;
    l_timeval limit = {static_cast<LONG>(timeout), 0};
    code = client_.ldap_connect(handle_.get(), &limit);
    if (code != LDAP_SUCCESS) FailStage("ldap_connect ", code, errorText);
    return code == LDAP_SUCCESS;
}

bool CLDAPItems::Secure(std::string* errorText) {
    // Settings of an unknown kind never end in an open connection.
    if (location_->security == 0 || location_->security == kTlsFromTheStart) return true;
    ULONG serverCode = LDAP_SUCCESS;
    const std::uint32_t code =
        client_.ldap_start_tls_s(handle_.get(), &serverCode, nullptr, nullptr, nullptr);
    if (code != LDAP_SUCCESS) FailStage("ldap_start_tls ", code, errorText);
    return code == LDAP_SUCCESS;
}

std::uint32_t CLDAPItems::Bind(const std::string& password, const std::string& userName) {
    std::uint32_t code = LDAP_SUCCESS;
    switch (location_->authentication) {
        case kAnonymousAuthentication:
            code = client_.ldap_simple_bind_s(handle_.get(), nullptr, nullptr);
            break;
        case kNegotiateAuthentication:
            code = client_.ldap_bind_s(handle_.get(), nullptr, nullptr, LDAP_AUTH_NEGOTIATE);
            break;
        default:
            return client_.ldap_bind_s(handle_.get(), ClientText(userName), ClientText(password),
                                       LDAP_AUTH_SIMPLE);
    }
    // No other credentials would help here.
    if (code != LDAP_SUCCESS) TurnPromptingOff();
    return code;
}

int CLDAPItems::FinishFailedBind(const std::string& password, const std::string& userName,
                                 std::string* errorText) {
    if (PromptingIsOff()) {
        // To a simple bind this is the same as a user who cancelled.
        const bool fixedCredentials = location_->authentication == kAnonymousAuthentication ||
                                      location_->authentication == kNegotiateAuthentication;
        if (!fixedCredentials) {
            Fail(LDAP_USER_CANCELLED, errorText);
        }
        return Disconnect();
    }
    if (lastAttempt_) return Disconnect();
    failedCredentials_ = {userName, password};
    return PromptAndConnect(errorText);
}

int CLDAPItems::FailStage(const char* stage, std::uint32_t code, std::string* errorText) {
    Trace(stage, code);
    ReportError(code, errorText);
    return Disconnect();
}

int CLDAPItems::Disconnect() {
    handle_.reset();
    connected_ = 0;
    usable_ = 0;
    return 0;
}

int CLDAPItems::Close() {
    if (!IsConnected()) return 1;
    connected_ = 0;
    return client_.ldap_unbind_s(handle_.release()) == LDAP_SUCCESS ? 1 : 0;
}

bool CLDAPItems::LeaveConnections() {
    bool any = handle_.release() != nullptr;
    for (UniqueLdap& replaced : replacedHandles_) any = replaced.release() != nullptr || any;
    connected_ = 0;
    return any;
}

int CLDAPItems::PromptAndConnect(std::string* errorText) {
    if (PromptingIsOff()) return Fail(LDAP_USER_CANCELLED, errorText);
    const PromptResult answer = AskForCredentials();
    if (answer == PromptResult::kCancelled) {
        ReportError(LDAP_USER_CANCELLED, errorText);
        return 0;
    }
    // Where nothing was asked, nothing but the same failure would follow, again and again.
    lastAttempt_ = answer == PromptResult::kNothingAsked &&
                   failedCredentials_ == std::pair(GetUserName(), GetPassword());
    const int result = ConnectLocation(errorText);
    lastAttempt_ = false;
    return result;
}

int CLDAPItems::PromptForCredentials() {
    return AskForCredentials() == PromptResult::kCancelled ? 0 : 1;
}

CLDAPItems::PromptResult CLDAPItems::AskForCredentials() {
    if (location_->authentication != kSimpleAuthentication) return PromptResult::kNothingAsked;
    Credentials credentials = {GetHost(), GetUserName(), GetPassword()};
    if (credentials.userName.empty()) credentials.userName = GetSharedUserName();
    if (credentials.password.empty()) credentials.password = GetSharedPassword();
    if (NothingToAsk(credentials)) return PromptResult::kNothingAsked;
    CredentialsPrompt* const prompt = Prompt();
    if (prompt == nullptr || !prompt->Show(credentials)) {
        location_->password.clear();
        if (prompt == nullptr || prompt->CancelIsForAll()) TurnPromptingOff();
        return PromptResult::kCancelled;
    }
    SetUserName(credentials.userName);
    SetPassword(credentials.password);
    return PromptResult::kConfirmed;
}

bool CLDAPItems::NothingToAsk(const Credentials& credentials) {
    if (credentials.userName.empty() || credentials.password.empty()) return false;
    location_->username = credentials.userName;
    location_->password = credentials.password;
    const DirectoryInfo* const info = info_.Access();
    return info == nullptr || info->lastError == 0;
}

}  // namespace depot
