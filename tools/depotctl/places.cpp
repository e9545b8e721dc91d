#include "depotctl/places.h"

#include <algorithm>
#include <iterator>

#include "depotctl/access.h"
#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "depotctl/wildcard.h"
#include "manager/depot_list.h"
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

// Whether a server's name of an entry is one part of a path, and leads nowhere else.
bool IsOneName(const std::string& name) {
    return name != "." && name != ".." && FindSeparator(name) == std::string::npos &&
           FindCharacter(name, ':') == std::string::npos;
}

// Paths are case-insensitive; a depot's name is shown as the depot spells it.
std::string SpelledAs(const CDepot& depot, const std::string& path) {
    const std::string prefix = "<" + depot.name + ">";
    const auto length = PrefixLengthNoCase(path, prefix);
    return length ? prefix + path.substr(*length) : path;
}

}  // namespace

std::string Place::Utf8() const {
    return Utf8FromAnsi(path);
}

std::string Place::Shown() const {
    return "\"" + Utf8() + "\"";
}

std::uint32_t Place::LastCode() const {
    const Result last = depot->ActiveStore().LastFailure();
    return last ? std::uint32_t{LDAP_SUCCESS} : last.Why().code;
}

void Place::ForgetFailure() const {
    depot->ActiveStore().Keep({Reason::kRefused, CodeKind::kDirectory, LDAP_SUCCESS});
}

OpenedPlace::OpenedPlace(const Place& place, const char* action, const StorePath& stored)
    : store(*stored.store), path(stored.path), scope_(store) {
    if (!scope_) Fail(action, place, scope_.Outcome().Why());
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
    // No name of a file holds a slash.
    const std::string spelled = ReplaceAllNoCase(path, "/", "\\");
    const std::string canonical = FriendlyToCanonical(depots, spelled);
    CDepot* const depot = FindDepotForPath(depots, canonical, PathForm::kDisplay, DepotName::kKey);
    if (depot != nullptr) return InDepot(*depot, canonical);
    Refuse("no depot is named " + utf8Path.substr(0, FindAscii(utf8Path, '>') + 1) +
           "; \"depotctl depots\" lists those there are");
}

Selection Places::Select(const std::string& utf8Path) {
    const Place place = Resolve(utf8Path);
    if (IsPattern(place)) return Matches(place);
    return {{{place, {}}}, false};
}

Selection Places::Select(const std::vector<std::string>& utf8Paths) {
    Selection all;
    for (const std::string& path : utf8Paths) {
        Selection some = Select(path);
        std::move(some.items.begin(), some.items.end(), std::back_inserter(all.items));
        all.isPattern = all.isPattern || some.isPattern;
    }
    return all;
}

Selection Places::Matches(const Place& pattern) const {
    const Place folder = FolderOf(pattern);
    const std::string wanted = NamePart(pattern.path);
    const OpenedPlace at(folder, "list");
    Selection found = {{}, true};
    std::optional<Selected> literal;
    LeftOut left;
    const auto take = [&](const StoreItem& item) {
        // As a part of a path it would lead elsewhere.
        if (!IsOneName(item.name)) {
            ++left.unsafeNames;
            return;
        }
        const Selected selected = {Child(folder, item.name),
                                   item.isFolder ? ItemKind::kFolder : ItemKind::kFile};
        if (EqualsNoCase(item.name, wanted)) literal = selected;
        if (MatchesWildcard(item.name, wanted)) found.items.push_back(selected);
    };
    const Result listed = at.store.List(at.path, take, left);
    if (!listed) Fail("list", folder, listed.Why());
    if (literal) return {{*std::move(literal)}, false};
    if (left.unsafeNames > 0) program_.ReportLeftOut(left.unsafeNames);
    if (found.items.empty()) RefuseUnmatched(pattern);
    std::sort(found.items.begin(), found.items.end(), [](const Selected& a, const Selected& b) {
        return ToLower(a.place.path) < ToLower(b.place.path);
    });
    return found;
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

ItemKind Places::KindOf(const Place& place) const {
    // The base was found when the depot was opened.
    if (place.IsFarAway() && IsRoot(place)) return ItemKind::kFolder;
    const OpenedPlace at(place, "reach");
    ItemKind kind = ItemKind::kMissing;
    const Result looked = at.store.Look(at.path, kind);
    if (!looked) Fail("look at", place, looked.Why());
    if (kind != ItemKind::kOther) return kind;
    return !IsRoot(place) && HasDot(place) ? ItemKind::kFile : ItemKind::kFolder;
}

ItemKind Places::Require(const Place& place) const {
    const ItemKind kind = KindOf(place);
    if (kind == ItemKind::kMissing) Refuse(place.Shown() + " is not there");
    return kind;
}

ItemKind Places::Require(const Selected& selected) const {
    return selected.kind ? *selected.kind : Require(selected.place);
}

std::vector<ItemKind> Places::RequireAll(const Selection& selection) const {
    std::vector<ItemKind> kinds;
    for (const Selected& selected : selection.items) kinds.push_back(Require(selected));
    return kinds;
}

void Places::RequireFile(const Place& place) const {
    RequireFile(Selected{place, {}});
}

void Places::RequireFile(const Selected& selected) const {
    if (Require(selected) == ItemKind::kFolder) Refuse(selected.place.Shown() + " is a folder");
}

Place Child(const Place& folder, const std::string& name) {
    return {folder.depot, JoinPath(RemoveTrailingBackslash(folder.path), name), folder.isPlain};
}

Place FolderOf(const Place& place) {
    return {place.depot, Trimmed(FolderPrefix(place.path)), place.isPlain};
}

bool IsRoot(const Place& place) {
    return EndsRoot(place.path);
}

bool IsPattern(const Place& place) {
    return !IsRoot(place) && HasWildcard(NamePart(place.path));
}

bool HasDot(const Place& place) {
    return NamePart(place.path).find('.') != std::string::npos;
}

void RefuseUnmatched(const Place& pattern) {
    Refuse("nothing matches " + pattern.Shown());
}

void Fail(const std::string& action, const Place& place, const Error& why) {
    const bool isDirectory = why.kind == CodeKind::kDirectory && why.code != LDAP_SUCCESS;
    std::string reason;
    if (isDirectory) {
        const DirectoryWords words = WordsFor(why.code);
        const std::string help = HelpFor(why.code, words.advice);
        reason = words.text + (help.empty() ? "" : "; " + help);
    } else {
        reason = why.code != 0 ? SystemWords(why.code) : OneLine(Utf8FromAnsi(why.text));
    }
    const std::string notice = Program::TakeNotice();
    if (reason.empty()) reason = notice.empty() ? "the system refused it" : notice;
    const bool unreachable = isDirectory && MeansUnreachable(why.code);
    throw CommandFailure(unreachable ? ExitCode::kUnreachable : ExitCode::kRefused,
                         "cannot " + action + " " + place.Shown() + ": " + reason);
}

void Fail(const std::string& action, const Place& place, DWORD systemError,
          const std::string& errorText) {
    const std::uint32_t code = place.LastCode();
    const bool isDirectory = code != LDAP_SUCCESS;
    Fail(action, place,
         Error{Reason::kRefused, isDirectory ? CodeKind::kDirectory : CodeKind::kSystem,
               isDirectory ? code : systemError, errorText});
}

}  // namespace depot::ctl
