// depotctl: depots and their files from a prompt.
#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>

#include "depotctl/argument_text.h"
#include "depotctl/commands.h"
#include "depotctl/failure.h"
#include "depotctl/program.h"
#include "depotctl/recovered_commands.h"
#include "platform/library_search.h"
#include "platform/wide_text.h"
#include "platform/win32.h"
#include "version.h"
// After the Windows headers.
#include <shellapi.h>

namespace depot::ctl {
namespace {

constexpr char kFooter[] =
    "Files are named by display paths, \"<Key>\\folder\\file\", or by paths of the file system.\n"
    "Exit codes: 0 done, 1 refused, 2 wrong usage, 3 a depot cannot be reached.\n"
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

void AddCommands(CLI::App& app, Program& program) {
    app.require_subcommand(1);
    app.fallthrough();
    app.allow_windows_style_options(false);
    app.footer(kFooter);
    app.set_version_flag("--version", "depotctl " DEPOT_VERSION_TEXT, "Show the version");
    app.add_flag_callback(
        "--json", [&program] { program.renderer.UseJson(); }, "Answer in JSON");
    AddListCommand(app, program);
    AddProfileCommands(app, program);
    AddFileCommands(app, program);
    AddTransferCommands(app, program);
    AddSyncCommand(app, program);
    AddCompareCommand(app, program);
    AddLookCommands(app, program);
    AddDepotsCommand(app, program);
    AddCheckCommand(app, program);
    AddRecoveredCommands(app, program);
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
    program.Complain(reason + "; see \"depotctl --help\"");
    return ExitCode::kUsage;
}

ExitCode Run(Program& program) {
    CLI::App app("Lists, checks and defines depots, and works with the files in them.", "depotctl");
    AddCommands(app, program);
    try {
        app.parse(Arguments());
    } catch (const CLI::ParseError& error) {
        return EndParsing(app, error, program);
    }
    program.command();
    return program.outcome;
}

ExitCode RunAndComplain() {
    Program program;
    try {
        return Run(program);
    } catch (const CommandFailure& failure) {
        program.Complain(failure.what());
        return failure.Code() == ExitCode::kRefused ? program.refusal : failure.Code();
    } catch (const OutputClosed&) {
        // The reader stopped when it had what it wanted.
        return ExitCode::kDone;
    } catch (const std::exception& failure) {
        program.Complain(failure.what());
        return program.refusal;
    }
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
