// Logging on with what is known, and asking for what is missing or was refused.
#include <algorithm>
#include <atomic>

#include "directory/ldap_connection.h"
#include "directory/root_entry.h"
#include "directory/user_name_form.h"

namespace depot {
namespace {

std::atomic<CredentialsPrompt*> installedPrompt = nullptr;

// A user waits for the prompt meanwhile.
constexpr std::uint32_t kSecondsForExample = 2;

}  // namespace

CredentialsPrompt* InstallCredentialsPrompt(CredentialsPrompt* prompt) {
    return installedPrompt.exchange(prompt);
}

Result LdapConnection::Connect(const Credentials& credentials) {
    TakeFromKept();
    isIdle_ = false;
    if (IsConnected()) return {};
    if (!IsUsable()) return Report(LDAP_SERVER_DOWN);
    LogOnAttempt attempt = {credentials};
    Result failure;
    do {
        const std::uint32_t opened = OpenHandle(attempt.credentials.server);
        if (opened != LDAP_SUCCESS) {
            failure = Report(opened);
            Fail();
            return failure;
        }
        const std::uint32_t bound = Bind(attempt.credentials);
        if (bound == LDAP_SUCCESS) {
            FinishBind();
            return {};
        }
        // No credentials would help there.
        if (!location_.NeedsUserName()) shared_.TurnPromptingOff();
        attempt.code = bound;
        failure = Report(bound);
    } while (FindOtherCredentials(attempt, failure));
    return failure;
}

bool LdapConnection::FindOtherCredentials(LogOnAttempt& attempt, Result& failure) {
    // A secured session that breaks says nothing of who logs on.
    const bool broke = location_.security != 0 && !CredentialsMayHelp(attempt.code);
    if (!location_.NeedsUserName() || broke) {
        Fail();
        return false;
    }
    switch (AskForCredentials(PromptUnlessOff(), &attempt)) {
        case PromptResult::kCancelled:
            failure = Report(LDAP_USER_CANCELLED);
            return false;
        case PromptResult::kNobodyAsked:
            // To a simple bind this is the same as a user who cancelled, unless nothing that could
            // have been typed would have helped.
            if (CredentialsMayHelp(attempt.code) || shared_.PromptingIsOff()) {
                failure = Outcome(LDAP_USER_CANCELLED);
            }
            Fail();
            return false;
        case PromptResult::kNothingAsked:
            // Nothing but the same failure would follow, again and again.
            if (attempt.isUnasked) {
                Fail();
                return false;
            }
            attempt.isUnasked = true;
            break;
        case PromptResult::kConfirmed:
            attempt.isUnasked = false;
            break;
    }
    attempt.credentials = shared_.Own();
    return true;
}

// Whoever has typed credentials for one replica knows of no other one.
bool LdapConnection::ConnectAsBeside() {
    const bool isAsked = location_.authentication == kSimpleAuthentication && IsUsable() &&
                         !IsConnected() && !IsComplete(shared_.Known());
    // After a cancel the same would be refused over and over.
    if (!isAsked || shared_.PromptingIsOff()) return false;
    for (const std::string& server : serversBeside_) {
        const std::optional<Credentials> typed = shared_.TypedFor(server);
        if (!typed) continue;
        const Digest attempt = DigestOf(*typed);
        if (std::find(triedBeside_.begin(), triedBeside_.end(), attempt) != triedBeside_.end()) {
            continue;
        }
        std::uint32_t code = OpenHandle(typed->server);
        if (code == LDAP_SUCCESS) code = Bind(*typed);
        if (code == LDAP_SUCCESS) {
            shared_.SetUserName(typed->userName);
            shared_.SetPassword(typed->password);
            FinishBind();
            return true;
        }
        // Each use of the session tries again: what is left would pile up.
        handle_.reset();
        // A server that has not looked at them has not refused them.
        if (!CredentialsMayHelp(code)) return false;
        triedBeside_.push_back(attempt);
    }
    return false;
}

Result LdapConnection::PromptAndConnect() {
    if (ConnectAsBeside()) return {};
    CredentialsPrompt* const prompt = PromptUnlessOff();
    const bool isAsked = location_.authentication == kSimpleAuthentication && prompt != nullptr &&
                         prompt->CanBeAnswered();
    // A password that could not be sent is not asked for.
    if (isAsked && location_.security != 0 && IsUsable() && !IsConnected()) {
        const std::uint32_t secured = OpenHandle(shared_.Own().server);
        handle_.reset();
        if (secured != LDAP_SUCCESS) {
            Result failure = Report(secured);
            Fail();
            return failure;
        }
    }
    switch (AskForCredentials(prompt, nullptr)) {
        case PromptResult::kCancelled:
            return Report(LDAP_USER_CANCELLED);
        case PromptResult::kNobodyAsked:
            return Outcome(LDAP_USER_CANCELLED);
        default:
            return Connect(shared_.Own());
    }
}

bool LdapConnection::PromptForCredentials() {
    const PromptResult answer = AskForCredentials(Prompt(), nullptr);
    return answer == PromptResult::kNothingAsked || answer == PromptResult::kConfirmed;
}

CredentialsPrompt* LdapConnection::Prompt() const {
    return ownPrompt_.value_or(installedPrompt.load());
}

CredentialsPrompt* LdapConnection::PromptUnlessOff() {
    return shared_.PromptingIsOff() ? nullptr : Prompt();
}

LdapConnection::PromptResult LdapConnection::AskForCredentials(CredentialsPrompt* prompt,
                                                               const LogOnAttempt* failed) {
    if (location_.authentication != kSimpleAuthentication) {
        const bool mayRepeat = failed == nullptr || prompt != nullptr;
        return mayRepeat ? PromptResult::kNothingAsked : PromptResult::kNobodyAsked;
    }
    const bool wasRefused = failed != nullptr && CredentialsMayHelp(failed->code);
    if (wasRefused) shared_.TakeFillingBack();
    const bool canBeAnswered = prompt != nullptr && prompt->CanBeAnswered();
    // Without an answer nothing but what belongs together is tried.
    Credentials credentials = canBeAnswered ? shared_.Known() : shared_.Paired();
    const std::optional<Credentials> untried = shared_.Untried(credentials, failed);
    if (untried || IsComplete(credentials)) shared_.KeepInRecord(untried.value_or(credentials));
    if (untried) return PromptResult::kNothingAsked;
    if (prompt == nullptr) return PromptResult::kNobodyAsked;
    if (failed != nullptr) credentials.failure = failed->code;
    credentials.isSecured = location_.security != 0;
    credentials.mayBeStored = shared_.MayBeStored();
    // A server that was not reached is not tried again before the user is asked.
    const bool answers = failed == nullptr || wasRefused;
    credentials.asking = answers ? this : nullptr;
    if (!prompt->Show(credentials)) {
        if (!canBeAnswered) return PromptResult::kNobodyAsked;
        if (failed != nullptr && !wasRefused) {
            // Nothing that could have been typed would have helped: the next call tries again.
            cancelledCall_ = CallConnections::CurrentNumber();
            return PromptResult::kCancelled;
        }
        shared_.ForgetPassword();
        if (prompt->CancelIsForAll()) shared_.TurnPromptingOff();
        return PromptResult::kCancelled;
    }
    shared_.SetUserName(credentials.userName);
    shared_.SetPassword(credentials.password);
    shared_.StoreOnceAccepted(credentials.isToBeStored);
    return PromptResult::kConfirmed;
}

// A prompt that lacks the example is better than none.
std::string LdapConnection::UserNameExample() try {
    if (!userNameExample_) userNameExample_ = AskForUserNameExample();
    return *userNameExample_;
} catch (const std::exception&) {
    return {};
}

// Everybody may read it. That is on a connection of its own: the one of a bind that failed is left
// to whoever still works on it.
std::string LdapConnection::AskForUserNameExample() {
    constexpr char kCapabilities[] = "supportedCapabilities", kContexts[] = "namingContexts";
    constexpr char kUsersContext[] = "defaultNamingContext";
    UniqueLdap working = std::exchange(handle_, UniqueLdap(nullptr, {&client_}));
    const std::uint32_t opened =
        OpenHandle(shared_.Own().server, std::min(location_.connectTimeout, kSecondsForExample));
    const UniqueLdap asked = std::exchange(handle_, std::move(working));
    RootEntry server(client_, asked.get());
    if (opened != LDAP_SUCCESS || server.Read({kCapabilities, kUsersContext, kContexts},
                                              LONG{kSecondsForExample}) != LDAP_SUCCESS) {
        return {};
    }
    std::vector<std::string> contexts = server.Values(kUsersContext);
    for (std::string& context : server.Values(kContexts)) contexts.push_back(std::move(context));
    return depot::UserNameExample(server.Values(kCapabilities), contexts);
}

}  // namespace depot
