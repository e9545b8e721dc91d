// cat, get and set
#include <algorithm>
#include <memory>

#include "depotctl/ascii.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/profile_copy.h"
#include "depotctl/utf8_text.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot::ctl {
namespace {

struct ValueOptions {
    std::string path, section, key, value;
    std::optional<std::string> defaultValue;
    bool remove = false;
    bool create = false;
    unsigned codePage = 0;  // found out by the profile's bytes
};

// A plain file of a shorter path would be taken for one of the default depot.
constexpr std::size_t kShortestPlainPath = 8;

std::string LongEnough(std::string path) {
    while (path.size() < kShortestPlainPath) path.insert(FindSeparator(path) + 1, ".\\");
    return path;
}

bool IsMissingOrEmpty(const std::string& path) {
    const auto bytes = ReadLocalFile(path);
    return !bytes || bytes->empty();
}

// Loads a profile as the session's current file. What a server hands out need not be looked at
// before.
DepotFileContext& Load(Program& program, const Places& places, const Place& place) {
    const bool isFetched = place.IsFarAway() && HasDot(place);
    if (!isFetched) places.RequireFile(place);
    DepotSession& session = program.Session();
    session.LoadFile(place.isPlain ? LongEnough(place.path) : place.path);
    const std::string& local = session.currentFile->localPath;
    if (isFetched && IsMissingOrEmpty(local)) places.RequireFile(place);
    if (local.empty()) Fail("open", place);
    if (const std::uint32_t code = session.currentFile->FetchCode(); code != LDAP_SUCCESS) {
        Fail("read", place, {Reason::kRefused, CodeKind::kDirectory, code});
    }
    return *session.currentFile;
}

// A terminal is shown characters, and never what would move its cursor.
std::string TerminalText(const std::string& bytes) {
    const ProfileEncoding encoding = EncodingOf(bytes, 0).value_or(ProfileEncoding{});
    const std::string text = ShownProfileText(encoding, ProfileText(encoding, bytes));
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\t\r\n", at), text.size());
        shown += Printable(text.substr(at, end - at));
        if (end < text.size()) shown.push_back(text[end]);
        at = end + 1;
    }
    return shown;
}

void Cat(Program& program, const std::string& path) {
    Places places(program);
    const Place place = places.Resolve(path);
    const OpenedPlace at(place, "read");
    FileBuffer file;
    const Result read = at.store.ReadFile(at.path, SourceFate::kStays, file);
    // Only then it matters what it is.
    if (!read || file.length == 0) places.RequireFile(place);
    if (!read) Fail("read", place, read.Why());
    if (program.output.IsTerminal()) {
        program.output.Write(TerminalText({file.bytes.get(), file.bytes.get() + file.length}));
    } else {
        program.output.WriteBytes(file.bytes.get(), file.length);
    }
}

void ListValues(const Program& program, const ProfileCopy& profile, const std::string& only) {
    Json rows = Json::array();
    for (const auto& [section, key, value] : profile.Rows(only)) {
        rows.push_back({{"section", section}, {"key", key}, {"value", value}});
    }
    program.renderer.List(rows, {{"section", "SECTION"}, {"key", "KEY"}, {"value", "VALUE"}});
}

void Get(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const ProfileCopy profile(place, Load(program, places, place).localPath, options.codePage);
    if (options.key.empty()) return ListValues(program, profile, options.section);
    const std::optional<std::string> found = profile.Find(options.section, options.key);
    const std::optional<std::string>& answer = found ? found : options.defaultValue;
    if (!answer) {
        Refuse(place.Shown() + " has no value \"" + options.key + "\" in section \"" +
               options.section + "\"");
    }
    program.renderer.Answer(
        {{"section", options.section}, {"key", options.key}, {"value", *answer}}, *answer);
}

// Makes an empty profile where there is none.
void Create(const Place& place) {
    const OpenedPlace at(place, "create");
    const FileBuffer empty = {0, std::make_unique<std::uint8_t[]>(1)};
    // Someone else may have made it meanwhile: it must not be emptied.
    const Result created = at.store.WriteFile(at.path, empty, {ExistingEntries::kRefuse});
    if (!created) Fail("create", place, created.Why());
}

void Set(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    if (options.create && places.KindOf(place) == ItemKind::kMissing) Create(place);
    DepotFileContext& file = Load(program, places, place);
    {
        ProfileCopy profile(place, file.localPath, options.codePage);
        profile.Write(options.section, options.key, options.remove ? "" : options.value);
        profile.Store();
    }
    file.changed = true;
    const bool stored = file.Release() != 0;
    program.Session().currentFile.reset();
    if (!stored) Fail("write", place, 0, "the file cannot be written");
    program.renderer.Answer({{"section", options.section},
                             {"key", options.key},
                             {"value", options.remove ? Json() : Json(options.value)}},
                            options.remove ? "removed" : "set");
}

void AddCodePage(CLI::App& command, ValueOptions& options) {
    command
        .add_option("--code-page", options.codePage,
                    "The profile's code page, 65001 for UTF-8; found out by its bytes without it")
        ->check([](const std::string& text) {
            return IsShortNumber(text) && CanHoldProfiles(static_cast<unsigned>(std::stoul(text)))
                       ? std::string()
                       : "no profile can be written in code page " + text;
        });
}

}  // namespace

void AddProfileCommands(CLI::App& app, Program& program) {
    AddPathCommand(
        app, program,
        {"cat", "Write a file's bytes to the output (a terminal is shown its text)",
         "Example:\n  depotctl cat \"<Work>\\Sessions\\office.kre\" > office.kre", "The file"},
        Cat);

    const auto get = AddCommand<ValueOptions>(
        app, program,
        {"get", "Read values of a profile",
         "Examples:\n  depotctl get \"<Work>\\Sessions\\office.kre\" Host Name\n"
         "  depotctl get --json \"<Work>\\Sessions\\office.kre\""},
        Get);
    ValueOptions& wanted = get.options;
    get.app.add_option("path", wanted.path, "The profile")->required();
    get.app.add_option("section", wanted.section, "Its section; all without it");
    get.app.add_option("key", wanted.key, "The key in the section; all without it");
    get.app.add_option("--default", wanted.defaultValue,
                       "What to answer when there is no such value");
    AddCodePage(get.app, wanted);

    const auto set = AddCommand<ValueOptions>(
        app, program,
        {"set", "Write a value of a profile, or remove it",
         "Examples:\n  depotctl set \"<Work>\\Sessions\\office.kre\" Host Name mail.example.com\n"
         "  depotctl set --remove \"<Work>\\Sessions\\office.kre\" Host Port"},
        Set);
    ValueOptions& change = set.options;
    set.app.add_option("path", change.path, "The profile")->required();
    set.app.add_option("section", change.section, "Its section")->required();
    set.app.add_option("key", change.key, "The key in the section")->required();
    CLI::Option* const value = set.app.add_option("value", change.value, "The new value");
    set.app.add_flag("--remove", change.remove, "Remove the value");
    set.app.add_flag("--create", change.create, "Make the profile when there is none");
    AddCodePage(set.app, change);
    set.app.parse_complete_callback([&change, value] {
        if ((value->count() > 0) == change.remove) {
            throw CLI::ValidationError("set", "either a value or --remove is required");
        }
    });
}

}  // namespace depot::ctl
