#include "depotctl/definition_rules.h"

#include <algorithm>

#include "depotctl/definition_edit.h"
#include "depotctl/definition_store.h"
#include "depotctl/failure.h"
#include "depotctl/known_values.h"
#include "depotctl/location_checks.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

Findings UnknownMacros(const RawDefinition& definition) {
    Findings findings;
    for (int location = 1; location <= definition.Locations(); ++location) {
        const std::string name = Numbered("Path", location);
        Append(findings, CheckMacroNames(name, definition.Text(name).value_or("")));
    }
    return findings;
}

[[noreturn]] void RefuseFor(const Program& program, const Findings& problems) {
    for (const Finding& problem : problems) program.Complain(Line(problem));
    Refuse("nothing was written");
}

std::string DataText(const RawValue& value) {
    if (IsPassword(value.name)) return "(not shown)";
    return value.IsText() ? value.text.Plain() : std::to_string(value.number);
}

}  // namespace

std::string Line(const Finding& finding) {
    return finding.subject + ": " + finding.text +
           (finding.advice.empty() ? "" : "; " + finding.advice);
}

void RequireGoodKey(const Program& program, const std::string& key) {
    for (const Findings& findings : {CheckKey(key), CheckStoredKey(key)}) {
        if (!findings.empty()) RefuseFor(program, findings);
    }
}

void RequireGood(const Program& program, const RawDefinition* before, const RawDefinition& after) {
    Findings problems = NewProblems(before, after);
    const Findings known = before == nullptr ? Findings() : UnknownMacros(*before);
    for (const Finding& finding : UnknownMacros(after)) {
        if (std::find(known.begin(), known.end(), finding) == known.end()) {
            problems.push_back(finding);
        }
    }
    if (!problems.empty()) RefuseFor(program, problems);
}

std::vector<Step> StepsOf(const std::string& key, const DefinitionChange& change) {
    std::vector<Step> steps;
    for (const std::string& name : change.removed) {
        if (!change.Writes(name)) steps.push_back({"unset", {}, "<" + key + "> " + name});
    }
    for (const RawValue& value : change.written) {
        steps.push_back(
            {"set", {}, Concatenate({"<", key, "> ", value.name, "=", DataText(value)})});
    }
    return steps;
}

void ShowFile(const Program& program, const std::string& text, FileForm form) {
    if (program.renderer.IsJson()) return program.renderer.Answer({{"file", text}}, {});
    if (program.output.IsTerminal()) return program.output.Write(text);
    const std::string bytes = form == FileForm::kRegistry ? RegistryFileBytes(text) : text;
    program.output.WriteBytes(bytes.data(), bytes.size());
}

}  // namespace depot::ctl
