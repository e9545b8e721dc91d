#include "depotctl/places.h"

#include "depotctl/access.h"
#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "directory/connection_scope.h"
#include "manager/depot_list.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/full_path.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

bool EndsRoot(const std::string& path) {
    return path.ends_with(">\\") || path.ends_with(":\\");
}

std::string Trimmed(const std::string& path) {
    return EndsRoot(path) ? path : RemoveTrailingBackslash(path);
}

// No name of a file holds a slash.
std::string WithBackslashes(std::string path) {
    for (char& c : path) {
        if (c == '/') c = '\\';
    }
    return path;
}

// Paths are case-insensitive; a depot's name is shown as the depot spells it.
std::string SpelledAs(const CDepot& depot, const std::string& path) {
    const std::string prefix = "<" + depot.name + ">";
    const auto length = PrefixLengthNoCase(path, prefix);
    return length ? prefix + path.substr(*length) : path;
}

// What there is under an entry's name; a name without a naming attribute is the base's.
PlaceKind EntryKind(CLDAPItems& directory, const std::string& dn, const Place& place) {
    const ConnectionScope connection(directory, nullptr);
    if (!connection) Fail("reach", place);
    const std::uint32_t code = directory.FindEntry(dn);
    if (code == LDAP_NO_SUCH_OBJECT) return PlaceKind::kMissing;
    if (code != LDAP_SUCCESS) {
        directory.SetLastError(code);
        Fail("look at", place);
    }
    std::string name;
    bool isFolder = false;
    const bool named = directory.SplitEntryName(dn, name, isFolder) != 0;
    return named && !isFolder ? PlaceKind::kFile : PlaceKind::kFolder;
}

std::string SystemWords(DWORD error) {
    std::string text;
    FormatErrorText(error, nullptr, nullptr, &text, nullptr);
    return OneLine(Utf8FromAnsi(text));
}

}  // namespace

std::string Place::Storage() const {
    return DisplayToStorage(*depot, path);
}

std::string Place::Utf8() const {
    return Utf8FromAnsi(path);
}

std::string Place::Shown() const {
    return "\"" + Utf8() + "\"";
}

Places::Places(Program& program) : program_(program), local_(nullptr) {
    auto root = std::make_unique<CDepotPath>(local_.paths.get());
    root->path = FullPath(".");
    local_.paths->Append(std::move(root));
}

Place Places::Resolve(const std::string& utf8Path) {
    const std::string path = ToAnsi(utf8Path);
    if (path.empty()) throw CommandFailure(ExitCode::kUsage, "a path is empty");
    if (!path.starts_with('<')) return Plain(path);
    CDepots& depots = program_.Depots();
    const std::string canonical = FriendlyToCanonical(depots, WithBackslashes(path));
    CDepot* const depot = FindDepotForPath(depots, canonical, PathForm::kDisplay, DepotName::kKey);
    if (depot != nullptr) return InDepot(*depot, canonical);
    Refuse("no depot is named " + utf8Path.substr(0, FindAscii(utf8Path, '>') + 1) +
           "; \"depotctl depots\" lists those there are");
}

Place Places::InDepot(CDepot& depot, const std::string& path) {
    if (opened_.insert(&depot).second) OpenDepot(depot);
    const std::string whole = path.ends_with('>') ? path + "\\" : path;
    return {&depot, Trimmed(SpelledAs(depot, whole)), false};
}

Place Places::Plain(const std::string& path) {
    const std::string full = FullPath(path);
    CDepot* const depot = FindDepotHolding(program_.Depots(), full);
    if (depot == nullptr || depot->name.empty()) return {&local_, Trimmed(full), true};
    return InDepot(*depot, StorageToDisplay(*depot, full));
}

Place Places::DefaultRoot() {
    CDepot* const depot = GetDefaultDepot(program_.Depots(), 0);
    if (depot == nullptr) Refuse("no depot is defined");
    const std::string root = BuildDisplayPath(*depot, {}, PathForm::kDisplay, DepotName::kKey);
    if (depot->name.empty()) return {&local_, Trimmed(root), true};
    return InDepot(*depot, root);
}

PlaceKind Places::KindOf(const Place& place) const {
    const std::string storage = place.Storage();
    if (CLDAPItems* const directory = place.Directory()) {
        return EntryKind(*directory, storage, place);
    }
    const DWORD attributes = GetFileAttributesA(storage.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return PlaceKind::kMissing;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PlaceKind::kFolder : PlaceKind::kFile;
}

PlaceKind Places::Require(const Place& place) const {
    const PlaceKind kind = KindOf(place);
    if (kind == PlaceKind::kMissing) Refuse(place.Shown() + " is not there");
    return kind;
}

Place Child(const Place& folder, const std::string& name) {
    return {folder.depot, JoinPath(RemoveTrailingBackslash(folder.path), name), folder.isPlain};
}

bool IsRoot(const Place& place) {
    return EndsRoot(place.path);
}

void Fail(const std::string& action, const Place& place, DWORD systemError,
          const std::string& errorText) {
    const CLDAPItems* const directory = place.Directory();
    const std::uint32_t code = directory ? directory->LastError() : 0;
    std::string reason;
    if (code != 0) {
        reason = WordsFor(code).text;
    } else if (systemError != 0) {
        reason = SystemWords(systemError);
    } else {
        reason = OneLine(Utf8FromAnsi(errorText));
    }
    const std::string notice = Program::TakeNotice();
    if (reason.empty()) reason = notice.empty() ? "the system refused it" : notice;
    throw CommandFailure(MeansUnreachable(code) ? ExitCode::kUnreachable : ExitCode::kRefused,
                         "cannot " + action + " " + place.Shown() + ": " + reason);
}

}  // namespace depot::ctl
