// check: what is wrong with depots, and what to do about it.
#include <algorithm>
#include <functional>
#include <memory>

#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/definition_checks.h"
#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/installation.h"
#include "depotctl/kept_copies.h"
#include "depotctl/kept_counts.h"
#include "depotctl/known_values.h"
#include "depotctl/location_trial.h"
#include "depotctl/program.h"
#include "depotctl/settings.h"
#include "depotctl/together.h"
#include "depotctl/utf8_text.h"
#include "model/depot_paths.h"
#include "platform/credential_store.h"
#include "platform/wide_text.h"

namespace depot::ctl {
namespace {

struct CheckOptions {
    std::string key;
    bool offline = false;
};

const char* StateName(State state) {
    constexpr const char* kNames[] = {"ok", "note", "problem", "unreachable"};
    return kNames[static_cast<std::size_t>(state)];
}

Json StepsJson(const Findings& findings) {
    Json steps = Json::array();
    for (const Finding& finding : findings) {
        Json step = {
            {"step", finding.subject}, {"state", StateName(finding.state)}, {"text", finding.text}};
        if (!finding.advice.empty()) step["advice"] = finding.advice;
        steps.push_back(std::move(step));
    }
    return steps;
}

// A location as it was tried.
struct TriedLocation {
    std::string title;
    std::unique_ptr<LocationTrial> trial;
    std::optional<KeptCounts> kept{};  // for the time when its server is away
    std::vector<SettingInForce> settings{};
};

struct CheckedDepot {
    std::string key, owner;
    std::size_t values = 0;
    Findings definition;
    std::vector<TriedLocation> locations;
};

// Puts together what is known of the depots, in the order in which the component lists them.
class DepotChecker {
public:
    DepotChecker(Program& program, const CheckOptions& options)
        : program_(program),
          options_(options),
          stored_(ReadDefinitions()),
          copies_(AllKeptCopies(program)) {}

    std::vector<CheckedDepot> Run() {
        std::vector<CheckedDepot> checked;
        CDepots& depots = program_.Depots();
        for (CDepot* depot : depots) Take(*depot);
        const std::vector<Findings> together = CheckTogether(summaries_, IsSameName);
        for (std::size_t index = 0; index < depots.Count(); ++index) {
            CDepot& depot = *depots.At(index);
            if (IsWanted(Utf8FromAnsi(depot.name)))
                checked.push_back(Check(depot, together[index]));
        }
        // What is no depot is not in the component's list.
        for (const StoredDefinition& stored : stored_) {
            if (!IsListed(stored) && IsWanted(stored.raw.key)) checked.push_back(Check(stored));
        }
        if (!options_.offline) Try(checked);
        return checked;
    }

private:
    bool IsWanted(const std::string& key) const {
        return options_.key.empty() || SameKey(key, options_.key);
    }

    void Take(CDepot& depot) {
        DepotSummary summary = {Utf8FromAnsi(depot.name),
                                Utf8FromAnsi(depot.displayName),
                                depot.rootKey == HKEY_CURRENT_USER,
                                depot.isDefault,
                                {}};
        for (std::size_t index = 0; index < depot.paths->Count(); ++index) {
            CDepotPath& location = *depot.paths->At(index);
            if (!location.IsDirectory()) {
                summary.roots.push_back(Utf8FromAnsi(ExpandedPath(location)));
            }
        }
        summaries_.push_back(std::move(summary));
    }

    bool IsListed(const StoredDefinition& stored) const {
        return std::any_of(summaries_.begin(), summaries_.end(), [&](const DepotSummary& summary) {
            return summary.isForUser == (stored.root == HKEY_CURRENT_USER) &&
                   SameKey(summary.key, stored.raw.key);
        });
    }

    // Null where the registry has no such definition.
    const StoredDefinition* Stored(HKEY root, const std::string& key) const {
        const auto found =
            std::find_if(stored_.begin(), stored_.end(), [&](const StoredDefinition& stored) {
                return stored.root == root && SameKey(stored.raw.key, key);
            });
        return found == stored_.end() ? nullptr : &*found;
    }

    static CheckedDepot Check(const StoredDefinition& stored) {
        const RawDefinition& raw = stored.raw;
        CheckedDepot checked = {raw.key, OwnerOf(stored.root), raw.values.size(), {}, {}};
        checked.definition = CheckStoredKey(raw.key);
        if (!stored.isReadable) {
            checked.definition.push_back(
                Wrong("Key", "it may not be read", "grant users the right to read it"));
        } else {
            Append(checked.definition, WithOwner(CheckDefinition(raw), stored.root));
        }
        return checked;
    }

    // What is found in values does not depend on whose they are; commands that change them do.
    static Findings WithOwner(Findings findings, HKEY root) {
        for (Finding& finding : findings) {
            const bool isCommand = finding.advice.ends_with(" --store-password");
            if (isCommand && root == HKEY_LOCAL_MACHINE) finding.advice += " --machine";
        }
        return findings;
    }

    CheckedDepot Check(CDepot& depot, const Findings& together) {
        const std::string key = Utf8FromAnsi(depot.name);
        const StoredDefinition* const stored = Stored(depot.rootKey, key);
        CheckedDepot checked =
            stored != nullptr ? Check(*stored) : CheckedDepot{key, "nobody", 0, {}, {}};
        Append(checked.definition, together);
        for (std::size_t index = 0; index < depot.paths->Count(); ++index) {
            CDepotPath& location = *depot.paths->At(index);
            checked.locations.push_back({Title(location, index + 1), MakeTrial(location, index + 1),
                                         CountKept(depot, location, copies_),
                                         SettingsOf(stored, index, location)});
        }
        return checked;
    }

    // Where each value comes from that settings may give, of a location that has them.
    static std::vector<SettingInForce> SettingsOf(const StoredDefinition* stored, std::size_t index,
                                                  const CDepotPath& location) {
        if (stored == nullptr || !location.Has(FindValue("Offline")->scope)) return {};
        return ctl::SettingsOf(stored->raw, static_cast<int>(index + 1), location);
    }

    // Tries all locations at once, and asks for what is missing afterwards.
    static void Try(const std::vector<CheckedDepot>& checked) {
        std::vector<LocationTrial*> trials;
        std::vector<std::function<void()>> work;
        for (const CheckedDepot& depot : checked) {
            for (const TriedLocation& location : depot.locations) {
                trials.push_back(location.trial.get());
                work.emplace_back([trial = trials.back()] { trial->Run(); });
            }
        }
        DoTogether(work);
        for (LocationTrial* trial : trials) trial->Ask();
    }

    static std::string Title(const CDepotPath& location, std::size_t number) {
        return "location " + std::to_string(number) + ", a " + kTypeWords[location.type].word +
               ": " + Utf8FromAnsi(location.path);
    }

    Program& program_;
    const CheckOptions& options_;
    std::vector<StoredDefinition> stored_;
    std::vector<DepotSummary> summaries_;
    const std::vector<KeptCopy> copies_;
};

// Writes what was found, and counts it.
class Report {
public:
    explicit Report(const Program& program) : program_(program) {}

    void Add(const std::string& title, const Findings& findings, std::size_t indent = 0) {
        text_ += std::string(indent, ' ') + Printable(title) + "\n";
        for (const Finding& finding : findings) {
            if (finding.state == State::kProblem) ++problems_;
            if (finding.state == State::kUnreachable) ++unreachable_;
            Line(StateName(finding.state), finding.subject + ": " + finding.text, indent);
            if (!finding.advice.empty()) Line("", "-> " + finding.advice, indent);
        }
    }

    void AddDepot(const CheckedDepot& depot) {
        Findings findings = depot.definition;
        if (!HasProblems(findings)) {
            findings.insert(findings.begin(), Good("definition", DefinitionText(depot)));
        }
        const std::string name = depot.key.empty() ? "the built-in depot" : "<" + depot.key + ">";
        Add(name + ", defined for " + depot.owner, findings);
        Json json = {{"key", depot.key}, {"definedFor", depot.owner}};
        json["definition"] = StepsJson(findings);
        json["locations"] = Json::array();
        for (const TriedLocation& location : depot.locations) {
            Findings found = location.trial->Found();
            if (location.kept) found.push_back(KeptFinding(*location.kept));
            if (HasSettings(location)) Append(found, SettingFindings(location.settings));
            Add(location.title, found, 2);
            Json one = {{"location", location.title}, {"steps", StepsJson(found)}};
            if (location.kept) one["kept"] = KeptJson(*location.kept);
            if (!location.settings.empty()) one["values"] = SettingsJson(location.settings);
            json["locations"].push_back(std::move(one));
        }
        depots_.push_back(std::move(json));
    }

    void Show(const Findings& installation, const std::vector<SettingInForce>& settings,
              const Findings& registry) {
        Json json;
        json["installation"] = StepsJson(installation);
        json["settings"] = SettingsJson(settings);
        json["registry"] = StepsJson(registry);
        json["depots"] = depots_;
        json["problems"] = problems_;
        json["unreachable"] = unreachable_;
        program_.renderer.Answer(json, text_);
    }

    // Ends the command as its exit code says.
    void Judge() const {
        if (unreachable_ > 0) {
            throw CommandFailure(ExitCode::kUnreachable, Counted(unreachable_, "location") +
                                                             " cannot be reached" + Others());
        }
        if (problems_ > 0) Refuse(Counted(problems_, "problem") + " found");
    }

private:
    // Values that all stand in the definition, or nowhere, need no line of their own.
    static bool HasSettings(const TriedLocation& location) {
        return std::any_of(location.settings.begin(), location.settings.end(),
                           [](const SettingInForce& setting) { return !setting.key.empty(); });
    }

    static std::string DefinitionText(const CheckedDepot& depot) {
        if (depot.key.empty()) return "no depot is defined";
        return Counted(depot.values, "value") +
               (depot.values == 1 ? ", in order" : ", all of them in order");
    }

    std::string Others() const {
        return problems_ == 0 ? "" : ", " + Counted(problems_, "problem") + " found";
    }

    void Line(const std::string& state, const std::string& text, std::size_t indent) {
        constexpr std::size_t kStateColumns = 13;
        const std::string head = std::string(indent + 2, ' ') + state;
        const std::size_t at = indent + kStateColumns + 2;
        const std::size_t columns = program_.output.Columns();
        const std::size_t width = columns > at + 10 ? columns - 1 : 0;
        const std::string line = head + std::string(at - head.size(), ' ') + Printable(text);
        text_ += Wrapped(line, width, at) + "\n";
    }

    const Program& program_;
    std::string text_;
    Json depots_ = Json::array();
    std::size_t problems_ = 0, unreachable_ = 0;
};

// Passwords that stay in the user's store although no definition names them any more. Definitions
// that may not be read may name any.
Findings CheckStoredPasswords() {
    std::vector<std::string> named;
    for (const StoredDefinition& stored : ReadDefinitions()) {
        if (!stored.isReadable) return {};
        for (int location = 1; location <= stored.raw.Locations(); ++location) {
            named.push_back(stored.raw.Location(location).credentialTarget);
        }
    }
    Findings findings;
    for (const std::string& target : StoredTargets()) {
        const std::string shown = Utf8FromAnsi(target);
        const bool isNamed = std::any_of(named.begin(), named.end(), [&](const std::string& one) {
            return SameKey(one, shown);
        });
        if (isNamed) continue;
        findings.push_back(Remark("stored password",
                                  "one is kept as \"" + shown + "\", which no depot names",
                                  "remove it: cmdkey "
                                  "/delete:\"" +
                                      Utf8FromWide(StoreTarget({})) + shown + "\""));
    }
    return findings;
}

[[noreturn]] void RefuseUnknown(const std::string& key) {
    std::string text = "no depot is defined under the key \"" + key + "\"";
    if (const auto other = FindFor32BitPrograms(key))
        text += "; " + other->text + "; " + other->advice;
    Refuse(text);
}

void Check(Program& program, const CheckOptions& options) {
    Report report(program);
    Findings installation = CheckInstallation(program);
    if (options.key.empty()) Append(installation, CheckStoredPasswords());
    const std::vector<SettingInForce> settings = ReadSettings();
    const Findings registry = CheckDepotsKeys();
    const std::vector<CheckedDepot> depots = DepotChecker(program, options).Run();
    if (depots.empty()) RefuseUnknown(options.key);
    report.Add("installation", installation);
    Findings set = SettingFindings(settings);
    Append(set, IgnoredSettings());
    if (!set.empty()) report.Add("settings", set);
    if (!registry.empty()) report.Add("registry", registry);
    for (const CheckedDepot& depot : depots) report.AddDepot(depot);
    report.Show(installation, settings, registry);
    report.Judge();
}

}  // namespace

void AddCheckCommand(CLI::App& app, Program& program) {
    const auto [command, options] = AddCommand<CheckOptions>(
        app, program,
        {"check", "Go through the installation and the depots step by step and say what is wrong",
         "Examples:\n  depotctl check\n  depotctl check Company\n  depotctl check --json"},
        Check);
    command.add_option("key", options.key, "The key of one depot; all without it")
        ->transform(KeyArgument);
    command.add_flag("--offline", options.offline,
                     "Only what is defined; no folder or server is tried");
}

}  // namespace depot::ctl
