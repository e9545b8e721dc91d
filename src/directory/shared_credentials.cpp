#include "directory/shared_credentials.h"

#include <string_view>

#include "directory/dn.h"
#include "platform/text.h"

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

SharedCredentials::SharedCredentials(CDepotPath& location)
    : location_(location), info_(ServerKey(location.host, location.port)) {}

void SharedCredentials::SetUserName(const std::string& userName) {
    location_.username = userName;
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->userName, userName);
}

void SharedCredentials::SetPassword(const std::string& password) {
    location_.password = password;
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->password, password);
}

std::string SharedCredentials::SharedUserName() {
    const DirectoryInfo* const info = info_.Access();
    return info ? TextOf(info->userName) : std::string();
}

std::string SharedCredentials::SharedPassword() {
    const DirectoryInfo* const info = info_.Access();
    return info ? TextOf(info->password) : std::string();
}

Credentials SharedCredentials::Own() const {
    return {location_.host, location_.username, location_.password};
}

Credentials SharedCredentials::Known() {
    Credentials known = Own();
    if (known.userName.empty()) known.userName = SharedUserName();
    if (known.password.empty()) known.password = SharedPassword();
    return known;
}

void SharedCredentials::KeepInRecord(const Credentials& credentials) {
    location_.username = credentials.userName;
    location_.password = credentials.password;
}

std::optional<Credentials> SharedCredentials::Untried(const Credentials& known,
                                                      const LogOnAttempt* failed) {
    if (!IsComplete(known) || LastErrorOr(0) != 0) return std::nullopt;
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
