// tree, find and stat
#include <algorithm>

#include "config/file_types.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/profile_values.h"
#include "depotctl/utf8_text.h"
#include "depotctl/wildcard.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

struct TreeOptions {
    std::string path;
    std::uint32_t depth = kWholeTree;
};

struct FindOptions {
    std::string path, pattern;
};

// A folder of a depot with all below it, down to a depth.
class ListedTree {
public:
    ListedTree(Program& program, const Place& top, std::uint32_t depth) : top_(top) {
        if (Places(program).Require(top) != ItemKind::kFolder) {
            Refuse(top.Shown() + " is a file");
        }
        const OpenedPlace at(top, "list");
        const Result listed = ListTree(at.store, at.path, tree_, {.depth = depth});
        if (!listed) Fail("list", top, listed.Why());
        children_.resize(tree_.items.size());
        for (std::size_t index = 1; index < tree_.items.size(); ++index) {
            children_[tree_.items[index].parent].push_back(index);
        }
        for (std::vector<std::size_t>& children : children_) {
            std::sort(children.begin(), children.end(), [this](std::size_t a, std::size_t b) {
                return IsBefore(tree_.items[a], tree_.items[b]);
            });
        }
    }

    // Calls `take(item, path)` for all below the top, a folder before what it holds.
    template <class Take>
    void ForEach(const Take& take) const {
        ForEachIn(0, top_, take);
    }

    Json Nested(std::size_t index = 0) const {
        const TreeItem& item = tree_.items[index];
        Json json = {{"name", index == 0 ? top_.Utf8() : Utf8FromAnsi(item.name)},
                     {"kind", item.isFolder ? "folder" : "file"}};
        if (!item.isFolder) return json;
        json["children"] = Json::array();
        for (const std::size_t child : children_[index]) json["children"].push_back(Nested(child));
        return json;
    }

    const LeftOut& Left() const { return tree_.left; }

private:
    static bool IsBefore(const TreeItem& a, const TreeItem& b) {
        if (a.isFolder != b.isFolder) return a.isFolder;
        return ToLower(a.name) < ToLower(b.name);
    }

    template <class Take>
    void ForEachIn(std::size_t folder, const Place& place, const Take& take) const {
        for (const std::size_t index : children_[folder]) {
            const TreeItem& item = tree_.items[index];
            const Place child = Child(place, item.name);
            take(item, child);
            if (item.isFolder) ForEachIn(index, child, take);
        }
    }

    const Place top_;
    depot::Tree tree_;
    std::vector<std::vector<std::size_t>> children_;
};

// What an answer lacks stands beside it.
void ReportLeftOut(const Program& program, const LeftOut& left) {
    if (left.unsafeNames > 0) program.ReportLeftOut(left.unsafeNames);
    if (left.links > 0) {
        program.Remark({{"links", left.links}}, Counted(left.links, "link") +
                                                    " to folders: what they lead to is not listed");
    }
}

void ShowTree(Program& program, const TreeOptions& options) {
    Places places(program);
    const Place top = options.path.empty() ? places.DefaultRoot() : places.Resolve(options.path);
    const ListedTree tree(program, top, options.depth);
    std::string text = Printable(top.Utf8()) + "\n";
    tree.ForEach([&](const TreeItem& item, const Place& /*place*/) {
        text += std::string(std::size_t{2} * item.depth, ' ') + Printable(Utf8FromAnsi(item.name)) +
                (item.isFolder ? "\\\n" : "\n");
    });
    program.renderer.Answer(tree.Nested(), text);
    ReportLeftOut(program, tree.Left());
}

void Find(Program& program, const FindOptions& options) {
    Places places(program);
    const std::string pattern = ToAnsi(options.pattern);
    const ListedTree tree(program, places.Resolve(options.path), kWholeTree);
    Json rows = Json::array();
    std::string text;
    tree.ForEach([&](const TreeItem& item, const Place& place) {
        if (!MatchesWildcard(item.name, pattern)) return;
        rows.push_back({{"path", place.Utf8()}, {"kind", item.isFolder ? "folder" : "file"}});
        text += Printable(place.Utf8()) + "\n";
    });
    program.renderer.Lines(rows, text);
    ReportLeftOut(program, tree.Left());
}

// What a file's own bytes say.
void AddContents(const Place& place, Json& json) {
    const OpenedPlace at(place, "read");
    FileBuffer file;
    const Result read = at.store.ReadFile(at.path, SourceFate::kStays, file);
    if (!read) Fail("read", place, read.Why());
    json["size"] = file.length;
    const int type = DetectFileType(place.path);
    json["type"] = type;
    if (type == kUnknownFileType) return;
    for (const ProfileRow& row : ValuesOf(place)) {
        if (IsSameName(row.section, "PROFILE") && IsSameName(row.key, "Title")) {
            json["title"] = row.value;
        }
        if (IsSameName(row.section, "Host") && IsSameName(row.key, "Name"))
            json["host"] = row.value;
    }
}

// What a file system says of it.
void AddDetails(const Program& program, const Place& place, Json& json) {
    const StorePath stored = place.Stored();
    const auto local = stored.store->LocalPath(stored.path);
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!local || !GetFileAttributesExA(local->c_str(), GetFileExInfoStandard, &data)) return;
    json["created"] = program.renderer.TimeText(data.ftCreationTime);
    json["changed"] = program.renderer.TimeText(data.ftLastWriteTime);
    json["readOnly"] = (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
}

Json StatOf(const Program& program, const Places& places, const Selected& selected) {
    const Place& place = selected.place;
    const ItemKind kind = places.Require(selected);
    Json json = {{"path", place.Utf8()}, {"kind", kind == ItemKind::kFolder ? "folder" : "file"}};
    if (kind == ItemKind::kFile) AddContents(place, json);
    AddDetails(program, place, json);
    const OpenedPlace at(place, "look at");
    json["writable"] = at.store.TestWritable(at.path).IsDone();
    return json;
}

std::string StatText(const Json& json) {
    std::string text;
    for (const auto& [name, value] : json.items()) {
        text +=
            name + ": " + Printable(value.is_string() ? value.get<std::string>() : value.dump());
        text += "\n";
    }
    return text;
}

void Stat(Program& program, const std::string& path) {
    Places places(program);
    const Selection selection = places.Select(path);
    Json all = Json::array();
    std::string text;
    for (const Selected& selected : selection.items) {
        all.push_back(StatOf(program, places, selected));
        text += (text.empty() ? "" : "\n") + StatText(all.back());
    }
    program.renderer.Answer(selection.isPattern ? all : all.front(), text);
}

}  // namespace

void AddLookCommands(CLI::App& app, Program& program) {
    const auto tree = AddCommand<TreeOptions>(
        app, program,
        {"tree", "Show a folder with all below it",
         "Examples:\n  depotctl tree \"<Work>\\\"\n  depotctl tree --depth 2 \"<Team>\\Sessions\""},
        ShowTree);
    tree.app.add_option("path", tree.options.path,
                        "The folder; the default depot's root without it");
    tree.app.add_option("--depth", tree.options.depth, "So many levels of folders only")
        ->check(CLI::Range(1u, 10000u));

    const auto find = AddCommand<FindOptions>(
        app, program,
        {"find", "Find files and folders by their names in a folder and all below it",
         "Example:\n  depotctl find \"<Work>\\\" \"*.kre\""},
        Find);
    find.app.add_option("path", find.options.path, "The folder")->required();
    find.app.add_option("pattern", find.options.pattern, "The name, with * and ?")->required();

    AddPathCommand(
        app, program,
        {"stat", "Show what is known of a file or folder, and whether it can be written",
         "Example:\n  depotctl stat \"<Work>\\Sessions\\office.kre\"", "The file or folder"},
        Stat);
}

}  // namespace depot::ctl
