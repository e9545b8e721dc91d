// cat, get and set
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "config/profile_file.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/places.h"
#include "depotctl/utf8_text.h"
#include "directory/connection_scope.h"
#include "fileops/depot_file.h"
#include "fileops/directory_transfer.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/wide_text.h"

namespace depot::ctl {
namespace {

// The longest value, and a list of sections or keys, that is asked for.
constexpr DWORD kLongestValue = 65535;
// What no profile holds as a value.
constexpr char kAbsent[] = "\x01\x02";

struct ValueOptions {
    std::string path, section, key, value;
    std::string defaultValue;
    bool hasDefault = false;
    bool remove = false;
    bool create = false;
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
std::string TerminalText(const std::vector<std::uint8_t>& bytes) {
    const std::string text = Utf8FromAnsi(std::string(bytes.begin(), bytes.end()));
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

// The sections of the profile, or the keys of one section; each text ends in a NUL.
std::vector<std::string> Names(const DepotFileContext& file, const std::string* section) {
    std::string list(kLongestValue, '\0');
    const DWORD length =
        GetPrivateProfileStringA(section ? section->c_str() : nullptr, nullptr, "", list.data(),
                                 kLongestValue, file.localPath.c_str());
    std::vector<std::string> names;
    for (std::size_t at = 0; at < length;) {
        names.emplace_back(list.c_str() + at);
        at += names.back().size() + 1;
    }
    return names;
}

std::string Read(const DepotFileContext& file, const std::string& section, const std::string& key) {
    return file.ReadString(section, key, {}, kLongestValue);
}

void ListValues(const Program& program, const DepotFileContext& file, const std::string& section) {
    Json rows = Json::array();
    const std::vector<std::string> sections =
        section.empty() ? Names(file, nullptr) : std::vector<std::string>{section};
    for (const std::string& name : sections) {
        for (const std::string& key : Names(file, &name)) {
            rows.push_back({{"section", Utf8FromAnsi(name)},
                            {"key", Utf8FromAnsi(key)},
                            {"value", Utf8FromAnsi(Read(file, name, key))}});
        }
    }
    program.renderer.List(rows, {{"section", "SECTION"}, {"key", "KEY"}, {"value", "VALUE"}});
}

void Get(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    RequireFile(places, place);
    const std::string section = ToAnsi(options.section), key = ToAnsi(options.key);
    const DepotFileContext& file = Load(program, place);
    if (key.empty()) return ListValues(program, file, section);
    std::string value = file.ReadString(section, key, kAbsent, kLongestValue);
    if (value == kAbsent) {
        if (!options.hasDefault) {
            Refuse(place.Shown() + " has no value \"" + options.key + "\" in section \"" +
                   options.section + "\"");
        }
        value = ToAnsi(options.defaultValue);
    }
    const std::string text = Utf8FromAnsi(value);
    program.renderer.Answer({{"section", options.section}, {"key", options.key}, {"value", text}},
                            text);
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

// The system writes a profile anew in the program's code page, which may be another one than that
// of the applications: what is no text there would not come out as it was.
void RequireText(const Place& place) {
    const std::vector<std::uint8_t> bytes = Contents(place);
    const std::string text(bytes.begin(), bytes.end());
    const bool isWide = text.starts_with("\xFF\xFE");
    if (isWide || ExactWideFromAnsi(text)) return;
    Refuse(place.Shown() + " has text of another code page than " + std::to_string(GetACP()) +
           ", which writing a value would destroy");
}

void Set(Program& program, const ValueOptions& options) {
    Places places(program);
    const Place place = places.Resolve(options.path);
    const PlaceKind kind = options.create ? places.KindOf(place) : places.Require(place);
    if (kind == PlaceKind::kFolder) Refuse(place.Shown() + " is a folder");
    const std::string section = ToAnsi(options.section), key = ToAnsi(options.key);
    const std::string value = options.remove ? std::string() : ToAnsi(options.value);
    if (kind == PlaceKind::kMissing) {
        Create(place);
    } else {
        RequireText(place);
    }
    DepotFileContext& file = Load(program, place);
    file.WriteString(section, key, value);
    // The system's refusal to write is not reported: only reading the value tells.
    const bool written = Read(file, section, key) == value;
    const bool stored = file.Release() != 0;
    program.Session().currentFile.reset();
    if (!written || !stored) Fail("write", place, 0, "the file cannot be written");
    program.renderer.Answer({{"section", options.section},
                             {"key", options.key},
                             {"value", options.remove ? Json() : Json(options.value)}},
                            options.remove ? "removed" : "set");
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
