// Whether a depot's locations can be used, and which one is.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "depotctl/directory_probe.h"
#include "model/depot.h"
#include "platform/secret_text.h"

namespace depot::ctl {

// What is known of one location after trying it.
struct LocationState {
    std::optional<Problem> problem;         // why it cannot be used; nothing when it can
    std::optional<Problem> writingProblem;  // why it cannot be written, when it can be used
};

// What a location's server is logged on to with.
struct LogOnNames {
    std::string userName;
    SecretText password;
};

// The location's own credentials, else the pair that another process was given last for the server,
// unless the location names another user.
LogOnNames KnownCredentials(const DirectoryProbe& probe);

// Logs on with these names and asks for none: what would have to be asked for is a problem.
std::optional<Problem> LogOnUnasked(DirectoryProbe& probe, const LogOnNames& names);

// Returns whether a user at a terminal may be asked for what `problem`, of a log-on with these
// names, is about.
bool MayAsk(const DirectoryProbe& probe, const Problem& problem);

// Logs on with what a user at a terminal answers, who is asked again a few times, after a log-on
// with `names` failed. `names` are then those that worked.
std::optional<Problem> LogOnAsking(DirectoryProbe& probe, LogOnNames& names, Problem failure);

// Looks whether a folder is there, and whether it can be written.
std::optional<Problem> TryFolder(const std::string& folder);
std::optional<Problem> TryWritingFolder(const std::string& folder);

// A look at one location without asking anyone anything and without leaving anything behind. It is
// made on the thread that the location belongs to; the look itself may be on another one.
class LocationAttempt {
public:
    explicit LocationAttempt(CDepotPath& location);

    // Whether the answer may be long in coming.
    bool MayWait() const { return probe_.has_value() || folder_.starts_with("\\\\"); }

    // Looks whether the location can be used, and returns it.
    bool Open();
    // What Open has found out so far, on whatever thread.
    std::optional<Problem> WhyNot() const;
    // Asks at the terminal where Open has failed for want of credentials, and returns whether the
    // location can be used then.
    bool OpenAsking();

    // Looks whether it can be used and written.
    LocationState Try();

    // Hands the credentials and the connection to the depot of the location, which uses no other
    // one from then on.
    void Give(CDepot& depot, CDepotPath& location);

private:
    std::optional<Problem> Look();

    const std::string folder_;
    std::optional<DirectoryProbe> probe_;  // of a directory
    mutable std::mutex lock_;              // of what follows
    std::optional<Problem> problem_;
};

// Makes a depot usable: leaves only the location that is used, with its connection, and asks on a
// terminal for the credentials that a server wants. Fails when no location can be used.
void OpenDepot(CDepot& depot);

}  // namespace depot::ctl
