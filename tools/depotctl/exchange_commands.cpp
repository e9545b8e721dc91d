// depots export and import: definitions in files.

#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/definition_edit.h"
#include "depotctl/definition_file.h"
#include "depotctl/definition_rules.h"
#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/program.h"
#include "depotctl/utf8_text.h"
#include "manager/depot_list.h"
#include "platform/local_file.h"
#include "platform/wipe.h"

namespace depot::ctl {
namespace {

struct ExportOptions {
    std::vector<std::string> keys;
    std::string form = "reg";
    bool forMachine = false;
};

struct ImportOptions {
    std::string file;
    bool forMachine = false;
    bool forUser = false;
    StepOptions steps{};
};

// The definitions of one hive, all or those that are named.
std::vector<RawDefinition> Wanted(const ExportOptions& options) {
    const HKEY root = RootOf(options.forMachine);
    std::vector<RawDefinition> found;
    for (const std::string& key : options.keys) {
        auto raw = ReadDefinition(root, key);
        if (!raw) Refuse("<" + key + "> is not defined for " + OwnerOf(root));
        found.push_back(*std::move(raw));
    }
    if (!options.keys.empty()) return found;
    for (StoredDefinition& stored : ReadDefinitions()) {
        if (stored.root == root && stored.isReadable) found.push_back(std::move(stored.raw));
    }
    if (found.empty()) Refuse("no depot is defined for " + OwnerOf(root));
    return found;
}

void Export(const Program& program, const ExportOptions& options) {
    const FileForm form = options.form == "gpp" ? FileForm::kPolicyItems : FileForm::kRegistry;
    std::vector<FiledDefinition> definitions;
    for (const RawDefinition& raw : Wanted(options)) {
        std::vector<std::string> leftOut;
        definitions.push_back({options.forMachine, raw.key, false, WholeDefinition(raw, leftOut)});
        for (const std::string& name : leftOut) {
            program.Remark({{"leftOut", "<" + raw.key + "> " + name}},
                           "<" + raw.key + "> " + name +
                               " is left out: no such file can hold it, and it is never read");
        }
    }
    ShowFile(program, FileText(definitions, form, kDepotsKey), form);
}

std::vector<FiledDefinition> DefinitionsIn(const ImportOptions& options) {
    constexpr std::size_t kMostBytes = 16 << 20;
    auto bytes = ReadLocalFile(ToAnsi(options.file));
    if (!bytes) Refuse("cannot read \"" + options.file + "\"");
    const WipeAtEnd wiped(*bytes);  // it may hold a password
    if (bytes->size() > kMostBytes) Refuse("\"" + options.file + "\" is too large");
    ReadDefinitionsResult read = ReadDefinitionFile(
        {reinterpret_cast<const char*>(bytes->data()), bytes->size()}, kDepotsKey);
    if (!read.problem.empty()) Refuse("\"" + options.file + "\": " + read.problem);
    if (read.definitions.empty()) Refuse("\"" + options.file + "\" holds no definition");
    return std::move(read.definitions);
}

// One definition of a file beside the one that is there.
struct Import {
    HKEY root;
    FiledDefinition filed;
    std::optional<RawDefinition> before;
    bool isWritten = false;
};

// Texts of files have not been measured in the code page yet.
void Measure(DefinitionChange& change) {
    for (RawValue& value : change.written) {
        if (!value.IsText()) continue;
        const std::uint32_t type = value.type;
        value = StoredText(value.name, value.text);
        value.type = type;
    }
}

Import Prepared(const Program& program, FiledDefinition filed, const ImportOptions& options) {
    if (options.forMachine || options.forUser) filed.isForMachine = options.forMachine;
    Import import{RootOf(filed.isForMachine), std::move(filed), {}};
    const std::string& key = import.filed.key;
    import.before = ReadDefinition(import.root, key);
    Measure(import.filed.change);
    if (!import.before) RequireGoodKey(program, key);
    const bool isKept = import.before && !import.filed.isRemoved;
    const RawDefinition before = isKept ? *import.before : RawDefinition{key, {}};
    import.isWritten = !import.filed.change.written.empty() || isKept;
    if (import.isWritten) {
        RequireGood(program, import.before ? &*import.before : nullptr,
                    Changed(before, import.filed.change));
    }
    return import;
}

void Carry(const Import& import, Steps& steps) {
    const std::string& key = import.filed.key;
    const bool isRemoved = import.filed.isRemoved && import.before;
    if (isRemoved) steps.Note({"remove", "<" + key + ">", {}});
    if (import.isWritten) steps.Note(StepsOf(key, import.filed.change));
    if (!steps.AreTaken()) return;
    if (isRemoved) RemoveDefinition(import.root, key);
    if (import.isWritten) WriteDefinition(import.root, key, import.filed.change);
}

// All definitions are looked at before the first one is written.
void ImportFile(const Program& program, const ImportOptions& options) {
    std::vector<Import> imports;
    for (FiledDefinition& filed : DefinitionsIn(options)) {
        imports.push_back(Prepared(program, std::move(filed), options));
    }
    Steps steps(program, options.steps);
    Json rows = Json::array();
    std::string text;
    for (const Import& import : imports) {
        Carry(import, steps);
        const char* const done = !import.isWritten ? "removed"
                                 : import.before   ? "changed"
                                                   : "added";
        rows.push_back({{done, import.filed.key}, {"definedFor", OwnerOf(import.root)}});
        text += std::string(done) + " <" + Printable(import.filed.key) + "> for " +
                OwnerOf(import.root) + "\n";
    }
    steps.Answer({{"imported", rows}}, text);
}

}  // namespace

void AddExchangeCommands(CLI::App& depots, Program& program) {
    const auto toFile = AddCommand<ExportOptions>(
        depots, program,
        {"export", "Write definitions as a .reg file or as items of a group policy",
         "Examples:\n  depotctl depots export > depots.reg\n"
         "  depotctl depots export Company --machine --as gpp > company.xml"},
        Export);
    toFile.app.add_option("key", toFile.options.keys, "The keys of depots; all without any")
        ->transform(KeyArgument);
    toFile.app
        .add_option("--as", toFile.options.form,
                    "reg for a .reg file, gpp for group policy preferences")
        ->check(CLI::IsMember({"reg", "gpp"}));
    toFile.app.add_flag("--machine", toFile.options.forMachine, "Those of the machine");
    const auto fromFile = AddCommand<ImportOptions>(
        depots, program,
        {"import", "Define what a file of export says, once all of it is in order",
         "Examples:\n  depotctl depots import --dry-run depots.reg\n"
         "  depotctl depots import company.xml --machine"},
        ImportFile);
    fromFile.app.add_option("file", fromFile.options.file, "A .reg file, or one of items")
        ->required();
    CLI::Option* const machine = fromFile.app.add_flag("--machine", fromFile.options.forMachine,
                                                       "For all users, whatever the file says");
    fromFile.app
        .add_flag("--user", fromFile.options.forUser, "For the user, whatever the file says")
        ->excludes(machine);
    AddStepFlags(fromFile.app, fromFile.options.steps);
}

}  // namespace depot::ctl
