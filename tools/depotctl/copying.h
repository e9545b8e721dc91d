// What cp, upload and download do.
#pragma once

#include <functional>
#include <string>

#include "depotctl/command_line.h"
#include "depotctl/steps.h"
#include "depotctl/transfer.h"

namespace depot::ctl {

// How one of these commands differs from the others.
struct CopyCommand {
    const char* verb;  // in the answer, such as "copied"
    // Ends the command unless the source and the target are ones that it takes.
    std::function<void(const Place& from, ItemKind kind, const Place& to)> check;
};

// Copies what the options select. Nothing is copied unless all of it can be.
void RunCopy(Program& program, const TransferOptions& options, const CopyCommand& command);

// Adds up what was copied or moved, one thing after another, and answers with it.
class TransferAnswer {
public:
    TransferAnswer(const Selection& selection, const char* verb)
        : isPattern_(selection.isPattern), verb_(verb) {}

    void Add(const Place& to, std::uint32_t files);
    void Give(const Steps& steps) const;

private:
    const bool isPattern_;
    const char* const verb_;
    std::vector<std::string> places_;
    std::string folder_;  // that receives what a pattern selects
    std::uint32_t files_ = 0;
};

}  // namespace depot::ctl
