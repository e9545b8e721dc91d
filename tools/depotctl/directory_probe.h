// Trying a directory location step by step, so that a failure names its step.
//
// The component's own way to a server shows boxes, asks for passwords and lets other processes know
// of its failures. A program that only looks must do none of this.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "directory/ldap_items.h"

namespace depot::ctl {

// Why a step failed, in UTF-8.
struct Problem {
    std::string text;
    std::string advice;
    std::uint32_t code = 0;  // the directory's code; 0 for other reasons
    bool isUnreachable = false;
};

Problem ProblemFor(std::uint32_t code);

// Returns whether other credentials may help.
bool IsAboutCredentials(const Problem& problem);

// One attempt at a location. It keeps a record of its own, so that it may run on any thread. The
// steps behind LogOn need it.
class DirectoryProbe {
public:
    explicit DirectoryProbe(CDepotPath& location);

    // Looks whether the client library is there and one of the hosts takes connections. LogOn does
    // not need this: it looks by itself when it fails.
    std::optional<Problem> Reach() const;

    // Opens a connection, secures it as the location says, and logs on.
    std::optional<Problem> LogOn(const std::string& userName, const std::string& password);

    // Whether a log-on was tried.
    bool HasTried() const { return hasTried_; }

    // Returns how long the server takes for the shortest answer there is.
    std::chrono::microseconds RoundTrip();

    std::optional<Problem> FindBase();

    // Tries to write below the base with a file entry, which is removed again.
    std::optional<Problem> TryWriting();

    // Looks at the class and the contents of one file below the base: for a user who may write one
    // that is made for it and removed again, else the first that a few listings find.
    std::optional<Problem> TryReading(bool mayWrite);

    // Lists the base as the component does. `inPages` is whether the server's size limit makes
    // that a listing in pages.
    std::optional<Problem> ListBase(bool& inPages);

    // The names, in UTF-8, of entries that replication keeps beside others of the same name.
    // `problem` is why they could not be looked for.
    std::vector<std::string> FindConflicts(std::optional<Problem>& problem);

    // What the server's schema lacks for the location's classes and attributes.
    struct SchemaGaps {
        std::vector<std::string> missing;  // names that it does not define
        std::vector<std::string> unfit;    // such as "ou has no cn": no entry could be made so
    };
    // Nothing when the server does not show its schema.
    std::optional<SchemaGaps> GapsOfSchema();

    // The location's base as an entry's name.
    std::string BaseDN() const { return directory_->PathToDN(path_); }

    // The record, with the credentials of the last log-on.
    CDepotPath& Location() const { return *record_; }
    // The directory, with the connection once LogOn has opened it.
    CLDAPItems& Directory() const { return *directory_; }

private:
    std::optional<Problem> MissingParts() const;
    Problem WhyNotLoggedOn(std::uint32_t code) const;
    std::optional<Problem> WhyNotSecured() const;
    std::uint32_t ListBaseInPages();
    std::string ProbeDN() const;
    std::optional<Problem> TryReadingOwnFile();
    std::string FirstFile();
    std::optional<Problem> TryReading(const std::string& dn);
    std::vector<std::string> Values(const std::string& dn, const std::string& attribute);

    DirectoryClient& Client() const { return directory_->Client(); }
    LDAP* Session() const { return directory_->Connection().Handle(); }

    const std::string path_;  // with its macros expanded
    const std::unique_ptr<CDepotPath> record_;
    const std::uint32_t connectTimeout_;     // the location's own
    std::unique_ptr<CLDAPItems> directory_;  // of the record; never null
    bool hasTried_ = false;
};

}  // namespace depot::ctl
