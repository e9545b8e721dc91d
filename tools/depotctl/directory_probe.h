// Trying a directory location step by step, so that a failure names its step.
//
// The component's own connection shows boxes, asks for passwords and lets other processes know of
// its failures. A program that only looks must do none of this.
#pragma once

#include <cstdint>
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

// One attempt at a location, which is borrowed. Each step needs the one before.
class DirectoryProbe {
public:
    explicit DirectoryProbe(CDepotPath& location) : location_(location), names_(&location) {
        BindDirectoryClient(client_);
    }

    // Looks whether the client library is there and one of the hosts takes connections.
    std::optional<Problem> Reach() const;

    // Opens a session, secures it as the location says, and logs on.
    std::optional<Problem> LogOn(const std::string& userName, const std::string& password);

    std::optional<Problem> FindBase();

    // Lists the base as the component does. `inPages` is whether the server's size limit makes
    // that a listing in pages.
    std::optional<Problem> ListBase(bool& inPages);

    // The names of the location's classes and attributes that the server's schema does not define;
    // nothing when the server does not show its schema.
    std::optional<std::vector<std::string>> MissingFromSchema();

    // The location's base as an entry's name.
    std::string BaseDN() const;

    CLDAPItems& Names() { return names_; }

private:
    std::optional<Problem> Open();
    std::optional<Problem> Secure();
    std::uint32_t Bind(const std::string& userName, const std::string& password);
    std::uint32_t ListBaseInPages();
    std::vector<std::string> Values(const std::string& dn, const std::string& attribute);

    struct Answer {
        std::uint32_t code;
        UniqueLdapMessage message;
    };
    // Searches for all entries of that scope.
    Answer Search(const std::string& dn, ULONG scope, const std::string& attribute);

    CDepotPath& location_;
    CLDAPItems names_;  // never connected
    DirectoryClient client_;
    UniqueLdap session_{nullptr, {&client_}};
};

}  // namespace depot::ctl
