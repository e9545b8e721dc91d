// Whether a depot's locations can be used, and which one is.
#pragma once

#include <optional>
#include <string>

#include "depotctl/directory_probe.h"
#include "model/depot.h"

namespace depot::ctl {

// What is known of one location after trying it.
struct LocationState {
    std::optional<Problem> problem;         // why it cannot be used; nothing when it can
    std::optional<Problem> writingProblem;  // why it cannot be written, when it can be used
};

// What a location's server is logged on to with.
struct LogOnNames {
    std::string userName;
    std::string password;
};

// The location's own credentials, else those that another process was given last for the server.
LogOnNames KnownCredentials(CDepotPath& location, CLDAPItems& items);

// Returns whether a user has to be asked before the location's server can be logged on to.
bool NeedsCredentials(const CDepotPath& location, const LogOnNames& names);

// Logs on with these names, and, where they are missing or refused, with what a user at a terminal
// answers, who is asked again a few times. `names` are then those that worked.
std::optional<Problem> LogOnAsking(DirectoryProbe& probe, CDepotPath& location, LogOnNames& names);

// Looks whether a folder is there, and whether it can be written.
std::optional<Problem> TryFolder(const std::string& folder);
std::optional<Problem> TryWritingFolder(const std::string& folder);

// Tries a location without asking anyone anything and without leaving anything behind.
LocationState TryLocation(CDepotPath& location);

// Tries to write below a directory location's base with a file entry, which is removed again.
// REQUIRES: a log-on with these credentials succeeds.
std::optional<Problem> TryWriting(CDepotPath& location, const LogOnNames& names);

// Makes a depot usable: leaves only locations that come into question for the choice of the active
// one, and asks on a terminal for the credentials that a server wants. Fails when no location can
// be used.
void OpenDepot(CDepot& depot);

}  // namespace depot::ctl
