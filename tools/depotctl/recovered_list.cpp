// recovered: lists what is kept, and compares it with the entries.
#include <optional>

#include "depotctl/encoding.h"
#include "depotctl/kept_origins.h"
#include "depotctl/kept_target.h"
#include "depotctl/recovered_commands.h"
#include "depotctl/utf8_text.h"
#include "recovery/kept_values.h"

namespace depot::ctl {
namespace {

// What became of an entry since the copy was made of it.
std::string StateOf(KeptOrigins& origins, const KeptCopy& copy, const KeptEntry& entry) try {
    const PlacedTarget target({&origins.Open(entry), entry.path, false}, entry.dn);
    const auto present = target.Read();
    if (!present) return copy.origin->isNew ? "not there yet" : "gone";
    if (target.Target().IsHeldAs(BytesOf(copy), present)) return "stored already";
    if (copy.IsMadeFrom(*present)) return "as it was";
    return copy.HasKnownBase() ? "changed" : "not known";
} catch (const CommandFailure& failure) {
    return failure.Code() == ExitCode::kUnreachable ? "out of reach" : failure.what();
}

Json RowOf(Program& program, KeptOrigins& origins, const KeptCopy& copy, bool checks) {
    Json row = {{"file", copy.name},
                {"state", copy.isWaiting ? "waiting" : "recovered"},
                {"size", copy.size},
                {"when", program.renderer.TimeText(copy.time)},
                {"why", WhyKept(copy)}};
    if (copy.hasDamagedRecord) row["damaged"] = true;
    if (!copy.origin) return row;
    const OriginRecord& origin = *copy.origin;
    const auto entry = origins.Find(origin);
    row["entry"] = entry ? Utf8FromAnsi(entry->path) : origin.dn;
    row["dn"] = origin.dn;
    row["server"] = copy.Server();
    if (entry) row["depot"] = Utf8FromAnsi(program.Depots().At(entry->depot)->name);
    if (origin.code != 0) row["code"] = origin.code;
    row["base"] = origin.base.has_value();
    if (!checks) return row;
    row["now"] = entry ? StateOf(origins, copy, *entry) : "in no depot";
    return row;
}

std::vector<Column> Columns(bool checks) {
    std::vector<Column> columns = {{"file", "FILE"},
                                   {"entry", "ENTRY"},
                                   {"when", "WHEN"},
                                   {"size", "SIZE", Align::kRight},
                                   {"state", "STATE"}};
    if (checks) columns.push_back({"now", "ENTRY IS"});
    columns.push_back({"why", "WHY"});
    return columns;
}

void List(Program& program, bool checks) {
    KeptOrigins origins(program);
    Json rows = Json::array();
    for (const KeptCopy& copy : AllKeptCopies(program)) {
        rows.push_back(RowOf(program, origins, copy, checks));
    }
    program.renderer.List(rows, Columns(checks));
}

// The versions of a copy, and what is not known of them.
struct ComparedCopy {
    KeptVersions versions;
    std::string entry;   // where it is
    std::string remark;  // why its contents are not among the versions
};

ComparedCopy Compare(Program& program, const KeptCopy& copy) {
    ComparedCopy compared;
    compared.versions.ours = BytesOf(copy);
    if (!copy.origin) return compared;
    compared.versions.base = copy.origin->base;
    KeptOrigins origins(program);
    const auto entry = origins.Find(*copy.origin);
    compared.entry = entry ? Utf8FromAnsi(entry->path) : copy.origin->dn;
    if (!entry) {
        compared.remark = "no depot has the entry \"" + copy.origin->dn + "\" of " + copy.Server();
        return compared;
    }
    try {
        const PlacedTarget target({&origins.Open(*entry), entry->path, false}, entry->dn);
        compared.versions.entry = target.Read();
        if (!compared.versions.entry) compared.remark = "the entry is not there";
    } catch (const CommandFailure& failure) {
        compared.remark = failure.what();
        program.outcome = failure.Code();
    }
    return compared;
}

Json ValueJson(const std::optional<std::string>& value) {
    return value ? Json(*value) : Json();
}

Json ValuesJson(const std::vector<KeptValue>& values) {
    Json rows = Json::array();
    for (const KeptValue& value : values) {
        rows.push_back({{"section", value.section},
                        {"key", value.key},
                        {"base", ValueJson(value.base)},
                        {"entry", ValueJson(value.entry)},
                        {"ours", ValueJson(value.ours)}});
    }
    return rows;
}

std::optional<std::vector<KeptValue>> ValuesOf(const KeptVersions& versions) {
    std::optional<std::vector<KeptValue>> values;
    if (const Result found = DifferentValues(versions, values); !found) {
        Refuse("cannot write a temporary file: " + SystemWords(found.Why().code));
    }
    return values;
}

std::string SizesText(const KeptVersions& versions) {
    const auto bytes = [](const std::optional<KeptBytes>& version) {
        return version ? Counted(version->size(), "byte") : std::string("not known");
    };
    std::string text = "base " + bytes(versions.base) + ", entry " + bytes(versions.entry) +
                       ", ours " + bytes(versions.ours);
    return versions.entry == versions.ours ? text + "; the entry holds ours" : text;
}

void Diff(Program& program, const std::string& name) {
    const KeptCopy copy = RequireKeptCopy(program, name);
    const ComparedCopy compared = Compare(program, copy);
    const KeptVersions& versions = compared.versions;
    if (!versions.base && !versions.entry) {
        const std::string why = compared.remark.empty()
                                    ? "it is not known where " + Shown(copy) + " comes from"
                                    : compared.remark;
        throw CommandFailure(
            program.outcome == ExitCode::kUnreachable ? program.outcome : ExitCode::kRefused,
            "nothing to compare with: " + why);
    }
    const auto values = ValuesOf(versions);
    const Json rows = ValuesJson(values.value_or(std::vector<KeptValue>()));
    if (program.renderer.IsJson()) {
        program.renderer.Answer({{"file", copy.name},
                                 {"entry", compared.entry},
                                 {"isProfile", values.has_value()},
                                 {"entryHoldsOurs", versions.entry == versions.ours},
                                 {"values", rows}},
                                {});
    } else if (rows.empty()) {
        program.renderer.Answer(
            {}, (values ? "no value differs: " : "no profile: ") + SizesText(versions));
    } else {
        program.renderer.List(rows, {{"section", "SECTION"},
                                     {"key", "KEY"},
                                     {"base", "BASE"},
                                     {"entry", "ENTRY"},
                                     {"ours", "OURS"}});
    }
    if (!compared.remark.empty()) program.Remark({{"remark", compared.remark}}, compared.remark);
    if (!versions.base) {
        const std::string text = "what it was made from is not known";
        program.Remark({{"remark", text}}, text);
    }
}

}  // namespace

void AddKeptDiffCommand(CLI::App& recovered, Program& program) {
    AddPathCommand(recovered, program,
                   {"diff",
                    "Show the values in which a kept copy, its entry and what both come "
                    "from differ",
                    "Example:\n  depotctl recovered diff \"office 2026-05-31 14-07-09 (1).kre\"",
                    "The kept copy, as \"depotctl recovered\" names it"},
                   Diff);
}

void AddRecoveredCommands(CLI::App& app, Program& program) {
    const auto [command, checks] = AddCommand<bool>(
        app, program,
        {"recovered", "List the edits that could not be stored, and those that wait",
         "Examples:\n  depotctl recovered --check\n"
         "  depotctl recovered diff \"office 2026-05-31 14-07-09 (1).kre\"\n"
         "  depotctl recovered restore --merge \"office 2026-05-31 14-07-09 (1).kre\""},
        List);
    command.add_flag("--check", checks,
                     "Look whether the entries are as they were; servers are asked");
    AddKeptDiffCommand(command, program);
    AddKeptRestoreCommand(command, program);
    AddKeptFileCommands(command, program);
}

}  // namespace depot::ctl
