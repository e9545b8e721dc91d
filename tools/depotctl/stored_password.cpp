#include "depotctl/stored_password.h"

#include "depotctl/definition_edit.h"
#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "directory/shared_credentials.h"
#include "platform/credential_store.h"
#include "platform/win32.h"

namespace depot::ctl {
namespace {

constexpr char kTarget[] = "CredentialTarget";
constexpr char kPassword[] = "Password";

[[noreturn]] void FailWith(const char* action, std::uint32_t error) {
    Refuse(std::string("the credential store does not ") + action + " the password (error " +
           std::to_string(error) + ")");
}

}  // namespace

void RequireOnePlace(const DefineOptions& options) {
    const int places =
        int{options.askPassword} + int{options.storePassword} + int{options.forgetPassword};
    if (places > 1) {
        Refuse("only one of --ask-password, --store-password and --forget-password can be given");
    }
}

void AddStoredPassword(const DefineOptions& options, const RawDefinition& before,
                       DefinitionChange& change) {
    const auto removeIfThere = [&](const char* value) {
        const std::string name = Numbered(value, options.location);
        if (before.Find(name) != nullptr) change.removed.push_back(name);
    };
    if (options.forgetPassword) removeIfThere(kTarget);
    if (!options.storePassword) return;
    removeIfThere(kPassword);
    const RawDefinition after = Changed(before, change);
    const std::string name = Numbered(kTarget, options.location);
    if (after.Text(name).value_or("").empty()) {
        change.written.push_back(
            StoredText(name, options.key + "/" + std::to_string(options.location)));
    }
}

void RequireStorable(const DefineOptions& options, const RawDefinition& after) {
    const LocationSettings location = after.Location(options.location);
    if (!location.IsDirectory()) Refuse("only a location in a directory has a password");
    if (!location.NeedsUserName()) {
        Refuse("nobody logs on to this location with a password; see Authentication");
    }
    if (location.username.empty()) Refuse("whose password it is must be said with --username");
}

void StorePassword(const DefineOptions& options, const RawDefinition& after,
                   const std::string& password) {
    LocationSettings location = after.Location(options.location);
    location.host = ToAnsi(location.host);
    StoredCredential credential;
    credential.userName = ToAnsi(location.username);
    credential.password = ToAnsi(password);
    credential.server = ServerKeyOf(location);
    const std::uint32_t error = WriteCredential(ToAnsi(location.credentialTarget), credential);
    if (error != ERROR_SUCCESS) FailWith("take", error);
}

void ForgetPassword(const DefineOptions& options, const RawDefinition& before) {
    const std::string target = before.Location(options.location).credentialTarget;
    if (target.empty()) Refuse("the location has no " + Numbered(kTarget, options.location));
    const std::uint32_t error = DeleteCredential(ToAnsi(target));
    if (error != ERROR_SUCCESS && error != ERROR_NOT_FOUND) FailWith("remove", error);
}

}  // namespace depot::ctl
