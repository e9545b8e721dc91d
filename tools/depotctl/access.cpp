#include "depotctl/access.h"

#include <algorithm>

#include "depotctl/definition.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/terminal.h"
#include "manager/writability.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot::ctl {
namespace {

constexpr int kAttempts = 3;

bool IsSimple(const CDepotPath& location) {
    return location.authentication != kAnonymousAuthentication &&
           location.authentication != kNegotiateAuthentication;
}

Problem NoCredentials(const CDepotPath& location) {
    return {"the server " + Utf8FromAnsi(location.host) +
                " wants a user name and a password, and none are stored",
            "run the command at a terminal, or store them as Username and Password",
            LDAP_INAPPROPRIATE_AUTH, false};
}

// Asks at the terminal; returns whether the user answered.
bool AskUser(const CDepotPath& location, LogOnNames& names) {
    if (!CanAsk()) return false;
    const std::string place = "Log on to " + Utf8FromAnsi(location.host) + "\n";
    const std::string known = Utf8FromAnsi(names.userName);
    const auto user =
        AskVisible(place + (known.empty() ? "User name: " : "User name [" + known + "]: "));
    if (!user) return false;
    const auto password = AskHidden("Password: ");
    if (!password) return false;
    if (!user->empty()) names.userName = ToAnsi(*user);
    names.password = ToAnsi(*password);
    return true;
}

bool IsAboutCredentials(const Problem& problem) {
    return problem.code == LDAP_INVALID_CREDENTIALS || problem.code == LDAP_INAPPROPRIATE_AUTH ||
           problem.code == LDAP_UNWILLING_TO_PERFORM;
}

// Tries a directory location, asking where that may help, and keeps the credentials that worked.
std::optional<Problem> OpenDirectoryLocation(CDepotPath& location) {
    DirectoryProbe probe(location);
    if (auto problem = probe.Reach()) return problem;
    LogOnNames names = KnownCredentials(location, probe.Names());
    if (auto problem = LogOnAsking(probe, location, names)) return problem;
    if (auto problem = probe.FindBase()) return problem;
    location.username = names.userName;
    location.password = names.password;
    return std::nullopt;
}

LocationState TryDirectory(CDepotPath& location) {
    DirectoryProbe probe(location);
    LocationState state;
    state.problem = probe.Reach();
    if (state.problem) return state;
    const LogOnNames names = KnownCredentials(location, probe.Names());
    state.problem = NeedsCredentials(location, names) ? NoCredentials(location)
                                                      : probe.LogOn(names.userName, names.password);
    if (!state.problem) state.problem = probe.FindBase();
    if (!state.problem) state.writingProblem = TryWriting(location, names);
    return state;
}

std::optional<Problem> Open(CDepotPath& location) {
    return IsDirectory(location) ? OpenDirectoryLocation(location)
                                 : TryFolder(ExpandedPath(location));
}

[[noreturn]] void FailToOpen(const CDepot& depot, const Problem& problem) {
    const std::string name = depot.name.empty() ? depot.displayName : depot.name;
    std::string text = "depot " + Utf8FromAnsi(name) + ": " + problem.text;
    if (!problem.advice.empty()) text += "; " + problem.advice;
    throw CommandFailure(problem.isUnreachable ? ExitCode::kUnreachable : ExitCode::kRefused, text);
}

}  // namespace

LogOnNames KnownCredentials(CDepotPath& location, CLDAPItems& items) {
    LogOnNames names = {location.username, location.password};
    if (!IsSimple(location)) return names;
    if (names.userName.empty()) names.userName = items.GetSharedUserName();
    if (names.password.empty()) names.password = items.GetSharedPassword();
    return names;
}

bool NeedsCredentials(const CDepotPath& location, const LogOnNames& names) {
    return IsSimple(location) && (names.userName.empty() || names.password.empty());
}

std::optional<Problem> LogOnAsking(DirectoryProbe& probe, CDepotPath& location, LogOnNames& names) {
    std::optional<Problem> problem;
    if (NeedsCredentials(location, names)) problem = NoCredentials(location);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (problem && (!IsSimple(location) || !AskUser(location, names))) return problem;
        problem = probe.LogOn(names.userName, names.password);
        if (!problem || !IsAboutCredentials(*problem)) return problem;
    }
    return problem;
}

std::optional<Problem> TryFolder(const std::string& folder) {
    if (PathExists(folder)) return std::nullopt;
    const bool remote = folder.starts_with("\\\\");
    return Problem{"the folder \"" + Utf8FromAnsi(folder) + "\" is not there",
                   remote ? "check the server, the share and the network"
                          : "create the folder, or correct Path",
                   0, remote};
}

std::optional<Problem> TryWritingFolder(const std::string& folder) {
    std::string text;
    if (TestWritable(kFolderLocation, folder, nullptr, &text) != 0) return std::nullopt;
    return Problem{"the folder cannot be written", "grant the user the right to write there", 0,
                   false};
}

LocationState TryLocation(CDepotPath& location) {
    if (IsDirectory(location)) return TryDirectory(location);
    const std::string folder = ExpandedPath(location);
    LocationState state;
    state.problem = TryFolder(folder);
    if (!state.problem) state.writingProblem = TryWritingFolder(folder);
    return state;
}

std::optional<Problem> TryWriting(CDepotPath& location, const LogOnNames& names) {
    const std::unique_ptr<CDepotPath> known = location.Clone();
    known->username = names.userName;
    known->password = names.password;
    CLDAPItems items(known.get());
    const std::string base = items.PathToDN(ExpandedPath(location));
    const std::string dn = EntryDN(items.Schema().NamingNames().file, kProbeFileName, base);
    std::string text;
    const bool isWritable = items.ConnectLocation(&text) != 0 &&
                            TestWritable(kDirectoryLocation, dn, &items, &text) != 0;
    items.Close();
    if (isWritable) return std::nullopt;
    return ProblemFor(items.LastError());
}

void OpenDepot(CDepot& depot) {
    CDepotPaths& paths = *depot.paths;
    while (paths.Count() > 0) {
        CDepotPath* const location = paths.At(0);
        const std::optional<Problem> problem = Open(*location);
        if (!problem) return;
        if (paths.Count() == 1) {
            // A missing folder is reported by the operation that needs it, or made by it.
            if (IsDirectory(*location) || problem->isUnreachable) FailToOpen(depot, *problem);
            return;
        }
        paths.Remove(location);
    }
}

}  // namespace depot::ctl
