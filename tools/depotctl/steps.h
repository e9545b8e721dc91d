// What a command that writes does, step by step: for --dry-run and --verbose.
#pragma once

#include <string>
#include <vector>

#include "depotctl/program.h"

namespace depot::ctl {

struct StepOptions {
    bool dryRun = false;
    bool verbose = false;
};

// One change. Texts are in UTF-8; `from` or `to` may be empty.
struct Step {
    std::string verb;  // such as "copy"
    std::string from;
    std::string to;
};

// The steps of one command.
class Steps {
public:
    Steps(const Program& program, const StepOptions& options)
        : program_(program), options_(options) {}

    // Whether anything is to be changed at all.
    bool AreTaken() const { return !options_.dryRun; }

    // Whether anyone wants to see them.
    bool AreShown() const { return options_.dryRun || options_.verbose; }

    // Notes a step, and shows it where that is wanted.
    void Note(const Step& step);
    void Note(const std::vector<Step>& steps);

    // The command's answer: in a dry run the steps alone.
    void Answer(Json json, const std::string& text) const;

private:
    const Program& program_;
    const StepOptions options_;
    Json rows_ = Json::array();
};

}  // namespace depot::ctl
