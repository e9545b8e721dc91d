#include "depotctl/steps.h"

#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

std::string Line(const Step& step) {
    std::string line = step.verb;
    if (!step.from.empty()) line += " " + step.from;
    if (!step.to.empty()) line += (step.from.empty() ? " " : " to ") + step.to;
    return Printable(line) + "\n";
}

}  // namespace

void Steps::Note(const Step& step) {
    if (!AreShown()) return;
    Json row = {{"step", step.verb}};
    if (!step.from.empty()) row["from"] = step.from;
    if (!step.to.empty()) row["to"] = step.to;
    rows_.push_back(std::move(row));
    if (program_.renderer.IsJson()) return;
    program_.output.Write((options_.dryRun ? "would " : "") + Line(step));
}

void Steps::Note(const std::vector<Step>& steps) {
    for (const Step& step : steps) Note(step);
}

void Steps::Answer(Json json, const std::string& text) const {
    if (!options_.dryRun) {
        if (options_.verbose) json["steps"] = rows_;
        return program_.renderer.Answer(json, text);
    }
    const std::string none = rows_.empty() ? "nothing would be changed" : "nothing was changed";
    program_.renderer.Answer({{"dryRun", true}, {"steps", rows_}}, none);
}

}  // namespace depot::ctl
