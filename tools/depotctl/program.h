// What all commands of one run share.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "depotctl/failure.h"
#include "depotctl/renderer.h"
#include "depotctl/terminal.h"
#include "directory/call_connections.h"
#include "manager/depot_session.h"
#include "platform/not_copied.h"
#include "texts/resource_library.h"

namespace depot::ctl {

// The streams, the session with its depots, and what the component reported meanwhile.
class Program : NotCopied {
public:
    Program();
    ~Program();

    // The session, with the depots as they are defined; made on first use.
    DepotSession& Session();
    CDepots& Depots() { return Session().Depots(); }

    // Returns what the component last reported to its user, in UTF-8 and on one line, and forgets
    // it.
    static std::string TakeNotice();

    // One line on standard error.
    void Complain(std::string_view text) const;

    // What ended the program, on standard error: a line, or {"error":{"code":1,"text":"..."}},
    // whose code is the program's exit code.
    void ReportError(ExitCode code, std::string_view text) const;

    // Keeps the output for a file.
    void CollectOutput() { output.CollectIn(collected_); }

    // Writes what was kept to the file, all or nothing of it. Fails when that cannot be done.
    void StoreOutput(const std::string& utf8Path) const;

    // One line on standard error beside an answer: the text, or the JSON of it.
    void Remark(const Json& json, std::string_view text) const;

    // Reports how many names a listing left out because the code page does not have them.
    void ReportLeftOut(std::uint32_t count) const;

    OutputStream output{STD_OUTPUT_HANDLE};
    OutputStream errors{STD_ERROR_HANDLE};
    Renderer renderer{output};
    std::function<void()> command;  // what the command line asks for

    // What the program ends with when the command is done, and what when it was refused: these
    // differ where a command answers by its exit code.
    ExitCode outcome = ExitCode::kDone;
    ExitCode refusal = ExitCode::kRefused;

private:
    UniqueModule resources_;
    std::string collected_;
    // A run connects once to each location that it uses.
    const CallConnections connections_;
    std::unique_ptr<DepotSession> session_;
};

}  // namespace depot::ctl
