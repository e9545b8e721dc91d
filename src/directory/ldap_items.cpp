#include "directory/ldap_items.h"

#include <atomic>

#include "platform/error_text.h"
#include "platform/text.h"
#include "platform/user_notice.h"

namespace depot {
namespace {

constexpr char kMessageTitle[] = "Quillon";
constexpr char kErrorPrefix[] = "LDAP: ";

std::atomic<CredentialsPrompt*> installedPrompt = nullptr;

const std::string& OrDefault(const std::string& name, const std::string& defaultName) {
    return name.empty() ? defaultName : name;
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

}  // namespace

CredentialsPrompt* InstallCredentialsPrompt(CredentialsPrompt* prompt) {
    return installedPrompt.exchange(prompt);
}

CLDAPItems::CLDAPItems(CDepotPath* location)
    : clientBound_(static_cast<std::uint32_t>(BindDirectoryClient(client_))),
      ownLocation_(location ? nullptr : std::make_unique<CDepotPath>(nullptr)),
      location_(location ? location : ownLocation_.get()),
      info_(ServerKey(location_->host, location_->port)) {}

CLDAPItems::~CLDAPItems() = default;

CredentialsPrompt* CLDAPItems::Prompt() const {
    return ownPrompt_.value_or(installedPrompt.load());
}

NamingAttributes CLDAPItems::NamingNames() const {
    return {OrDefault(location_->folderAttributeName, kDefaultNamingAttribute),
            OrDefault(location_->fileAttributeName, kDefaultNamingAttribute)};
}

std::string CLDAPItems::FolderClass() const {
    return OrDefault(location_->folderObjectClass, kDefaultFolderClass);
}

std::string CLDAPItems::FileClass() const {
    return OrDefault(location_->fileObjectClass, kDefaultFileClass);
}

std::string CLDAPItems::ContentsAttribute() const {
    return OrDefault(location_->fileContentsAttributeName, kDefaultContentsAttribute);
}

std::string CLDAPItems::PathToDN(const std::string& path) const {
    return depot::PathToDN(path, NamingNames());
}

void CLDAPItems::SetUserName(const std::string& userName) {
    location_->username = userName;
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->userName, userName);
}

void CLDAPItems::SetPassword(const std::string& password) {
    location_->password = password;
    if (DirectoryInfo* const info = info_.Access()) StoreText(info->password, password);
}

std::string CLDAPItems::GetSharedUserName() {
    const DirectoryInfo* const info = info_.Access();
    return info ? TextOf(info->userName) : std::string();
}

std::string CLDAPItems::GetSharedPassword() {
    const DirectoryInfo* const info = info_.Access();
    return info ? TextOf(info->password) : std::string();
}

bool CLDAPItems::PromptingIsOff() {
    const DirectoryInfo* const info = info_.Access();
    return info != nullptr && info->noPrompt != 0;
}

void CLDAPItems::TurnPromptingOff() {
    if (DirectoryInfo* const info = info_.Access()) info->noPrompt = 1;
}

void CLDAPItems::SetSharedError(std::uint32_t code) {
    if (DirectoryInfo* const info = info_.Access()) info->lastError = code;
}

std::string CLDAPItems::ErrorText() {
    const DirectoryInfo* const info = info_.Access();
    const std::uint32_t code = info && info->lastError != 0 ? info->lastError : lastError_;
    std::string text;
    FormatErrorText(client_.LdapMapErrorToWin32(code), nullptr, kMessageTitle, &text, nullptr);
    return text.empty() ? text : kErrorPrefix + text;
}

void CLDAPItems::ReportError(std::uint32_t code, std::string* errorText) {
    SetSharedError(code);
    lastError_ = code;
    if (code == LDAP_SUCCESS) return;
    const std::string text = ErrorText();
    if (errorText && !text.empty()) *errorText = text;
    ShowNotice(text, kMessageTitle, nullptr);
}

int CLDAPItems::Fail(std::uint32_t code, std::string* errorText) {
    lastError_ = code;
    if (errorText == nullptr) return 0;
    const std::string text = ErrorText();
    if (!text.empty()) *errorText = text;
    return 0;
}

}  // namespace depot
