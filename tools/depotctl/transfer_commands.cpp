// upload, download and publish
#include <utility>

#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/copying.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/profile_copy.h"
#include "depotctl/progress.h"
#include "depotctl/transfer.h"
#include "fileops/publish.h"
#include "fileops/publish_plan.h"
#include "platform/not_copied.h"
#include "platform/paths.h"

namespace depot::ctl {
namespace {

enum class Direction { kUp, kDown };

void RequireSides(const Place& from, const Place& to, Direction direction) {
    const Place& local = direction == Direction::kUp ? from : to;
    const Place& remote = direction == Direction::kUp ? to : from;
    if (!local.isPlain) Refuse(local.Shown() + " is in a depot; cp copies between depots");
    if (remote.isPlain) Refuse(remote.Shown() + " is in no depot");
}

template <Direction direction>
void Run(Program& program, const TransferOptions& options) {
    RunCopy(program, options,
            {direction == Direction::kUp ? "uploaded" : "downloaded",
             [](const Place& from, ItemKind /*kind*/, const Place& to) {
                 RequireSides(from, to, direction);
             }});
}

constexpr std::uint32_t kEntryBytes = 260;
constexpr std::uint32_t kMostClients = 10000;

std::string Client(const DepotFileContext& file, std::uint32_t number) {
    return file.ReadString("Clients", "C" + std::to_string(number), {}, kEntryBytes);
}

bool IsResource(const std::string& client) {
    return client.starts_with('u');
}

// What became of each client: its new entry, and whether the file is there.
Json ClientRows(Places& places, const DepotFileContext& file,
                const std::vector<std::string>& before) {
    Json rows = Json::array();
    for (std::size_t index = 0; index < before.size(); ++index) {
        const std::string entry = Client(file, static_cast<std::uint32_t>(index + 1));
        Json row = {{"client", Utf8FromAnsi(before[index])}, {"entry", Utf8FromAnsi(entry)}};
        const std::string path = Utf8FromAnsi(entry);
        row["present"] =
            IsResource(before[index])
                ? Json()
                : Json(!entry.empty() && places.KindOf(places.Resolve(path)) == ItemKind::kFile);
        rows.push_back(std::move(row));
    }
    return rows;
}

// While it lives, the session's file is read and written in a copy.
class CopyScope : NotCopied {
public:
    CopyScope(DepotFileContext& file, const ProfileCopy& copy)
        : file_(file), path_(std::exchange(file.localPath, copy.Path())) {}
    ~CopyScope() { file_.localPath = path_; }

private:
    DepotFileContext& file_;
    const std::string path_;
};

struct Published {
    std::string stopped;        // how far it was when the user stopped it
    Json rows = Json::array();  // all clients, unless it was stopped
};

std::vector<std::string> ClientsOf(const DepotFileContext& file) {
    std::vector<std::string> clients;
    const std::uint32_t count = std::min(file.ReadInt("Skein", "Count", 0), kMostClients);
    for (std::uint32_t number = 1; number <= count; ++number) {
        clients.push_back(Client(file, number));
    }
    return clients;
}

// Refuses entries that the profile cannot hold before anything is copied for them.
void RequireEntries(const ProfileCopy& profile, const Place& place,
                    const std::vector<std::string>& clients) {
    const std::string folder = FolderPrefix(place.path);
    for (const std::string& client : clients) {
        if (!IsResource(client)) profile.RequireCharacters(Utf8FromAnsi(folder + NamePart(client)));
    }
}

Published PublishClients(Program& program, Places& places, const std::vector<std::string>& before) {
    DepotSession& session = program.Session();
    Published published;
    {
        Progress progress(program.errors);
        PublishDependentFiles(session, progress.Watcher());
        published.stopped = progress.StoppedText("clients; the others are as they were");
    }
    if (published.stopped.empty()) {
        published.rows = ClientRows(places, *session.currentFile, before);
    }
    return published;
}

Published PublishInCopy(Program& program, Places& places, const Place& place) {
    DepotFileContext& file = *program.Session().currentFile;
    const ProfileCopy copy(place, file.localPath, 0);
    Published published;
    {
        const CopyScope scope(file, copy);
        const std::vector<std::string> clients = ClientsOf(file);
        RequireEntries(copy, place, clients);
        published = PublishClients(program, places, clients);
    }
    if (file.changed) copy.Store();
    return published;
}

struct PublishOptions {
    std::string path;
    StepOptions steps{};
};

Json KindText(const std::optional<ItemKind>& kind) {
    if (!kind) return "unreachable";
    switch (*kind) {
        case ItemKind::kFile:
            return "file";
        case ItemKind::kFolder:
            return "folder, not copied";
        case ItemKind::kOther:
            return "no file, not copied";
        default:
            return "missing";
    }
}

// Adds what would be copied from where to where for the session's file.
void AddPlan(Program& program, const Place& place, Json& rows) {
    DepotFileContext& file = *program.Session().currentFile;
    const ProfileCopy copy(place, file.localPath, 0);
    const CopyScope scope(file, copy);
    for (const PlannedClient& client : PlanPublishing(program.Session())) {
        rows.push_back({{"from", Utf8FromAnsi(client.from)},
                        {"to", client.to.empty() ? Json() : Json(Utf8FromAnsi(client.to))},
                        {"kind", KindText(client.kind)},
                        {"outside", client.isOutside}});
    }
}

// Returns the clients that could not be copied, each behind a blank.
std::string PublishOne(Program& program, Places& places, const Place& place, Json& rows) {
    DepotSession& session = program.Session();
    session.LoadFile(place.path);
    DepotFileContext& file = *session.currentFile;
    if (file.localPath.empty()) Fail("open", place);
    const Published published = PublishInCopy(program, places, place);
    if (file.Release() == 0) Fail("write", place);
    session.currentFile.reset();
    if (!published.stopped.empty()) Refuse(published.stopped);
    std::string missing;
    for (const Json& row : published.rows) {
        rows.push_back(row);
        if (row["present"] == false) missing += " " + row["client"].get<std::string>();
    }
    return missing;
}

void ShowPlans(Program& program, const Selection& profiles) {
    DepotSession& session = program.Session();
    Json rows = Json::array();
    for (const Selected& selected : profiles.items) {
        session.LoadFile(selected.place.path);
        if (session.currentFile->localPath.empty()) Fail("open", selected.place);
        AddPlan(program, selected.place, rows);
        session.currentFile->Release();
        session.currentFile.reset();
    }
    program.renderer.List(
        rows, {{"from", "FROM"}, {"to", "TO"}, {"kind", "KIND"}, {"outside", "OUTSIDE DEPOTS"}});
}

void Publish(Program& program, const PublishOptions& options) {
    Places places(program);
    const Selection profiles = places.Select(options.path);
    for (const Selected& selected : profiles.items) places.RequireFile(selected);
    if (options.steps.dryRun) return ShowPlans(program, profiles);
    if (options.steps.verbose && !program.renderer.IsJson()) ShowPlans(program, profiles);
    Json rows = Json::array();
    std::string missing;
    for (const Selected& selected : profiles.items) {
        missing += PublishOne(program, places, selected.place, rows);
    }
    program.renderer.List(rows, {{"client", "CLIENT"}, {"entry", "ENTRY"}, {"present", "PRESENT"}});
    if (!missing.empty()) Refuse("these files could not be copied:" + missing);
}

}  // namespace

void AddTransferCommands(CLI::App& app, Program& program) {
    AddTransferCommand(
        app, program,
        {"upload", "Copy a local file or tree into a depot",
         "Example:\n  depotctl upload C:\\Profiles \"<Company>\\\"", "The local file or folder"},
        Run<Direction::kUp>);
    AddTransferCommand(
        app, program,
        {"download", "Copy a file or tree of a depot to a local folder",
         "Example:\n  depotctl download \"<Company>\\Profiles\" C:\\Backup", "What is fetched"},
        Run<Direction::kDown>);
    const auto [publish, options] = AddCommand<PublishOptions>(
        app, program,
        {"publish", "Copy the files that a Skein profile depends on beside it",
         "Examples:\n  depotctl publish \"<Team>\\counter.kra\"\n"
         "  depotctl publish --dry-run \"<Team>\\counter.kra\""},
        Publish);
    publish.add_option("path", options.path, "The profile in its depot")->required();
    publish.add_flag("--dry-run", options.steps.dryRun,
                     "Only show what would be copied from where, and whether a depot holds it");
    publish.add_flag("-v,--verbose", options.steps.verbose, "Show the same, then copy");
}

}  // namespace depot::ctl
