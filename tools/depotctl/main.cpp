// depotctl: depots and their files from a prompt.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>

#include "depotctl/argument_text.h"
#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/program.h"
#include "depotctl/recovered_commands.h"
#include "platform/library_search.h"
#include "platform/trace.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
#include "version.h"
// After the Windows headers.
#include <shellapi.h>

namespace depot::ctl {
namespace {

constexpr char kFooter[] =
    "Files are named by display paths, \"<Key>\\folder\\file\", or by paths of the file system.\n"
    "Exit codes: 0 done, 1 refused, 2 wrong usage, 3 a depot cannot be reached; of compare 1\n"
    "different, 4 refused.\n"
    "Examples:\n"
    "  depotctl depots\n"
    "  depotctl ls \"<Work>\\Sessions\"\n"
    "  depotctl get \"<Work>\\Sessions\\office.kre\" Host Name";

struct ArgumentsFreer {
    void operator()(wchar_t** arguments) const { LocalFree(arguments); }
};

// A half of a character would name another file than the one that it was made of.
std::string Utf8Argument(std::wstring_view wide) {
    std::optional<std::string> argument = ExactFromWide(CP_UTF8, wide);
    if (argument) return *std::move(argument);
    Refuse("\"" + Utf8FromWide(wide) + "\" is no valid text: it has half of a character");
}

// The arguments in UTF-8, the last one first, as the parser takes them.
std::vector<std::string> Arguments() {
    int count = 0;
    const std::unique_ptr<wchar_t*, ArgumentsFreer> wide(
        CommandLineToArgvW(WithClosedPaths(GetCommandLineW()).c_str(), &count));
    std::vector<std::string> arguments;
    for (int index = count - 1; index > 0; --index) {
        arguments.push_back(Utf8Argument(wide.get()[index]));
    }
    return arguments;
}

void AddCommands(CLI::App& app, Program& program, std::string& outputFile) {
    app.require_subcommand(1);
    app.fallthrough();
    app.allow_windows_style_options(false);
    app.footer(kFooter);
    app.set_version_flag("--version", "depotctl " DEPOT_VERSION_TEXT, "Show the version");
    app.add_flag_callback(
        "--json", [&program] { program.renderer.UseJson(); }, "Answer in JSON");
    app.add_flag_callback(
        "--iso", [&program] { program.renderer.UseIsoTimes(); },
        "Times by ISO 8601, in UTC, as JSON always has them");
    app.add_option("--output", outputFile, "Write the answer to a file, all or nothing of it")
        ->check([](const std::string& text) {
            return text.empty() || text.starts_with('<') ? "a path of the file system is required"
                                                         : std::string();
        });
    AddListCommand(app, program);
    AddProfileCommands(app, program);
    AddFileCommands(app, program);
    AddTransferCommands(app, program);
    AddSyncCommand(app, program);
    AddCompareCommand(app, program);
    AddLookCommands(app, program);
    AddDepotsCommand(app, program);
    AddCheckCommand(app, program);
    AddLeftoversCommand(app, program);
    AddCompletionCommand(app, program);
    AddRecoveredCommands(app, program);
}

// Runs the command. An answer is stored also where the command ends with a failure behind it.
void RunCommand(Program& program, const std::string& outputFile) {
    if (outputFile.empty()) return program.command();
    program.CollectOutput();
    try {
        program.command();
    } catch (const CommandFailure&) {
        if (program.renderer.HasAnswered()) program.StoreOutput(outputFile);
        throw;
    }
    program.StoreOutput(outputFile);
}

// Mistakes in a command line are reported as it asks for, though it cannot be taken apart.
bool WantsJson(const std::vector<std::string>& reversed) {
    const auto end = std::find(reversed.rbegin(), reversed.rend(), "--");
    return std::find(reversed.rbegin(), end, "--json") != end;
}

void StartTraceOf(const Program& program) {
    const TraceStart started = StartTrace();
    if (started == TraceStart::kIgnored) {
        program.Remark({{"trace", "ignored"}}, "the trace is ignored in an elevated program");
    }
    if (started == TraceStart::kUnwritable) {
        program.Remark({{"trace", "unwritable"}},
                       std::string("the trace cannot be written: the file that ") + kTraceVariable +
                           " or the registry names cannot be opened, or is a link or no file");
    }
}

// Help is an answer; anything else that ends the parsing is a mistake in the command line.
ExitCode EndParsing(const CLI::App& app, const CLI::ParseError& error, const Program& program) {
    std::ostringstream help, ignored;
    if (app.exit(error, help, ignored) == 0) {
        program.output.Write(help.str());
        return ExitCode::kDone;
    }
    const std::vector<std::string> unknown = app.remaining();
    const std::string reason = app.get_subcommands().empty() && !unknown.empty()
                                   ? "there is no command \"" + unknown.front() + "\""
                                   : error.what();
    program.ReportError(ExitCode::kUsage, reason + "; see \"depotctl --help\"");
    return ExitCode::kUsage;
}

ExitCode Run(Program& program) {
    const std::vector<std::string> arguments = Arguments();
    if (WantsJson(arguments)) program.renderer.UseJson();
    StartTraceOf(program);
    CLI::App app("Lists, checks and defines depots, and works with the files in them.", "depotctl");
    std::string outputFile;
    AddCommands(app, program, outputFile);
    try {
        app.parse(std::vector<std::string>(arguments));
    } catch (const CLI::ParseError& error) {
        return EndParsing(app, error, program);
    }
    const std::string name = app.get_subcommands().front()->get_name();
    const TraceSpan span("depotctl", name);
    try {
        RunCommand(program, outputFile);
    } catch (...) {
        span.EndWithText("failed");
        throw;
    }
    span.EndWithText("done");
    return program.outcome;
}

ExitCode RunAndComplain() {
    Program program;
    ExitCode code = ExitCode::kRefused;
    try {
        return Run(program);
    } catch (const CommandFailure& failure) {
        code = failure.Code() == ExitCode::kRefused ? program.refusal : failure.Code();
        program.ReportError(code, failure.what());
    } catch (const OutputClosed&) {
        // The reader stopped when it had what it wanted.
        return ExitCode::kDone;
    } catch (const std::exception& failure) {
        code = program.refusal;
        program.ReportError(code, failure.what());
    }
    return code;
}

}  // namespace
}  // namespace depot::ctl

int main() {
    depot::RestrictLibrarySearch();
    try {
        return static_cast<int>(depot::ctl::RunAndComplain());
    } catch (...) {
        // Not even the complaint had a reader.
        return static_cast<int>(depot::ctl::ExitCode::kRefused);
    }
}
