// Connecting, binding and closing.
#include "directory/ldap_connection.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "directory/directory_help.h"
#include "platform/error_text.h"
#include "platform/user_notice.h"
#include "platform/wipe.h"

namespace depot {
namespace {

constexpr char kErrorPrefix[] = "LDAP: ";

// The client's own number for the longest time that sending a request may take.
constexpr int kSendTimeoutOption = 0x42;

// A day: longer than any user waits, and far from what a LONG holds in milliseconds.
constexpr std::uint32_t kLongestLimit = 24 * 60 * 60;

constexpr std::uint32_t kTlsFromTheStart = 2;

// Any other number keeps referrals off.
constexpr std::uint32_t kFollow = 1;

// Returns the code. The stage at which a connection failed is shown to a debugger only: users see
// the code's own message.
std::uint32_t Traced(const char* stage, std::uint32_t code) {
    if (code != LDAP_SUCCESS) {
        OutputDebugStringA((std::string(stage) + std::to_string(code) + "\n").c_str());
    }
    return code;
}

}  // namespace

LdapConnection::LdapConnection(CDepotPath& location)
    : location_(location), isBound_(BindDirectoryClient(client_) != 0), shared_(location) {}

LdapConnection::~LdapConnection() {
    TakeFromKept();
    LeaveCall();
}

Result LdapConnection::Acquire(bool& taken) {
    taken = false;
    // First: until it is taken out, another thread may be ending it.
    const bool wasKept = isKept_;
    TakeFromKept();
    if (isConnected_ && !isIdle_) return {};
    if (isConnected_ && (logOn_ != PresentLogOn() || !IsStillOpen())) Close();
    isUnproven_ = isConnected_ && (wasKept || isUnproven_);
    isIdle_ = false;
    // The server may be back, but is not waited for again and again by one call.
    const std::uint64_t call = CallConnections::CurrentNumber();
    if (failedCall_ && (call == 0 || call != *failedCall_)) isUsable_ = true;
    if (isUsable_) failedCall_.reset();
    const bool isCancelled = call != 0 && call == cancelledCall_;
    Result outcome;
    try {
        if (!isConnected_) outcome = isCancelled ? Outcome(LDAP_USER_CANCELLED) : Open();
    } catch (...) {
        Close();
        // One that was not bound yet.
        handle_.reset();
        throw;
    }
    taken = outcome.IsDone();
    return outcome;
}

Result LdapConnection::Reach() {
    const bool wasKept = isKept_;
    TakeFromKept();
    if (isConnected_ && isIdle_ && (logOn_ != PresentLogOn() || !IsStillOpen())) Close();
    if (isConnected_) {
        isUnproven_ = isUnproven_ || wasKept;
        return {};
    }
    // The server is not waited for again and again by one call.
    const std::uint64_t call = CallConnections::CurrentNumber();
    if (call != 0 && call == unreachedCall_) return Outcome(LDAP_SERVER_DOWN);
    isUsable_ = true;
    isUnproven_ = false;
    Result reached = ConnectQuietly();
    isUsable_ = true;
    failedCall_.reset();
    if (!reached) {
        if (reached.Is(Reason::kUnreachable)) unreachedCall_ = call;
        return reached;
    }
    // Whoever binds in another way binds anew.
    if (!OpensUnasked()) {
        Close();
        return reached;
    }
    isIdle_ = true;
    JoinCall();
    return reached;
}

void LdapConnection::Release() {
    if (!isConnected_) return;
    isIdle_ = true;
    JoinCall();
    if (call_ == nullptr) Close();
}

void LdapConnection::Adopt(LdapConnection& other) {
    Close();
    handle_ = UniqueLdap(other.handle_.release(), {&client_});
    isConnected_ = std::exchange(other.isConnected_, false);
    logOn_ = PresentLogOn();
}

// A server that has ended the connection has said so; nothing else can be waiting to be read. Some
// clients refuse the number that stands for all requests, and take the one that stands for none.
bool LdapConnection::IsStillOpen() const {
    if (IsMissing(client_.ldap_result)) return true;
    constexpr ULONG kNoRequest = 0;
    const auto isSilent = [&](ULONG request) {
        l_timeval none = {0, 0};
        LDAPMessage* message = nullptr;
        const ULONG kind =
            client_.ldap_result(handle_.get(), request, LDAP_MSG_ONE, &none, &message);
        const UniqueLdapMessage unexpected(message, {&client_});
        return kind == 0;
    };
    return isSilent(static_cast<ULONG>(LDAP_RES_ANY)) || isSilent(kNoRequest);
}

Result LdapConnection::Replace() {
    if (isConnected_) Close();
    const Result replaced = ConnectQuietly();
    if (replaced) return {};
    // The next use connects anew, and says what is wrong.
    isUsable_ = true;
    return Outcome(LDAP_SERVER_DOWN);
}

LdapConnection::LogOn LdapConnection::PresentLogOn() const {
    const std::string_view parts[] = {location_.username, location_.password.Plain(),
                                      location_.credentialTarget};
    std::string credentials;
    const WipeAtEnd wiped(credentials);
    // Growing would leave a copy behind.
    credentials.reserve(std::size(parts) + parts[0].size() + parts[1].size() + parts[2].size());
    for (const std::string_view part : parts) credentials.append(part).push_back('\0');
    return {location_.host,           DigestOf(credentials.data(), credentials.size()),
            location_.port,           location_.authentication,
            location_.version,        location_.security,
            location_.followReferrals};
}

Result LdapConnection::ConnectQuietly() {
    if (IsConnected()) return {};
    if (!IsUsable()) return Outcome(LDAP_SERVER_DOWN);
    const Credentials paired = shared_.Paired();
    std::uint32_t code = OpenHandle(paired.server);
    if (code == LDAP_SUCCESS) code = Bind(paired);
    if (code == LDAP_SUCCESS) {
        FinishBind();
    } else {
        Disconnect();
    }
    return Outcome(code);
}

Result LdapConnection::Open() {
    return OpensUnasked() ? Connect(shared_.Own()) : PromptAndConnect();
}

bool LdapConnection::OpensUnasked() const {
    return location_.authentication != kSimpleAuthentication || IsComplete(shared_.Own());
}

std::uint32_t LdapConnection::OpenHandle(const std::string& host, std::uint32_t patience) {
    // Other code may still work on the handle of a bind that failed.
    if (handle_) replacedHandles_.push_back(std::move(handle_));
    char* const server = ClientText(host);
    // Some clients answer with the system's last error, which may be older than the call.
    ::SetLastError(ERROR_SUCCESS);
    LDAP* const opened = location_.security == kTlsFromTheStart
                             ? client_.ldap_sslinit(server, location_.port, 1)
                             : client_.ldap_init(server, location_.port);
    handle_ = UniqueLdap(opened, {&client_});
    if (!handle_) {
        const std::uint32_t code = client_.LdapGetLastError();
        // The client gives no reason for an empty host name; without one the failure would be
        // silent.
        return Traced("ldap_init ", code == LDAP_SUCCESS ? std::uint32_t{LDAP_SERVER_DOWN} : code);
    }
    std::uint32_t code = SetOptions();
    if (code == LDAP_SUCCESS) code = ReachServer(patience);
    return code == LDAP_SUCCESS ? Secure() : code;
}

std::uint32_t LdapConnection::SetOptions() {
    ULONG version = location_.version;
    std::uint32_t code =
        client_.ldap_set_option(handle_.get(), LDAP_OPT_PROTOCOL_VERSION, &version);
    if (code != LDAP_SUCCESS) return Traced("ldap_set_option PROTOCOL_VERSION ", code);
    // A referral leads to a server that no definition names, and some clients log on there with the
    // same credentials. From a secured server it may lead to one that is not.
    const bool mayFollow = location_.security == 0 && location_.followReferrals == kFollow;
    code = client_.ldap_set_option(handle_.get(), LDAP_OPT_REFERRALS,
                                   mayFollow ? LDAP_OPT_ON : LDAP_OPT_OFF);
    if (code != LDAP_SUCCESS) return Traced("ldap_set_option REFERRALS ", code);
    // A server that accepts and then says nothing must not hold a call for ever, but a short
    // timeout for connecting must not end a long search either. Clients that do not know one of
    // these limits do without it.
    ULONG seconds = AnswerLimit();
    client_.ldap_set_option(handle_.get(), LDAP_OPT_TIMELIMIT, &seconds);
    client_.ldap_set_option(handle_.get(), kSendTimeoutOption, &seconds);
    return LDAP_SUCCESS;
}

ULONG LdapConnection::AnswerLimit() const {
    return std::clamp<ULONG>(location_.connectTimeout, CDepotPath::kDefaultConnectTimeout,
                             kLongestLimit);
}

std::uint32_t LdapConnection::ReachServer(std::uint32_t patience) {
    // A handshake that fails within the bind would look like a log-on that failed.
    const bool isHandshake = location_.security == kTlsFromTheStart;
    if (patience == CDepotPath::kDefaultConnectTimeout && !isHandshake) return LDAP_SUCCESS;
    l_timeval limit = {static_cast<LONG>(std::min(patience, kLongestLimit)), 0};
    return Traced("ldap_connect ", client_.ldap_connect(handle_.get(), &limit));
}

std::uint32_t LdapConnection::Secure() {
    // Settings of an unknown kind never end in an open connection.
    if (location_.security == 0 || location_.security == kTlsFromTheStart) return LDAP_SUCCESS;
    ULONG serverCode = LDAP_SUCCESS;
    return Traced("ldap_start_tls ",
                  client_.ldap_start_tls_s(handle_.get(), &serverCode, nullptr, nullptr, nullptr));
}

std::uint32_t LdapConnection::Bind(const Credentials& credentials) {
    LDAP* const connection = handle_.get();
    std::uint32_t code = LDAP_SUCCESS;
    switch (location_.authentication) {
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

void LdapConnection::FinishBind() try {
    isConnected_ = true;
    shared_.SetLastError(LDAP_SUCCESS);
    shared_.Accepted();
    logOn_ = PresentLogOn();
} catch (...) {
    // Without memory it would stay open, and nothing would use it.
    Close();
    throw;
}

void LdapConnection::Disconnect() {
    handle_.reset();
    isConnected_ = false;
    isUsable_ = false;
    failedCall_.reset();
}

void LdapConnection::Fail() {
    Disconnect();
    failedCall_ = CallConnections::CurrentNumber();
}

bool LdapConnection::Close() {
    TakeFromKept();
    return CloseHandle();
}

bool LdapConnection::CloseHandle() {
    isIdle_ = false;
    if (!IsConnected()) return true;
    isConnected_ = false;
    return client_.ldap_unbind_s(handle_.release()) == LDAP_SUCCESS;
}

bool LdapConnection::Leave() {
    TakeFromKept();
    LeaveCall();
    bool any = handle_.release() != nullptr;
    for (UniqueLdap& replaced : replacedHandles_) any = replaced.release() != nullptr || any;
    isConnected_ = false;
    return any;
}

Result LdapConnection::Outcome(std::uint32_t code) {
    if (code == LDAP_SUCCESS) return {};
    return Error{ReasonOf(code), CodeKind::kDirectory, code, TextOf(shared_.SeenErrorOr(code))};
}

Result LdapConnection::Report(std::uint32_t code) {
    shared_.SetLastError(code);
    if (code == LDAP_SUCCESS) return {};
    Error error = {ReasonOf(code), CodeKind::kDirectory, code, Text(code)};
    ShowNotice(WithHelpWhereUnseen(error.text, code));
    return error;
}

std::string LdapConnection::Text(std::uint32_t code) {
    return TextOf(shared_.LastErrorOr(code));
}

std::string LdapConnection::TextOf(std::uint32_t code) const {
    std::string text;
    FormatErrorText(client_.LdapMapErrorToWin32(code), nullptr, nullptr, &text, nullptr);
    return text.empty() ? text : kErrorPrefix + text;
}

PagingClient& LdapConnection::Paging() {
    if (!paging_) paging_.emplace(client_.library);
    return *paging_;
}

}  // namespace depot
