// Connecting, binding, asking for credentials and letting go.
#include <algorithm>

#include "directory/ldap_items.h"

namespace depot {
namespace {

// The client's own number for the longest time that sending a request may take.
constexpr int kSendTimeoutOption = 0x42;

// A day: nobody waits longer, and it is far from what a LONG holds in milliseconds.
constexpr std::uint32_t kLongestLimit = 24 * 60 * 60;

constexpr std::uint32_t kTlsFromTheStart = 2;

// Returns the code. Why a connection failed is for whoever debugs it: users see the code's own
// message only.
std::uint32_t Traced(const char* stage, std::uint32_t code) {
    if (code != LDAP_SUCCESS) {
        OutputDebugStringA((std::string(stage) + std::to_string(code) + "\n").c_str());
    }
    return code;
}

bool IsComplete(const Credentials& credentials) {
    return !credentials.userName.empty() && !credentials.password.empty();
}

bool IsSameLogOn(const Credentials& one, const Credentials& other) {
    return one.userName == other.userName && one.password == other.password;
}

}  // namespace

int CLDAPItems::Connect(const std::string& host, const std::string& password,
                        const std::string& userName, std::string* errorText) {
    if (IsConnected()) return 1;
    if (!IsUsable()) {
        ReportError(LDAP_SERVER_DOWN, errorText);
        return 0;
    }
    Attempt attempt = {{host, userName, password}};
    do {
        const std::uint32_t opened = OpenConnection(attempt.credentials.server);
        if (opened != LDAP_SUCCESS) {
            ReportError(opened, errorText);
            return Disconnect();
        }
        const std::uint32_t bound = Bind(attempt.credentials);
        if (bound == LDAP_SUCCESS) return FinishBind();
        // No credentials would help there.
        if (BindsWithoutCredentials()) TurnPromptingOff();
        ReportError(bound, errorText);
    } while (FindOtherCredentials(attempt, errorText));
    return 0;
}

int CLDAPItems::ConnectLocation(std::string* errorText) {
    return Connect(GetHost(), GetPassword(), GetUserName(), errorText);
}

int CLDAPItems::ConnectQuietly() {
    if (IsConnected()) return 1;
    if (!IsUsable()) return Fail(LDAP_SERVER_DOWN, nullptr);
    const Credentials known = KnownCredentials();
    const Credentials own = {GetHost(), GetUserName(), GetPassword()};
    lastError_ = OpenConnection(own.server);
    if (lastError_ == LDAP_SUCCESS) lastError_ = Bind(IsComplete(known) ? known : own);
    return lastError_ == LDAP_SUCCESS ? FinishBind() : Disconnect();
}

std::uint32_t CLDAPItems::OpenConnection(const std::string& host) {
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
        return Traced("ldap_init ", code == LDAP_SUCCESS ? std::uint32_t{LDAP_SERVER_DOWN} : code);
    }
    std::uint32_t code = SetOptions();
    if (code == LDAP_SUCCESS) code = ReachServer();
    return code == LDAP_SUCCESS ? Secure() : code;
}

std::uint32_t CLDAPItems::SetOptions() {
    ULONG version = location_->version;
    std::uint32_t code =
        client_.ldap_set_option(handle_.get(), LDAP_OPT_PROTOCOL_VERSION, &version);
    if (code != LDAP_SUCCESS) return Traced("ldap_set_option PROTOCOL_VERSION ", code);
    // A referral may lead from a secured server to one that is not.
    if (location_->security != 0) {
        code = client_.ldap_set_option(handle_.get(), LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
        if (code != LDAP_SUCCESS) return Traced("ldap_set_option REFERRALS ", code);
    }
    // A server that accepts and then says nothing must not hold a call for ever, but a short
    // timeout for connecting must not end a long search either. Clients that do not know one of
    // these limits go without it.
    ULONG seconds = std::clamp<ULONG>(location_->connectTimeout, CDepotPath::kDefaultConnectTimeout,
                                      kLongestLimit);
    client_.ldap_set_option(handle_.get(), LDAP_OPT_TIMELIMIT, &seconds);
    client_.ldap_set_option(handle_.get(), kSendTimeoutOption, &seconds);
    return LDAP_SUCCESS;
}

std::uint32_t CLDAPItems::ReachServer() {
    const std::uint32_t timeout = location_->connectTimeout;
    if (timeout == CDepotPath::kDefaultConnectTimeout) return LDAP_SUCCESS;
    l_timeval limit = {static_cast<LONG>(std::min(timeout, kLongestLimit)), 0};
    return Traced("ldap_connect ", client_.ldap_connect(handle_.get(), &limit));
}

std::uint32_t CLDAPItems::Secure() {
    // Settings of an unknown kind never end in an open connection.
    if (location_->security == 0 || location_->security == kTlsFromTheStart) return LDAP_SUCCESS;
    ULONG serverCode = LDAP_SUCCESS;
    return Traced("ldap_start_tls ",
                  client_.ldap_start_tls_s(handle_.get(), &serverCode, nullptr, nullptr, nullptr));
}

std::uint32_t CLDAPItems::Bind(const Credentials& credentials) {
    LDAP* const connection = handle_.get();
    std::uint32_t code = LDAP_SUCCESS;
    switch (location_->authentication) {
        case kAnonymousAuthentication:
            code = client_.ldap_simple_bind_s(connection, nullptr, nullptr);
            break;
        case kNegotiateAuthentication:
            code = client_.ldap_bind_s(connection, nullptr, nullptr, LDAP_AUTH_NEGOTIATE);
            break;
        default:
            code = client_.ldap_bind_s(connection, ClientText(credentials.userName),
                                       ClientText(credentials.password), LDAP_AUTH_SIMPLE);
    }
    return Traced("ldap_bind ", code);
}

bool CLDAPItems::BindsWithoutCredentials() const {
    return location_->authentication == kAnonymousAuthentication ||
           location_->authentication == kNegotiateAuthentication;
}

int CLDAPItems::FinishBind() {
    SetSharedError(LDAP_SUCCESS);
    connected_ = 1;
    return 1;
}

bool CLDAPItems::FindOtherCredentials(Attempt& attempt, std::string* errorText) {
    if (BindsWithoutCredentials()) return Disconnect() != 0;
    switch (AskForCredentials(PromptUnlessOff(), &attempt)) {
        case PromptResult::kCancelled:
            ReportError(LDAP_USER_CANCELLED, errorText);
            return false;
        case PromptResult::kNobodyAsked:
            // To a simple bind this is the same as a user who cancelled.
            Fail(LDAP_USER_CANCELLED, errorText);
            return Disconnect() != 0;
        case PromptResult::kNothingAsked:
            // Nothing but the same failure would follow, again and again.
            if (attempt.isUnasked) return Disconnect() != 0;
            attempt.isUnasked = true;
            break;
        case PromptResult::kConfirmed:
            attempt.isUnasked = false;
            break;
    }
    attempt.credentials = {GetHost(), GetUserName(), GetPassword()};
    return true;
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
    switch (AskForCredentials(PromptUnlessOff(), nullptr)) {
        case PromptResult::kCancelled:
            ReportError(LDAP_USER_CANCELLED, errorText);
            return 0;
        case PromptResult::kNobodyAsked:
            return Fail(LDAP_USER_CANCELLED, errorText);
        default:
            return ConnectLocation(errorText);
    }
}

int CLDAPItems::PromptForCredentials() {
    const PromptResult answer = AskForCredentials(Prompt(), nullptr);
    return answer == PromptResult::kNothingAsked || answer == PromptResult::kConfirmed ? 1 : 0;
}

CredentialsPrompt* CLDAPItems::PromptUnlessOff() {
    return PromptingIsOff() ? nullptr : Prompt();
}

CLDAPItems::PromptResult CLDAPItems::AskForCredentials(CredentialsPrompt* prompt,
                                                       const Attempt* failed) {
    if (location_->authentication != kSimpleAuthentication) {
        const bool mayRepeat = failed == nullptr || prompt != nullptr;
        return mayRepeat ? PromptResult::kNothingAsked : PromptResult::kNobodyAsked;
    }
    Credentials credentials = KnownCredentials();
    const std::optional<Credentials> untried = UntriedCredentials(credentials, failed);
    if (untried || IsComplete(credentials)) KeepInRecord(untried.value_or(credentials));
    if (untried) return PromptResult::kNothingAsked;
    if (prompt == nullptr) return PromptResult::kNobodyAsked;
    if (!prompt->Show(credentials)) {
        location_->password.clear();
        if (prompt == nullptr || prompt->CancelIsForAll()) TurnPromptingOff();
        return PromptResult::kCancelled;
    }
    SetUserName(credentials.userName);
    SetPassword(credentials.password);
    return PromptResult::kConfirmed;
}

Credentials CLDAPItems::KnownCredentials() {
    Credentials known = {GetHost(), GetUserName(), GetPassword()};
    if (known.userName.empty()) known.userName = GetSharedUserName();
    if (known.password.empty()) known.password = GetSharedPassword();
    return known;
}

void CLDAPItems::KeepInRecord(const Credentials& credentials) {
    location_->username = credentials.userName;
    location_->password = credentials.password;
}

std::optional<Credentials> CLDAPItems::UntriedCredentials(const Credentials& known,
                                                          const Attempt* failed) {
    if (!IsComplete(known) || ErrorIsRecorded()) return std::nullopt;
    if (failed == nullptr) return known;
    // Another process may have logged on, or failed, while the user read what went wrong here: that
    // must neither keep the dialog away nor have the same credentials fail again.
    if (failed->isUnasked) return std::nullopt;
    const Credentials shared = {known.server, GetSharedUserName(), GetSharedPassword()};
    for (const Credentials& candidate : {known, shared}) {
        if (IsComplete(candidate) && !IsSameLogOn(candidate, failed->credentials)) return candidate;
    }
    return std::nullopt;
}

bool CLDAPItems::ErrorIsRecorded() {
    const DirectoryInfo* const info = info_.Access();
    return info != nullptr && info->lastError != LDAP_SUCCESS;
}

}  // namespace depot
