// cat, get and set
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/profile_copy.h"
#include "depotctl/utf8_text.h"
#include "directory/connection_scope.h"
#include "fileops/depot_file.h"
#include "fileops/directory_transfer.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"

namespace depot::ctl {
namespace {

struct ValueOptions {
    std::string path, section, key, value;
    std::string defaultValue;
    bool hasDefault = false;
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

// Loads a profile as the session's current file.
DepotFileContext& Load(Program& program, const Place& place) {
    DepotSession& session = program.Session();
    session.LoadFile(place.isPlain ? LongEnough(place.path) : place.path);
    if (session.currentFile->localPath.empty()) Fail("open", place);
    return *session.currentFile;
}

void RequireFile(const Places& places, const Place& place) {
    if (places.Require(place) == PlaceKind::kFolder) Refuse(place.Shown() + " is a folder");
}

std::vector<std::uint8_t> Contents(const Place& place) {
    if (CLDAPItems* const directory = place.Directory()) {
        const ConnectionScope connection(*directory, nullptr);
        FileBuffer buffer;
        if (!connection || directory->ReadFileContents(place.Storage(), buffer) == 0) {
            Fail("read", place);
        }
        std::vector<std::uint8_t> bytes(buffer.length);
        std::copy_n(buffer.bytes.get(), buffer.length, bytes.begin());
        return bytes;
    }
    const auto bytes = ReadLocalFile(place.Storage());
    if (!bytes) Fail("read", place, GetLastError());
    return *bytes;
}

// A terminal is shown characters, and never what would move its cursor.
std::string TerminalText(const std::vector<std::uint8_t>& file) {
    const std::string bytes(file.begin(), file.end());
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
    RequireFile(places, place);
    const std::vector<std::uint8_t> bytes = Contents(place);
    if (program.output.IsTerminal()) {
        program.output.Write(TerminalText(bytes));
    } else {
        program.output.WriteBytes(bytes.data(), bytes.size());
    }
}

void ListValues(const Program& program, const ProfileCopy& profile, const std::string& only) {
    Json rows = Json::array();
    const std::vector<std::string> sections =
        only.empty() ? profile.Sections() : std::vector<std::string>{only};
    for (const std::string& section : sections) {
        for (const std::string& key : profile.Keys(section)) {
            const std::string value = profile.Find(section, key).value_or("");
            rows.push_back({{"section", section}, {"key", key}, {"value", value}});
        }
    }
    program.renderer.List(rows, {{"section", "SECTION"}, {"key", "KEY"}, {"value", "VALUE"}});
}

void Get(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    RequireFile(places, place);
    const ProfileCopy profile(place, Load(program, place).localPath, options.codePage);
    if (options.key.empty()) return ListValues(program, profile, options.section);
    const std::optional<std::string> found = profile.Find(options.section, options.key);
    if (!found && !options.hasDefault) {
        Refuse(place.Shown() + " has no value \"" + options.key + "\" in section \"" +
               options.section + "\"");
    }
    const std::string value = found.value_or(options.defaultValue);
    program.renderer.Answer({{"section", options.section}, {"key", options.key}, {"value", value}},
                            value);
}

// Makes an empty profile where there is none.
void Create(const Place& place) {
    const std::string empty = MakeTempFileName();
    std::string errorText;
    CDepot nowhere(nullptr);
    CLDAPItems* const directory = place.Directory();
    // Someone else may have made it meanwhile: it must not be emptied.
    const int created =
        directory ? Upload(*directory, empty, place.Storage(), ExistingEntries::kRefuse, &errorText)
                  : CopyFile(nowhere, empty, place.path, place.depot, true, &errorText);
    DeleteFileA(empty.c_str());
    if (created == 0) Fail("create", place, 0, errorText);
}

void Set(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const PlaceKind kind = options.create ? places.KindOf(place) : places.Require(place);
    if (kind == PlaceKind::kFolder) Refuse(place.Shown() + " is a folder");
    if (kind == PlaceKind::kMissing) Create(place);
    DepotFileContext& file = Load(program, place);
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
            const bool isNumber =
                !text.empty() && text.size() < 6 &&
                std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
            return isNumber && CanHoldProfiles(static_cast<unsigned>(std::stoul(text)))
                       ? std::string()
                       : "no profile can be written in code page " + text;
        });
}

}  // namespace

void AddProfileCommands(CLI::App& app, Program& program) {
    const auto path = std::make_shared<std::string>();
    CLI::App* const cat = app.add_subcommand(
        "cat", "Write a file's bytes to the output (a terminal is shown its text)");
    cat->add_option("path", *path, "The file")->required();
    cat->footer("Example:\n  depotctl cat \"<Work>\\Sessions\\office.kre\" > office.kre");
    cat->callback(
        [&program, path] { program.command = [&program, path] { Cat(program, *path); }; });

    const auto wanted = std::make_shared<ValueOptions>();
    CLI::App* const get = app.add_subcommand("get", "Read values of a profile");
    get->add_option("path", wanted->path, "The profile")->required();
    get->add_option("section", wanted->section, "Its section; all without it");
    get->add_option("key", wanted->key, "The key in the section; all without it");
    CLI::Option* const defaultValue = get->add_option("--default", wanted->defaultValue,
                                                      "What to answer when there is no such value");
    AddCodePage(*get, *wanted);
    get->footer(
        "Examples:\n  depotctl get \"<Work>\\Sessions\\office.kre\" Host Name\n"
        "  depotctl get --json \"<Work>\\Sessions\\office.kre\"");
    get->callback([&program, wanted, defaultValue] {
        wanted->hasDefault = defaultValue->count() > 0;
        program.command = [&program, wanted] { Get(program, *wanted); };
    });

    const auto change = std::make_shared<ValueOptions>();
    CLI::App* const set = app.add_subcommand("set", "Write a value of a profile, or remove it");
    set->add_option("path", change->path, "The profile")->required();
    set->add_option("section", change->section, "Its section")->required();
    set->add_option("key", change->key, "The key in the section")->required();
    CLI::Option* const value = set->add_option("value", change->value, "The new value");
    CLI::Option* const remove = set->add_flag("--remove", change->remove, "Remove the value");
    set->add_flag("--create", change->create, "Make the profile when there is none");
    AddCodePage(*set, *change);
    set->footer(
        "Examples:\n  depotctl set \"<Work>\\Sessions\\office.kre\" Host Name mail.example.com\n"
        "  depotctl set --remove \"<Work>\\Sessions\\office.kre\" Host Port");
    set->callback([&program, change, value, remove] {
        if ((value->count() > 0) == (remove->count() > 0)) {
            throw CLI::ValidationError("set", "either a value or --remove is required");
        }
        program.command = [&program, change] { Set(program, *change); };
    });
}

}  // namespace depot::ctl
