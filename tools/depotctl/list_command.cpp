// ls
#include <algorithm>

#include "config/file_types.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/hidden_entries.h"
#include "depotctl/places.h"
#include "depotctl/wildcard.h"
#include "directory/connection_scope.h"
#include "fileops/enumerate.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

struct ListOptions {
    std::string path;
    std::string filter = ".*";
    bool recursive = false;
    bool foldersOnly = false;
    bool details = false;
};

bool IsFolder(const CDepotItem& item) {
    return item.kindFlags == kFolderKind && item.findData &&
           (item.findData->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

Json ItemRow(const Renderer& renderer, const CDepotItem& item, const std::string& name) {
    Json row;
    row["name"] = Utf8FromAnsi(name);
    row["kind"] = IsFolder(item) ? "folder" : "file";
    row["path"] = Utf8FromAnsi(item.path);
    if (!IsFolder(item)) row["type"] = item.fileType;
    const WIN32_FIND_DATAA* const data = item.findData.get();
    const bool dated = data && (data->ftLastWriteTime.dwHighDateTime != 0);
    if (dated && !IsFolder(item)) {
        row["size"] = Joined(data->nFileSizeHigh, data->nFileSizeLow);
    }
    if (dated) row["changed"] = renderer.TimeText(data->ftLastWriteTime);
    return row;
}

bool ShownBefore(const CDepotItem* left, const CDepotItem* right) {
    if (IsFolder(*left) != IsFolder(*right)) return IsFolder(*left);
    return ToLower(left->path) < ToLower(right->path);
}

// Lists one folder after the other and collects the rows.
class Lister {
public:
    Lister(const Renderer& renderer, const ListOptions& options, Json& rows)
        : renderer_(&renderer), options_(&options), filter_(ToAnsi(options.filter)), rows_(&rows) {}

    void List(const Place& folder, const std::string& prefix) {
        if (!TryToList(folder, prefix)) Fail("list", folder);
    }

    // Lists what a folder holds of the names that a pattern matches, each folder with all below it
    // where that is wanted. Returns false, with no rows, where the pattern is itself a name there.
    bool ListMatches(const Place& folder, const std::string& pattern) {
        pattern_ = pattern;
        List(folder, {});
        return !isName_;
    }

    // Returns false, with no rows of this folder, when it cannot be listed.
    bool TryToList(const Place& folder, const std::string& prefix) {
        CDepotItems items;
        const CDepotItem request(folder.path, folder.depot);
        folder.ForgetFailure();
        Enumerate(items, &request, filter_, {}, options_->foldersOnly);
        if (folder.LastCode() != LDAP_SUCCESS) return false;
        std::vector<const CDepotItem*> sorted(items.begin(), items.end());
        std::sort(sorted.begin(), sorted.end(), ShownBefore);
        if (prefix.empty() && !pattern_.empty()) KeepMatches(sorted);
        for (const CDepotItem* item : sorted) Add(*item, folder, prefix);
        foreignNames_ += items.unsafeNames;
        return true;
    }

    // Lists the place itself, a folder or a file. Returns whether it is a folder of a directory
    // that could be listed.
    bool ListPlace(const Places& places, const Place& place);

    // How many names the listings left out.
    std::uint32_t ForeignNames() const { return foreignNames_; }

private:
    void KeepMatches(std::vector<const CDepotItem*>& items) {
        isName_ = std::any_of(items.begin(), items.end(), [this](const CDepotItem* item) {
            return EqualsNoCase(NamePart(item->path), pattern_);
        });
        std::erase_if(items, [this](const CDepotItem* item) {
            return isName_ || !MatchesWildcard(NamePart(item->path), pattern_);
        });
    }

    void Add(const CDepotItem& item, const Place& folder, const std::string& prefix) {
        const std::string name = NamePart(item.path);
        rows_->push_back(ItemRow(*renderer_, item, prefix + name));
        if (options_->recursive && IsFolder(item)) List(Child(folder, name), prefix + name + "\\");
    }

    const Renderer* renderer_;
    const ListOptions* options_;
    std::string filter_;
    Json* rows_;
    std::string pattern_;  // of the names at the top; all without one
    bool isName_ = false;  // and there is one that is just this
    std::uint32_t foreignNames_ = 0;
};

// The listing of a single file.
Json FileRow(const Renderer& renderer, const Place& place) {
    CDepotItem item(place.path, place.depot);
    item.fileType = static_cast<std::uint32_t>(DetectFileType(place.path));
    const StorePath stored = place.Stored();
    if (const auto local = stored.store->LocalPath(stored.path)) {
        item.findData = std::make_unique<WIN32_FIND_DATAA>();
        FileSearch(*local).Next(*item.findData);
    }
    return ItemRow(renderer, item, NamePart(place.path));
}

std::vector<Column> Columns(bool details) {
    if (!details) return {{"name", "NAME"}, {"kind", "KIND"}};
    return {{"name", "NAME"},
            {"kind", "KIND"},
            {"type", "TYPE", Align::kRight},
            {"size", "SIZE", Align::kRight},
            {"changed", "CHANGED"}};
}

bool Lister::ListPlace(const Places& places, const Place& place) {
    // What holds anything is a folder: a server need not be asked for that before.
    const bool listed = place.IsFarAway() && TryToList(place, {});
    if (!rows_->empty()) return listed;
    if (places.Require(place) == ItemKind::kFile) {
        rows_->push_back(FileRow(*renderer_, place));
    } else if (!listed) {
        List(place, {});
    }
    return listed;
}

// Whether the pattern is itself the name of something, which listings may leave out.
bool IsName(const Places& places, const Place& pattern, const Lister& lister) {
    return lister.ForeignNames() > 0 && places.KindOf(pattern) != ItemKind::kMissing;
}

// Whether the listing of a directory is empty only because its user sees no classes.
bool ListsNothingOfWhatIsThere(const Place& place) {
    CLDAPItems& directory = *place.depot->DirectoryConnection();
    const ConnectionScope connection(directory.Connection());
    return connection && HidesClasses(directory, place.Stored().path);
}

void ReportHiddenClasses(const Program& program) {
    if (program.renderer.IsJson()) {
        program.errors.Write(Json{{"hiddenClasses", true}}.dump() + "\n");
        return;
    }
    program.Complain(
        "entries are there but their class may not be read: grant the user the right to read "
        "objectClass");
}

void List(Program& program, const ListOptions& options) {
    Places places(program);
    const Place place = options.path.empty() ? places.DefaultRoot() : places.Resolve(options.path);
    Json rows = Json::array();
    Lister lister(program.renderer, options, rows);
    const bool isPattern = IsPattern(place) &&
                           lister.ListMatches(FolderOf(place), NamePart(place.path)) &&
                           !IsName(places, place, lister);
    bool isListed = false;
    if (!isPattern) {
        rows.clear();
        lister = Lister(program.renderer, options, rows);
        isListed = lister.ListPlace(places, place);
    } else if (rows.empty()) {
        RefuseUnmatched(place);
    }
    program.renderer.List(rows, Columns(options.details));
    if (lister.ForeignNames() > 0) program.ReportLeftOut(lister.ForeignNames());
    if (rows.empty() && isListed && ListsNothingOfWhatIsThere(place)) ReportHiddenClasses(program);
}

}  // namespace

void AddListCommand(CLI::App& app, Program& program) {
    const auto [command, options] =
        AddCommand<ListOptions>(app, program,
                                {"ls", "List a folder of a depot, or any folder",
                                 "Examples:\n  depotctl ls \"<Work>\\Sessions\"\n"
                                 "  depotctl ls -l --filter .kre;.kra \"<Work>\\\"\n"
                                 "  depotctl ls --json -r \"<Team>\\\""},
                                List);
    command.add_option("path", options.path, "The folder; the default depot's root without it")
        ->check(CLI::Validator(
            [](const std::string& text) { return text.empty() ? "it is empty" : std::string(); },
            {}));
    command.add_flag("-l,--long", options.details, "Types, sizes and times, too");
    command.add_flag("-r,--recursive", options.recursive, "The folders below it, too");
    command.add_flag("--folders", options.foldersOnly, "Folders only");
    command.add_option("--filter", options.filter,
                       "Only files whose extensions occur in this text, such as .kre;.kra");
}

}  // namespace depot::ctl
