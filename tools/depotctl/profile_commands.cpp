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
    bool update = false;
    StepOptions steps{};
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

void CatOne(Program& program, const Places& places, const Selected& selected) {
    const Place& place = selected.place;
    const OpenedPlace at(place, "read");
    FileBuffer file;
    const Result read = at.store.ReadFile(at.path, SourceFate::kStays, file);
    // Only then it matters what it is.
    if (!read || file.length == 0) places.RequireFile(selected);
    if (!read) Fail("read", place, read.Why());
    if (program.output.IsTerminal()) {
        program.output.Write(TerminalText({file.bytes.get(), file.bytes.get() + file.length}));
    } else {
        program.output.WriteBytes(file.bytes.get(), file.length);
    }
}

void Cat(Program& program, const std::string& path) {
    Places places(program);
    const Selection files = places.Select(path);
    for (const Selected& file : files.items) {
        if (files.isPattern) places.RequireFile(file);
    }
    for (const Selected& file : files.items) CatOne(program, places, file);
}

// The rows of the values that are wanted of a profile.
Json ValueRows(const ProfileCopy& profile, const ValueOptions& options) {
    Json rows = Json::array();
    if (options.key.empty()) {
        for (const auto& [section, key, value] : profile.Rows(options.section)) {
            rows.push_back({{"section", section}, {"key", key}, {"value", value}});
        }
        return rows;
    }
    const std::optional<std::string> found = profile.Find(options.section, options.key);
    const std::optional<std::string>& answer = found ? found : options.defaultValue;
    if (answer) {
        rows.push_back({{"section", options.section}, {"key", options.key}, {"value", *answer}});
    }
    return rows;
}

[[noreturn]] void RefuseMissing(const Place& place, const ValueOptions& options) {
    Refuse(place.Shown() + " has no value \"" + options.key + "\" in section \"" + options.section +
           "\"");
}

// Of a pattern each row names its profile, and a profile without the value has none.
void GetFromAll(Program& program, const Places& places, const Selection& profiles,
                const ValueOptions& options) {
    for (const Selected& selected : profiles.items) places.RequireFile(selected);
    Json rows = Json::array();
    for (const Selected& selected : profiles.items) {
        const Place& place = selected.place;
        const ProfileCopy profile(place, Load(program, places, place).localPath, options.codePage);
        for (const Json& value : ValueRows(profile, options)) {
            Json row = {{"path", place.Utf8()}};
            row.update(value);
            rows.push_back(std::move(row));
        }
    }
    if (rows.empty() && !options.key.empty()) {
        RefuseMissing(profiles.items.front().place, options);
    }
    program.renderer.List(
        rows, {{"path", "PATH"}, {"section", "SECTION"}, {"key", "KEY"}, {"value", "VALUE"}});
}

void Get(Program& program, const ValueOptions& options) {
    Places places(program);
    const Selection profiles = places.Select(options.path);
    if (profiles.isPattern) return GetFromAll(program, places, profiles, options);
    const Place& place = profiles.items.front().place;
    const ProfileCopy profile(place, Load(program, places, place).localPath, options.codePage);
    const Json rows = ValueRows(profile, options);
    if (options.key.empty()) {
        program.renderer.List(rows, {{"section", "SECTION"}, {"key", "KEY"}, {"value", "VALUE"}});
        return;
    }
    if (rows.empty()) RefuseMissing(place, options);
    program.renderer.Answer(rows.front(), rows.front()["value"].get<std::string>());
}

// Makes an empty profile where there is none.
void Create(const Place& place) {
    const OpenedPlace at(place, "create");
    const FileBuffer empty = {0, std::make_unique<std::uint8_t[]>(1)};
    // Someone else may have made it meanwhile: it must not be emptied.
    const Result created = at.store.WriteFile(at.path, empty, {ExistingEntries::kRefuse});
    if (!created) Fail("create", place, created.Why());
}

std::string ValueText(const Place& place, const ValueOptions& options) {
    const std::string name = "[" + options.section + "] " + options.key;
    return place.Utf8() + " " + name + (options.remove ? "" : "=" + options.value);
}

// Whether --update finds the value as it is to be.
bool IsUnneeded(const ProfileCopy& profile, const ValueOptions& options) {
    if (!options.update) return false;
    const std::optional<std::string> found = profile.Find(options.section, options.key);
    return options.remove ? !found : found == options.value;
}

// What would stand in a profile that is made only with its first value.
void NoteNewProfile(const Place& place, const ValueOptions& options, Steps& steps) {
    steps.Note({"make", {}, place.Utf8()});
    if (!options.remove) steps.Note({"set", {}, ValueText(place, options)});
}

struct Setting {
    Program& program;
    const Places& places;
    const ValueOptions& options;
    Steps& steps;
};

void SetOne(const Setting& setting, const Place& place) {
    const auto& [program, places, options, steps] = setting;
    if (options.create && places.KindOf(place) == ItemKind::kMissing) {
        if (!steps.AreTaken()) return NoteNewProfile(place, options, steps);
        Create(place);
    }
    DepotFileContext& file = Load(program, places, place);
    const auto release = [&] {
        const bool stored = file.Release();
        program.Session().currentFile.reset();
        if (!stored) Fail("write", place, 0, "the file cannot be written");
    };
    {
        ProfileCopy profile(place, file.localPath, options.codePage);
        if (IsUnneeded(profile, options)) return release();
        profile.Write(options.section, options.key, options.remove ? "" : options.value);
        steps.Note({options.remove ? "unset" : "set", {}, ValueText(place, options)});
        if (!steps.AreTaken()) return release();
        profile.Store();
    }
    file.changed = true;
    release();
}

void Set(Program& program, const ValueOptions& options) {
    Places places(program);
    const Selection profiles = places.Select(options.path);
    for (const Selected& selected : profiles.items) {
        if (profiles.isPattern) places.RequireFile(selected);
    }
    Steps steps(program, options.steps);
    for (const Selected& selected : profiles.items) {
        SetOne({program, places, options, steps}, selected.place);
    }
    Json answer = {{"section", options.section},
                   {"key", options.key},
                   {"value", options.remove ? Json() : Json(options.value)}};
    if (profiles.isPattern) answer["profiles"] = profiles.items.size();
    steps.Answer(answer, options.remove ? "removed" : "set");
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
    set.app.add_flag("-u,--update", change.update,
                     "Leave a profile as it is that has the value already");
    AddStepFlags(set.app, change.steps);
    AddCodePage(set.app, change);
    set.app.parse_complete_callback([&change, value] {
        if ((value->count() > 0) == change.remove) {
            throw CLI::ValidationError("set", "either a value or --remove is required");
        }
    });
}

}  // namespace depot::ctl
