// The values of a depot's definition in the registry: what is kept of them, and a table with one
// row a value, which reading, depotctl and its checks are made from. docs/administration.md is
// compared with it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>

#include "platform/secret_text.h"

namespace depot {

enum LocationType : std::uint32_t { kFolderLocation = 0, kDirectoryLocation = 1 };

// Whose value it is: the depot's, any location's, or a directory location's only. The names of the
// latter two are followed by the location's number.
enum class ValueScope { kDepot, kLocation, kDirectory };

// The scope of the values that only locations of one type have, in the order of the types; nothing
// for a type without any. A number beyond the last counts as the first.
inline constexpr std::optional<ValueScope> kOwnScopes[] = {std::nullopt, ValueScope::kDirectory};

enum AuthenticationKind : std::uint32_t {
    kAnonymousAuthentication = 0,
    kSimpleAuthentication = 1,  // and every value that has no name of its own
    kNegotiateAuthentication = 2,
};

// What a depot's own values say.
struct DepotSettings {
    static constexpr std::uint32_t kNoOrderIndex = 0xFFFFFFFF;

    std::uint32_t defaultDepot = 0;
    std::uint32_t orderIndex = kNoOrderIndex;
    std::uint32_t contains = 0;
    std::string icon;
};

// What the values of one of its locations say.
struct LocationSettings {
    static constexpr std::uint32_t kDefaultPort = 389;
    static constexpr std::uint32_t kDefaultVersion = 3;
    static constexpr std::uint32_t kDefaultConnectTimeout = 120;
    static constexpr std::uint32_t kDefaultOfflineSize = 100;

    LocationSettings() = default;
    LocationSettings(const LocationSettings&) = default;
    LocationSettings& operator=(const LocationSettings& other);

    // What a location is stands here alone; else ask the store of its depot, or make what works on
    // it by MakeByType.
    bool IsDirectory() const { return type == kDirectoryLocation; }
    // Whether a user logs on there with a name and a password.
    bool NeedsUserName() const {
        return authentication != kAnonymousAuthentication &&
               authentication != kNegotiateAuthentication;
    }

    // Whether a location of this type has the values of a scope that is not the depot's.
    bool Has(ValueScope scope) const {
        return scope == ValueScope::kLocation || scope == kOwnScopes[type];
    }

    std::uint32_t type = kFolderLocation;  // always one that there is, once read
    std::string path;                      // as written in the registry, macros and all
    std::string host;
    std::string username;
    SecretText password;  // as it stands in the registry, never encoded or decoded
    // The user's credential store has name and password under this one; empty for none
    std::string credentialTarget;
    // Empty names stand for the defaults that the directory layer knows.
    std::string fileAttributeName;
    std::string fileObjectClass;
    std::string folderAttributeName;
    std::string folderObjectClass;
    std::string fileContentsAttributeName;
    std::uint32_t port = kDefaultPort;
    std::uint32_t authentication = kSimpleAuthentication;
    std::uint32_t version = kDefaultVersion;
    std::uint32_t connectTimeout = kDefaultConnectTimeout;  // seconds
    std::uint32_t security = 0;  // 0 none, 1 StartTLS before the bind, 2 TLS from the start
    // 1 when a write-back must not replace what someone else stored meanwhile, 2 when its edits are
    // to be put into that
    std::uint32_t detectConflicts = 0;
    // How long a session keeps an idle connection, in seconds; 0 for not at all
    std::uint32_t keepConnection = 0;
    // 1 when a server that is not secured may send the client on to others
    std::uint32_t followReferrals = 0;
    // 1 when what is used of the location is kept for the time when its server is away
    std::uint32_t offline = 0;
    std::uint32_t offlineSize = kDefaultOfflineSize;  // how much is kept, in MB
};

// Makes what works on a location, by its type: there is one class a type, in the order of the
// types.
template <class Base, class Folder, class Directory, class... Parts>
std::unique_ptr<Base> MakeByType(const LocationSettings& location, Parts&&... parts) {
    if (location.IsDirectory()) return std::make_unique<Directory>(std::forward<Parts>(parts)...);
    return std::make_unique<Folder>(std::forward<Parts>(parts)...);
}

// The member that keeps the value.
using ValueMember = std::variant<std::string DepotSettings::*, std::uint32_t DepotSettings::*,
                                 std::string LocationSettings::*, std::uint32_t LocationSettings::*,
                                 SecretText LocationSettings::*>;

enum class ValueKind { kText, kSchemaName, kNumber };

// What a number is called: the first word stands for 0, the next for 1 and so on.
struct ValueWord {
    const char* word;     // on the command line
    const char* meaning;  // for people
};

// What a value may be. Its texts complete the sentences of depotctl's checks.
struct ValueForm {
    ValueKind kind = ValueKind::kText;
    const char* unread = nullptr;   // said of a missing value; null where its default is taken
    const char* outside = nullptr;  // said of a number out of range
    std::uint32_t lowest = 0, highest = 0xFFFFFFFF;
    std::span<const ValueWord> words = {};
    const char* standard = nullptr;  // the default where the member's own does not show it
    bool isRequired = false;         // without it there is no such location
    // What a value that is there, but is no such number, counts as; nothing where it is ignored
    std::optional<std::uint32_t> unreadable = {};
    bool isSwitch = false;  // given without a number its option stands for 1

    // The same for a number that is not to be lost by being written as something else.
    constexpr ValueForm NeverIgnored(std::uint32_t countsAs) const {
        ValueForm form = *this;
        form.unreadable = countsAs;
        return form;
    }
    constexpr ValueForm AsSwitch() const {
        ValueForm form = *this;
        form.isSwitch = true;
        return form;
    }
};

constexpr ValueForm Text(const char* unread) {
    return {.unread = unread};
}
constexpr ValueForm RequiredText(const char* unread) {
    return {.unread = unread, .isRequired = true};
}
constexpr ValueForm SchemaName(const char* standard) {
    return {.kind = ValueKind::kSchemaName, .standard = standard};
}
constexpr ValueForm AnyNumber(const char* unread, const char* standard = nullptr) {
    return {.kind = ValueKind::kNumber, .unread = unread, .standard = standard};
}
constexpr ValueForm Number(std::uint32_t lowest, std::uint32_t highest, const char* outside,
                           const char* unread = nullptr) {
    return {ValueKind::kNumber, unread, outside, lowest, highest};
}
constexpr ValueForm OneOf(std::span<const ValueWord> words, const char* outside,
                          const char* unread = nullptr) {
    const auto highest = static_cast<std::uint32_t>(words.size() - 1);
    return {ValueKind::kNumber, unread, outside, 0, highest, words};
}

struct DepotValue {
    const char* name;
    ValueScope scope;
    ValueMember member;
    const char* option;  // of depotctl; null where the command line never holds the value
    const char* meaning;
    ValueForm form;

    bool IsNumbered() const { return scope != ValueScope::kDepot; }
    bool IsNumber() const { return form.kind == ValueKind::kNumber; }
    // A number whose option needs none: it is 0 or 1, without words for them, or says so.
    bool IsSwitch() const { return form.isSwitch || (form.highest == 1 && form.words.empty()); }
};

inline constexpr ValueWord kTypeWords[] = {{"folder", "a folder"},
                                           {"directory", "an LDAP directory"}};
inline constexpr ValueWord kAuthenticationWords[] = {{"anonymous", "anonymous"},
                                                     {"simple", "a name and a password"},
                                                     {"windows", "the Windows logon"}};
inline constexpr ValueWord kConflictWords[] = {
    {"replace", "the last writer wins"}, {"refuse", "it stays"}, {"merge", "edits are merged"}};
inline constexpr ValueWord kSecurityWords[] = {
    {"none", "nothing is secured"}, {"starttls", "StartTLS"}, {"ldaps", "LDAPS"}};

// In the order in which they are read.
inline constexpr auto kDepotValues = [] {
    using enum ValueScope;
    using Depot = DepotSettings;
    using Location = LocationSettings;
    return std::to_array<DepotValue>({
        {"DefaultDepot", kDepot, &Depot::defaultDepot, "--default",
         "Whether it is the default; the first such depot in the list wins, else the first of all",
         Number(0, 1, "it is not the default", "it is not the default")},
        {"OrderIndex", kDepot, &Depot::orderIndex, "--order",
         "Its place in the list, ascending; depots without one follow",
         AnyNumber("the depot has no place of its own in the list", "none")},
        {"Contains", kDepot, &Depot::contains, "--contains", "The kinds of files in it, a bit each",
         AnyNumber("it holds no kinds of its own")},
        {"Icon", kDepot, &Depot::icon, "--icon", "Its icon's location", Text("it has no icon")},
        {"Path", kLocation, &Location::path, "--path", "The folder, or the base in the directory",
         RequiredText("there is no such location")},
        {"Type", kLocation, &Location::type, "--type", "What the location is",
         OneOf(kTypeWords, "the location is a folder", "the location is a folder")},
        {"Host", kDirectory, &Location::host, "--host",
         "The directory's server, or several with blanks between them", Text("no server is named")},
        {"Username", kDirectory, &Location::username, "--username",
         "Who logs on; users are asked for a missing one, or refused",
         Text("users are asked for a name")},
        {"Password", kDirectory, &Location::password, nullptr,
         "The password; users are asked for a missing one, or refused",
         Text("users are asked for a password")},
        {"CredentialTarget", kDirectory, &Location::credentialTarget, "--credential-target",
         "Where the user's credential store has name and password, for a location without a "
         "password",
         Text("nothing is looked up there")},
        {"Port", kDirectory, &Location::port, "--port", "The server's port",
         Number(1, 65535, "no server has such a port")},
        {"Authentication", kDirectory, &Location::authentication, "--authentication",
         "How users log on", OneOf(kAuthenticationWords, "it counts as 1 (a name and a password)")},
        {"Version", kDirectory, &Location::version, "--protocol-version", "The protocol's version",
         Number(2, 3, "there are the versions 2 and 3 only")},
        {"ConnectTimeout", kDirectory, &Location::connectTimeout, "--connect-timeout",
         "How long to wait for the connection, in seconds",
         Number(1, 3600, "a second to an hour make sense", "120 seconds are taken")},
        {"Security", kDirectory, &Location::security, "--security", "How the connection is secured",
         OneOf(kSecurityWords, "it counts as 1 (StartTLS)").NeverIgnored(1)},
        {"DetectConflicts", kDirectory, &Location::detectConflicts, "--detect-conflicts",
         "What becomes of what someone else stored meanwhile",
         OneOf(kConflictWords, "it counts as 0 (the last writer wins)",
               "0 is taken (the last writer wins)")
             .AsSwitch()},
        {"KeepConnection", kDirectory, &Location::keepConnection, "--keep-connection",
         "How long a session keeps an idle connection, in seconds",
         Number(0, 3600, "it is kept for 3600 seconds", "none is kept")},
        {"FollowReferrals", kDirectory, &Location::followReferrals, "--follow-referrals",
         "Whether to follow the server to others, on a connection that is not secured",
         Number(0, 1, "only 1 follows referrals", "0 is taken (no referral is followed)")},
        {"Offline", kDirectory, &Location::offline, "--offline-files",
         "Whether what users read and list is kept for the time when the server is away",
         Number(0, 1, "only 1 keeps anything", "0 is taken (nothing is kept)")},
        {"OfflineSize", kDirectory, &Location::offlineSize, "--offline-size",
         "How much of it is kept for each user, in MB",
         Number(1, 4096, "1 to 4096 make sense", "100 MB are kept")},
        {"FileAttributeName", kDirectory, &Location::fileAttributeName, "--file-attribute",
         "What names a file's entry", SchemaName("CN")},
        {"FileObjectClass", kDirectory, &Location::fileObjectClass, "--file-class",
         "The class of a file's entry", SchemaName("quillonFileBinary")},
        {"FolderAttributeName", kDirectory, &Location::folderAttributeName, "--folder-attribute",
         "What names a folder's entry", SchemaName("CN")},
        {"FolderObjectClass", kDirectory, &Location::folderObjectClass, "--folder-class",
         "The class of a folder's entry", SchemaName("quillonFolder")},
        {"FileContentsAttributeName", kDirectory, &Location::fileContentsAttributeName,
         "--contents-attribute", "What holds a file's bytes",
         SchemaName("quillonFileContentsBinary")},
    });
}();

// Returns what a missing value counts as, such as "389" or "CN"; "none" where that is nothing.
std::string DefaultOf(const DepotValue& value);

// How a number is read.
struct NumberReading {
    ValueScope scope;
    std::uint32_t standard;                   // what it counts as without a value
    std::optional<std::uint32_t> unreadable;  // see ValueForm
};

// Where values are read from: a key of the registry, or what was read from one.
class ValueSource {
public:
    virtual ~ValueSource() = default;
    virtual std::optional<std::string> Text(const std::string& name) const = 0;
    virtual std::optional<std::uint32_t> Number(const std::string& name,
                                                const NumberReading& reading) const = 0;
};

// Store what the source has of a depot's own values, and of the values of the location with that
// number, those of its type among them; the others stay as they are. The latter returns false, with
// nothing stored, when there is no such location; a type that is none is stored as a folder.
void ReadDepotValues(const ValueSource& source, DepotSettings& settings);
bool ReadLocationValues(const ValueSource& source, int location, LocationSettings& settings);

}  // namespace depot
