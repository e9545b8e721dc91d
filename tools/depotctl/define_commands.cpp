// depots add, set and remove: definitions in the registry.
#include <algorithm>

#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/define_options.h"
#include "depotctl/definition_edit.h"
#include "depotctl/definition_rules.h"
#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/known_values.h"
#include "depotctl/program.h"
#include "depotctl/utf8_text.h"
#include "directory/shared_credentials.h"
#include "manager/depot_list.h"
#include "platform/credential_store.h"
#include "platform/secret_text.h"
#include "platform/win32.h"

namespace depot::ctl {
namespace {

enum class Existence { kNew, kThere };

std::string Shown(const DefineOptions& options) {
    return "<" + options.key + ">";
}

// A password, which the command line never holds.
SecretText AskPassword() {
    if (!CanAsk()) {
        const auto line = ReadRedirectedLine();
        if (!line) Refuse("no password was given, and there is no terminal to ask for it at");
        return *line;
    }
    const std::optional<SecretText> password = AskHidden("Password: ");
    const std::optional<SecretText> again = password ? AskHidden("Once more: ") : std::nullopt;
    if (!again) Refuse("no password was given");
    if (!(*again == *password)) Refuse("the two passwords differ");
    return *password;
}

constexpr char kTarget[] = "CredentialTarget";
constexpr char kPassword[] = "Password";

[[noreturn]] void FailWith(const char* action, std::uint32_t error) {
    Refuse(std::string("the credential store does not ") + action + " the password (error " +
           std::to_string(error) + ")");
}

// Ends the command where the options contradict each other.
void RequireOnePlace(const DefineOptions& options) {
    const int places =
        int{options.askPassword} + int{options.storePassword} + int{options.forgetPassword};
    if (places > 1) {
        Refuse("only one of --ask-password, --store-password and --forget-password can be given");
    }
}

// Appends what the options change of the definition. The target is the one that the location has
// already, or is given, else a new one.
void AddStoredPassword(const DefineOptions& options, const RawDefinition& before,
                       DefinitionChange& change) {
    const auto removeIfThere = [&](const char* value) {
        const std::string name = Numbered(value, options.location);
        if (before.Find(name) != nullptr) change.removed.push_back(name);
    };
    if (options.forgetPassword) removeIfThere(kTarget);
    if (!options.storePassword) return;
    removeIfThere(kPassword);
    const RawDefinition after = Changed(before, change);
    const std::string name = Numbered(kTarget, options.location);
    if (after.Text(name).value_or("").empty()) {
        change.written.push_back(
            StoredText(name, options.key + "/" + std::to_string(options.location)));
    }
}

// Ends the command for a location that nobody logs on to with a stored name.
void RequireStorable(const DefineOptions& options, const RawDefinition& after) {
    const LocationSettings location = after.Location(options.location);
    if (!location.Has(FindValue(kPassword)->scope)) {
        Refuse("only a location in a directory has a password");
    }
    if (!location.NeedsUserName()) {
        Refuse("nobody logs on to this location with a password; see Authentication");
    }
    if (location.username.empty()) Refuse("whose password it is must be said with --username");
}

// Stores the password as the definition that is to be says, or removes it as the one before said.
// Ends the command where that cannot be.
void StorePassword(const DefineOptions& options, const RawDefinition& after,
                   const std::string& password) {
    LocationSettings location = after.Location(options.location);
    location.host = ToAnsi(location.host);
    StoredCredential credential;
    credential.userName = ToAnsi(location.username);
    credential.password = ToAnsi(password);
    credential.server = ServerKeyOf(location);
    const std::uint32_t error = WriteCredential(ToAnsi(location.credentialTarget), credential);
    if (error != ERROR_SUCCESS) FailWith("take", error);
}

void ForgetPassword(const DefineOptions& options, const RawDefinition& before) {
    const std::string target = before.Location(options.location).credentialTarget;
    if (target.empty()) Refuse("the location has no " + Numbered(kTarget, options.location));
    const std::uint32_t error = DeleteCredential(ToAnsi(target));
    if (error != ERROR_SUCCESS && error != ERROR_NOT_FOUND) FailWith("remove", error);
}

// Appends the values of the command line, numbered where they are a location's.
void AddGivenValues(const DefineOptions& options, const RawDefinition& before,
                    DefinitionChange& change) {
    change.written.insert(change.written.end(), options.ofDepot.begin(), options.ofDepot.end());
    const auto add = [&](RawValue value) {
        value.name = Numbered(value.name, options.location);
        change.written.push_back(std::move(value));
    };
    const auto isGiven = [&](const char* name) {
        return std::any_of(options.ofLocation.begin(), options.ofLocation.end(),
                           [name](const RawValue& value) { return value.name == name; });
    };
    const bool typed = isGiven("Type") || before.Find(Numbered("Type", options.location));
    for (const RawValue& value : options.ofLocation) {
        add(value);
        if (value.name == "Host" && !typed) add(NumberValue("Type", kDirectoryLocation));
    }
    if (options.askPassword) add(StoredText("Password", AskPassword()));
}

DefinitionChange ChangeOf(const DefineOptions& options, const RawDefinition& before) {
    DefinitionChange change;
    if (options.removedLocation > 0) {
        const auto without = WithoutLocation(before, options.removedLocation);
        if (!without) {
            Refuse(Shown(options) + " has no location " + std::to_string(options.removedLocation) +
                   " that can be removed; see \"depotctl check\"");
        }
        change = *without;
    }
    for (const std::string& name : options.unset) {
        if (before.Find(name) == nullptr) Refuse(Shown(options) + " has no value " + name);
        change.removed.push_back(name);
    }
    AddGivenValues(options, before, change);
    AddStoredPassword(options, before, change);
    return change;
}

// What is worth knowing of a definition that is in order, also beside the others.
Findings NotesOn(const RawDefinition& after, const DefineOptions& options) {
    Findings notes = CheckDefinition(after);
    std::erase_if(notes, [](const Finding& finding) { return finding.state != State::kNote; });
    std::vector<DepotSummary> all;
    for (const StoredDefinition& stored : ReadDefinitions()) {
        const bool isIt =
            stored.root == RootOf(options.forMachine) && SameKey(stored.raw.key, options.key);
        if (!isIt) all.push_back(SummaryOf(stored.raw, stored.root == HKEY_CURRENT_USER));
    }
    all.push_back(SummaryOf(after, !options.forMachine));
    Append(notes, CheckTogether(all, IsSameName).back());
    return notes;
}

// What was done, what is worth knowing of it, and what it changed.
struct Done {
    const char* what;
    Findings notes;
    std::vector<Step> steps;
};

void Report(const Program& program, const DefineOptions& options, const Done& done) {
    Json json = {{done.what, options.key}, {"definedFor", OwnerOf(RootOf(options.forMachine))}};
    json["notes"] = Json::array();
    std::string text = std::string(done.what) + " " + Shown(options) + " for " +
                       OwnerOf(RootOf(options.forMachine)) + "\n";
    for (const Finding& note : done.notes) {
        json["notes"].push_back(Line(note));
        text += "note: " + Printable(Line(note)) + "\n";
    }
    Steps steps(program, {false, options.verbose});
    steps.Note(done.steps);
    steps.Answer(std::move(json), text);
}

void ShowChange(const Program& program, const DefineOptions& options,
                const DefinitionChange* change) {
    const std::string path = HiveName(RootOf(options.forMachine)) + kDepotsKey + "\\" + options.key;
    ShowFile(program, RegistryFile(path, change), FileForm::kRegistry);
}

// Other keys would be those of the depots together, or lie below a depot's.
bool IsOneKey(const std::string& key) {
    return !key.empty() && FindAscii(key, '\\') == std::string::npos;
}

RawDefinition Existing(const DefineOptions& options, Existence wanted) {
    if (!IsOneKey(options.key)) Refuse("\"" + options.key + "\" is no depot's key");
    auto found = ReadDefinition(RootOf(options.forMachine), options.key);
    const std::string owner = OwnerOf(RootOf(options.forMachine));
    if (wanted == Existence::kNew && found) {
        Refuse(Shown(options) + " is defined for " + owner + " already; \"depots set\" changes it");
    }
    if (wanted == Existence::kThere && !found) {
        const bool isOthers = ReadDefinition(RootOf(!options.forMachine), options.key).has_value();
        const char* const other = options.forMachine ? ", but for the user: leave --machine out"
                                                     : ", but for the machine: add --machine";
        Refuse(Shown(options) + " is not defined for " + owner + (isOthers ? other : ""));
    }
    return found ? *std::move(found) : RawDefinition{options.key, {}};
}

template <Existence wanted>
void Define(const Program& program, const DefineOptions& options) {
    constexpr bool isNew = wanted == Existence::kNew;
    RequireOnePlace(options);
    if (isNew) RequireGoodKey(program, options.key);
    const RawDefinition before = Existing(options, wanted);
    const DefinitionChange change = ChangeOf(options, before);
    const RawDefinition after = Changed(before, change);
    if (options.storePassword) RequireStorable(options, after);
    RequireGood(program, isNew ? nullptr : &before, after);
    if (options.dryRun) return ShowChange(program, options, &change);
    const Findings notes = NotesOn(after, options);
    if (options.storePassword) StorePassword(options, after, AskPassword());
    if (options.forgetPassword) ForgetPassword(options, before);
    // The machine's definitions are not everyone's to write.
    const bool isChanged = !change.written.empty() || !change.removed.empty();
    if (isNew || isChanged) WriteDefinition(RootOf(options.forMachine), options.key, change);
    Report(program, options, {isNew ? "added" : "changed", notes, StepsOf(options.key, change)});
}

void RemoveOne(const Program& program, const DefineOptions& options) {
    Existing(options, Existence::kThere);
    if (options.dryRun) return ShowChange(program, options, nullptr);
    RemoveDefinition(RootOf(options.forMachine), options.key);
    Report(program, options, {"removed", {}, {{"remove", Shown(options), {}}}});
}

}  // namespace

void AddDefineCommands(CLI::App& depots, Program& program) {
    const auto add = AddCommand<DefineOptions>(
        depots, program,
        {"add", "Define a depot",
         "Examples:\n  depotctl depots add Work --path $USERDIR$\\Profiles --name Work "
         "--name deu=Arbeit\n"
         "  depotctl depots add Company --machine --path cn=Profiles,dc=example,dc=com "
         "--host ldap.example.com --security starttls --dry-run > company.reg"},
        Define<Existence::kNew>);
    const auto set = AddCommand<DefineOptions>(
        depots, program,
        {"set", "Change a depot's definition",
         "Examples:\n  depotctl depots set Work --order 1 --default\n"
         "  depotctl depots set Company --location 2 --path cn=Profiles,dc=example,dc=com "
         "--host replica --machine\n  depotctl depots set Company --machine --keep-connection 60\n"
         "  depotctl depots set Company --machine --username cn=Anna,dc=example,dc=com "
         "--store-password\n"
         "  depotctl depots set Work --unset OrderIndex"},
        Define<Existence::kThere>);
    const auto remove =
        AddCommand<DefineOptions>(depots, program,
                                  {"remove", "Remove a depot's definition, not its files",
                                   "Example:\n  depotctl depots remove Work"},
                                  RemoveOne);
    for (const auto& command : {add, set, remove}) AddPlaceOptions(command.app, command.options);
    for (const auto& command : {add, set}) AddValueOptions(command.app, command.options);
    AddRemovalOptions(set.app, set.options);
}

}  // namespace depot::ctl
