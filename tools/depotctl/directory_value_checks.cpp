
#include "depotctl/ascii.h"
#include "depotctl/definition_checks.h"
#include "depotctl/known_values.h"
#include "depotctl/location_checks.h"
#include "platform/not_copied.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kStartTls = 1, kTlsFromTheStart = 2;
constexpr std::uint32_t kTlsPort = 636;

// Collects what the values of one location say together.
class LocationChecker : NotCopied {
public:
    LocationChecker(const RawDefinition& definition, int number, const LocationSettings& settings)
        : definition_(definition), number_(number), settings_(settings) {}
    virtual ~LocationChecker() = default;

    Findings Run() {
        CheckIgnored();
        CheckValues();
        return std::move(findings_);
    }

protected:
    std::string Name(const char* value) const { return Numbered(value, number_); }
    void Add(Finding finding) { findings_.push_back(std::move(finding)); }

    const RawDefinition& definition_;
    const int number_;
    const LocationSettings settings_;
    Findings findings_;

private:
    virtual void CheckValues() = 0;

    void CheckIgnored() {
        for (const DepotValue& known : kDepotValues) {
            if (!known.IsNumbered() || settings_.Has(known.scope)) continue;
            if (definition_.Find(Name(known.name)) == nullptr) continue;
            Add(Wrong(
                Name(known.name),
                std::string("it is ignored: the location is ") + kTypeWords[settings_.type].meaning,
                "set " + Name("Type") + " to 1 for a directory, or remove it"));
        }
    }
};

class FolderChecker final : public LocationChecker {
    using LocationChecker::LocationChecker;

    void CheckValues() override {
        const std::string& path = settings_.path;
        if (path.empty()) {
            Add(Wrong(Name("Path"), "it is empty", "write a folder's path"));
        } else if (!HasMacros(path)) {
            Append(findings_, CheckFolder(Name("Path"), {path, path, PathBytes()}));
        }
    }

    // The length of the path in the code page, without its terminator.
    std::size_t PathBytes() const {
        const RawValue* const value = definition_.Find(Name("Path"));
        return value != nullptr && value->bytes > 0 ? value->bytes - 1 : 0;
    }
};

class DirectoryChecker final : public LocationChecker {
    using LocationChecker::LocationChecker;

    void CheckValues() override {
        if (!HasMacros(settings_.path)) Append(findings_, CheckBase(Name("Path"), settings_.path));
        CheckServer();
        CheckLogOn();
        CheckSchemaNames();
    }

    void CheckServer() {
        Append(findings_, CheckHost(Name("Host"), settings_.host));
        const bool secure = settings_.security == kTlsFromTheStart;
        if (secure && settings_.port == LocationSettings::kDefaultPort) {
            Add(Wrong(Name("Port"),
                      "389 is the port of connections that are not secured from the "
                      "start, as Security = 2 wants it",
                      "set " + Name("Port") + " to 636, or " + Name("Security") + " to 1"));
        }
        if (!secure && settings_.port == kTlsPort) {
            Add(Wrong(Name("Port"),
                      "636 is the port of connections that are secured from the start",
                      "set " + Name("Security") + " to 2, or " + Name("Port") + " to 389"));
        }
        if (settings_.security != 0 && settings_.followReferrals == 1) {
            Add(Wrong(Name("FollowReferrals"), "a secured connection follows no referral",
                      "remove it"));
        }
        if (settings_.security == 0 && settings_.followReferrals == 1) {
            Add(Remark(Name("FollowReferrals"),
                       "the server names others, and name and password may go there"));
        }
        if (settings_.security == kStartTls && settings_.version == 2) {
            Add(Wrong(Name("Version"), "version 2 has no StartTLS, which Security = 1 wants",
                      "set " + Name("Version") + " to 3"));
        }
    }

    void CheckLogOn() {
        if (!settings_.NeedsUserName()) return CheckUnusedCredentials();
        if (settings_.password.empty()) {
            if (!settings_.credentialTarget.empty()) CheckPlainText();
            return;
        }
        const bool hasTarget = !settings_.credentialTarget.empty();
        Add(Remark(Name("Password"), "everyone who can read the key can read the password",
                   hasTarget
                       ? "remove it: " + Name("CredentialTarget") + " stands for another one"
                       : "keep it in the credential store: depotctl depots set " + definition_.key +
                             " --location " + std::to_string(number_) + " --store-password"));
        if (hasTarget) {
            Add(Wrong(Name("CredentialTarget"), "it is not used beside " + Name("Password"),
                      "remove one of the two"));
        }
        CheckPlainText();
        if (settings_.username.empty()) {
            Add(Wrong(Name("Password"), "there is no " + Name("Username") + " for it",
                      "write it, or remove the password"));
        }
    }

    void CheckPlainText() {
        if (settings_.security == 0) {
            Add(Remark(Name("Security"), "name and password cross the network in plain text",
                       "set it to 1 (StartTLS) or 2 (LDAPS)"));
        }
    }

    void CheckUnusedCredentials() {
        for (const char* value : {"Username", "Password", "CredentialTarget"}) {
            if (Text(*FindValue(value)).empty()) continue;
            Add(Wrong(Name(value), "it is not used with this " + Name("Authentication"),
                      "set that to 1, or remove this"));
        }
    }

    void CheckSchemaNames() {
        for (const DepotValue& value : kDepotValues) {
            if (value.form.kind != ValueKind::kSchemaName || HasSchemaCharacters(Text(value)))
                continue;
            Add(Wrong(Name(value.name), "it is no name that a schema can have",
                      "use letters, digits and hyphens"));
        }
        if (SameName(SchemaName("FolderObjectClass"), SchemaName("FileObjectClass"))) {
            Add(Remark(Name("FileObjectClass"), "files and folders are entries of one class"));
        }
    }

    const std::string& Text(const DepotValue& value) const {
        const auto* const secret = std::get_if<SecretText LocationSettings::*>(&value.member);
        if (secret != nullptr) return (settings_.**secret).Plain();
        return settings_.*std::get<std::string LocationSettings::*>(value.member);
    }

    std::string SchemaName(const char* value) const {
        const DepotValue& row = *FindValue(value);
        return Text(row).empty() ? row.form.standard : Text(row);
    }
};

}  // namespace

Findings CheckLocation(const RawDefinition& definition, int location) {
    const LocationSettings settings = definition.Location(location);
    return MakeByType<LocationChecker, FolderChecker, DirectoryChecker>(settings, definition,
                                                                        location, settings)
        ->Run();
}

}  // namespace depot::ctl
