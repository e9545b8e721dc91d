#include <algorithm>

#include "depotctl/definition_checks.h"
#include "depotctl/known_values.h"
#include "depotctl/location_checks.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kDirectoryType = 1;
constexpr std::uint32_t kAnonymous = 0, kSimple = 1;
constexpr std::uint32_t kStartTls = 1, kTlsFromTheStart = 2;
constexpr std::uint32_t kPort = 389, kTlsPort = 636;

constexpr const char* kSchemaNames[] = {"FileAttributeName", "FileObjectClass",
                                        "FolderAttributeName", "FolderObjectClass",
                                        "FileContentsAttributeName"};

bool IsSchemaName(const std::string& name) {
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '.';
    });
}

// Collects what the values of one location say together.
class LocationChecker {
public:
    LocationChecker(const RawDefinition& definition, int location)
        : definition_(definition), location_(location) {}

    Findings Run() {
        const std::string path = Text("Path").value_or("");
        if (Number("Type", 0) == kDirectoryType) {
            if (!HasMacros(path)) findings_ = CheckBase(Name("Path"), path);
            CheckServer();
            CheckLogOn();
            CheckSchemaNames();
        } else {
            CheckFolderLocation(path);
        }
        return std::move(findings_);
    }

private:
    std::string Name(const char* value) const { return Numbered(value, location_); }
    std::optional<std::string> Text(const char* value) const {
        return definition_.Text(Name(value));
    }
    std::uint32_t Number(const char* value, std::uint32_t absent) const {
        return definition_.Number(Name(value)).value_or(absent);
    }
    bool Has(const char* value) const { return !Text(value).value_or("").empty(); }
    void Add(Finding finding) { findings_.push_back(std::move(finding)); }

    // The length of the path in the code page, without its terminator.
    std::size_t PathBytes() const {
        const RawValue* const value = definition_.Find(Name("Path"));
        return value != nullptr && value->bytes > 0 ? value->bytes - 1 : 0;
    }

    void CheckFolderLocation(const std::string& path) {
        for (const KnownValue& known : KnownValues()) {
            if (known.scope != ValueScope::kDirectory) continue;
            if (definition_.Find(Name(known.name)) == nullptr) continue;
            Add(Wrong(Name(known.name), "it is ignored: the location is a folder",
                      "set " + Name("Type") + " to 1 for a directory, or remove it"));
        }
        if (path.empty()) {
            Add(Wrong(Name("Path"), "it is empty", "write a folder's path"));
        } else if (!HasMacros(path)) {
            const Findings folder = CheckFolder(Name("Path"), {path, path, PathBytes()}, {});
            findings_.insert(findings_.end(), folder.begin(), folder.end());
        }
    }

    void CheckServer() {
        const Findings host = CheckHost(Name("Host"), Text("Host").value_or(""));
        findings_.insert(findings_.end(), host.begin(), host.end());
        const std::uint32_t security = Number("Security", 0);
        const std::uint32_t port = Number("Port", kPort);
        if (security == kTlsFromTheStart && port == kPort) {
            Add(Wrong(Name("Port"),
                      "389 is the port of connections that are not secured from the "
                      "start, as Security = 2 wants it",
                      "set " + Name("Port") + " to 636, or " + Name("Security") + " to 1"));
        }
        if (security != kTlsFromTheStart && port == kTlsPort) {
            Add(Wrong(Name("Port"),
                      "636 is the port of connections that are secured from the start",
                      "set " + Name("Security") + " to 2, or " + Name("Port") + " to 389"));
        }
        if (security == kStartTls && Number("Version", 3) == 2) {
            Add(Wrong(Name("Version"), "version 2 has no StartTLS, which Security = 1 wants",
                      "set " + Name("Version") + " to 3"));
        }
    }

    void CheckLogOn() {
        const std::uint32_t kind = Number("Authentication", kSimple);
        const bool asksForNames = kind != kAnonymous && kind != 2;
        if (!asksForNames) return CheckUnusedCredentials();
        if (Has("Password")) {
            Add(Remark(Name("Password"), "everyone who can read the key can read the password",
                       "leave it out; users are asked then"));
            if (Number("Security", 0) == 0) {
                Add(Remark(Name("Security"), "name and password cross the network in plain text",
                           "set it to 1 (StartTLS) or 2 (LDAPS)"));
            }
        }
        if (Has("Password") && !Has("Username")) {
            Add(Wrong(Name("Password"), "there is no " + Name("Username") + " for it",
                      "write it, or remove the password"));
        }
    }

    void CheckUnusedCredentials() {
        for (const char* value : {"Username", "Password"}) {
            if (!Has(value)) continue;
            Add(Wrong(Name(value), "it is not used with this " + Name("Authentication"),
                      "set that to 1, or remove this"));
        }
    }

    void CheckSchemaNames() {
        for (const char* value : kSchemaNames) {
            if (IsSchemaName(Text(value).value_or(""))) continue;
            Add(Wrong(Name(value), "it is no name that a schema can have",
                      "use letters, digits and hyphens"));
        }
        const auto orDefault = [&](const char* value, const char* otherwise) {
            return Has(value) ? *Text(value) : std::string(otherwise);
        };
        const std::string folder = orDefault("FolderObjectClass", "quillonFolder");
        const std::string file = orDefault("FileObjectClass", "quillonFileBinary");
        if (SameName(folder, file)) {
            Add(Remark(Name("FileObjectClass"), "files and folders are entries of one class"));
        }
    }

    const RawDefinition& definition_;
    const int location_;
    Findings findings_;
};

}  // namespace

Findings CheckLocation(const RawDefinition& definition, int location) {
    return LocationChecker(definition, location).Run();
}

}  // namespace depot::ctl
