// Whether a depot's locations can be used, and which one is.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "depotctl/directory_probe.h"
#include "model/depot.h"
#include "platform/not_copied.h"
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
class LocationAttempt : NotCopied {
public:
    virtual ~LocationAttempt() = default;

    // Whether the answer may be long in coming.
    virtual bool MayWait() const = 0;

    // Looks whether the location can be used, and returns it.
    bool Open();
    // What Open has found out so far, on whatever thread.
    std::optional<Problem> WhyNot() const;
    // Asks at the terminal where Open has failed for want of credentials, and returns whether the
    // location can be used then.
    bool OpenAsking();

    // Looks whether it can be used and written.
    LocationState Try();

    // Whether a depot is used with this location in spite of the problem: what is missing is
    // reported by the operation that needs it, or made by it.
    virtual bool IsUsedWith(const Problem& /*problem*/) const { return false; }
    // Returns whether the depot, whose location this is, can use it as it is.
    virtual bool IsOpenIn(CDepot& depot) const = 0;
    // Hands what Open has found to the depot, which uses no other location from then on.
    virtual void Give(CDepot& /*depot*/, CDepotPath& /*location*/) {}

private:
    virtual std::optional<Problem> Look() = 0;
    virtual std::optional<Problem> LookAsking(const Problem& failure) { return failure; }
    virtual std::optional<Problem> TryWriting() = 0;
    bool Keep(std::optional<Problem> problem);

    mutable std::mutex lock_;  // of what follows
    std::optional<Problem> problem_;
};

std::unique_ptr<LocationAttempt> MakeAttempt(CDepotPath& location);

// Makes a depot usable: leaves only the location that is used, with its connection, and asks on a
// terminal for the credentials that a server wants. Fails when no location can be used.
void OpenDepot(CDepot& depot);

}  // namespace depot::ctl
