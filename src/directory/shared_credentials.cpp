#include "directory/shared_credentials.h"

#include <string_view>
#include <utility>

#include "directory/dn.h"
#include "platform/credential_store.h"
#include "platform/text.h"
#include "platform/trace.h"

namespace depot {
namespace {

bool IsSameLogOn(const Credentials& one, const Credentials& other) {
    return one.userName == other.userName && one.password == other.password;
}

// Copies what fits of the text; the field always ends in a NUL.
void StoreText(char (&field)[DirectoryInfo::kTextBytes], const std::string& text) {
    const std::size_t length = CutToBytes(text, sizeof(field) - 1).copy(field, sizeof(field));
    field[length] = '\0';
}

std::string TextOf(const char (&field)[DirectoryInfo::kTextBytes]) {
    // Another process may be writing: the terminator is not relied on.
    const std::string_view bytes(field, sizeof(field));
    return std::string(bytes.substr(0, bytes.find('\0')));
}

std::uint32_t ErrorIn(const DirectoryInfo* info, std::uint32_t code) {
    return info != nullptr && info->lastError != 0 ? info->lastError : code;
}

}  // namespace

bool IsComplete(const Credentials& credentials) {
    return !credentials.userName.empty() && !credentials.password.empty();
}

std::string ServerKeyOf(const LocationSettings& location) {
    return location.security == 0 ? ServerKey(location.host, location.port)
                                  : SecuredServerKey(location.host, location.port);
}

bool AreSecuredAlike(const LocationSettings& one, const LocationSettings& other) {
    return (one.security == 0) == (other.security == 0);
}

Digest DigestOf(const Credentials& credentials) {
    const SecretText pair(credentials.userName + '\0' + credentials.password.Plain());
    return DigestOf(pair.Plain().data(), pair.Plain().size());
}

SharedCredentials::SharedCredentials(CDepotPath& location)
    : location_(location), info_(ServerKeyOf(location)) {}

void SharedCredentials::SetUserName(const std::string& userName) {
    location_.username = userName;
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->userName, userName);
}

void SharedCredentials::SetPassword(const std::string& password) {
    location_.password = password;
    beforeFilling_.reset();
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->password, password);
}

std::string SharedCredentials::SharedUserName() {
    const DirectoryInfo* const info = info_.Access();
    return info ? TextOf(info->userName) : std::string();
}

SecretText SharedCredentials::SharedPassword() {
    const DirectoryInfo* const info = info_.Access();
    return info ? SecretText(TextOf(info->password)) : SecretText();
}

Credentials SharedCredentials::Own() const {
    Credentials own = {location_.host, location_.username, location_.password};
    const bool mayBeStored =
        location_.NeedsUserName() && own.password.empty() && !ignoresStored_ && MayBeStored();
    if (!mayBeStored) return own;
    const auto stored = ReadCredential(location_.credentialTarget);
    // A definition that names another server, or leaves it unsecured, gets nothing.
    if (!stored || (!stored->server.empty() && stored->server != info_.Key())) return own;
    own.userName = stored->userName;
    own.password = stored->password;
    return own;
}

Credentials SharedCredentials::Paired() {
    Credentials own = Own();
    if (!own.password.empty()) return own;
    const Credentials shared = {own.server, SharedUserName(), SharedPassword()};
    const bool isFor = own.userName.empty() || own.userName == shared.userName;
    return isFor && IsComplete(shared) ? shared : own;
}

std::optional<Credentials> SharedCredentials::TypedFor(const std::string& serverKey) const {
    const Credentials own = Own();
    DirectoryInfoBlock other(serverKey);
    const DirectoryInfo* const info = other.Access();
    if (info == nullptr || !own.password.empty()) return std::nullopt;
    Credentials typed = {own.server, TextOf(info->userName), TextOf(info->password)};
    const bool isFor = own.userName.empty() || own.userName == typed.userName;
    return isFor && IsComplete(typed) ? std::optional(std::move(typed)) : std::nullopt;
}

Credentials SharedCredentials::Known() {
    Credentials known = Own();
    if (known.userName.empty()) known.userName = SharedUserName();
    if (known.password.empty()) known.password = SharedPassword();
    return known;
}

bool SharedCredentials::IsFilling(const Credentials& credentials, const Credentials& own) {
    if (!IsComplete(credentials) || IsComplete(own)) return false;
    if (!own.password.empty()) return credentials.password == own.password;
    return !own.userName.empty() && credentials.userName == own.userName &&
           credentials.userName != SharedUserName();
}

void SharedCredentials::TakeFillingBack() {
    if (!beforeFilling_) return;
    location_.username = beforeFilling_->userName;
    location_.password = beforeFilling_->password;
    beforeFilling_.reset();
    fillingFailed_ = true;
}

void SharedCredentials::ForgetPassword() {
    location_.password.clear();
    beforeFilling_.reset();
    ignoresStored_ = true;
    isToBeStored_ = false;
}

void SharedCredentials::Accepted() {
    const bool isStored = std::exchange(isToBeStored_, false);
    if (!isStored || !MayBeStored() || location_.password.empty()) return;
    const TraceSpan span("StoreCredential", location_.credentialTarget);
    span.EndWithCode(WriteCredential(location_.credentialTarget,
                                     {location_.username, location_.password, info_.Key()}));
}

void SharedCredentials::KeepInRecord(const Credentials& credentials) {
    Credentials own = Own();
    if (IsFilling(credentials, own)) beforeFilling_ = std::move(own);
    location_.username = credentials.userName;
    location_.password = credentials.password;
}

std::optional<Credentials> SharedCredentials::Untried(const Credentials& known,
                                                      const LogOnAttempt* failed) {
    if (!IsComplete(known) || LastErrorOr(0) != 0) return std::nullopt;
    if (fillingFailed_ && IsFilling(known, Own())) return std::nullopt;
    if (failed == nullptr) return known;
    // Another process may have logged on, or failed, while the user read what went wrong here: that
    // must neither keep the dialog away nor have the same credentials fail again.
    if (failed->isUnasked) return std::nullopt;
    const Credentials shared = {known.server, SharedUserName(), SharedPassword()};
    for (const Credentials& candidate : {known, shared}) {
        if (IsComplete(candidate) && !IsSameLogOn(candidate, failed->credentials)) return candidate;
    }
    return std::nullopt;
}

bool SharedCredentials::PromptingIsOff() {
    const DirectoryInfo* const info = info_.Access();
    return info != nullptr && info->noPrompt != 0;
}

void SharedCredentials::TurnPromptingOff() {
    if (DirectoryInfo* const info = info_.Access()) info->noPrompt = 1;
}

void SharedCredentials::SetLastError(std::uint32_t code) {
    if (DirectoryInfo* const info = info_.Access()) info->lastError = code;
}

std::uint32_t SharedCredentials::LastErrorOr(std::uint32_t code) {
    return ErrorIn(info_.Access(), code);
}

std::uint32_t SharedCredentials::SeenErrorOr(std::uint32_t code) {
    const DirectoryInfo* const seen = info_.Present();
    return ErrorIn(seen != nullptr ? seen : info_.Access(), code);
}

}  // namespace depot
