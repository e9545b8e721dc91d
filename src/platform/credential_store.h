// The credential store of the current user, in which the system keeps names and passwords encrypted
// and for this user alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/secret_text.h"

namespace depot {

// A user name and its password, in the ANSI code page.
struct StoredCredential {
    std::string userName;
    SecretText password;
    std::string server;  // the only one that it is meant for; empty where any may have it
};

// The store's name of a depot's target: entries of other programs are out of a definition's reach.
std::wstring StoreTarget(const std::string& target);

// Returns what is stored under a depot's target; nothing where there is none, or where the code
// page cannot hold it.
std::optional<StoredCredential> ReadCredential(const std::string& target);

// Returns the targets of depots that something is stored under, without those that the code page
// cannot hold.
std::vector<std::string> StoredTargets();

// Store and remove it; both return the system's error code, ERROR_SUCCESS when done.
std::uint32_t WriteCredential(const std::string& target, const StoredCredential& credential);
std::uint32_t DeleteCredential(const std::string& target);

}  // namespace depot
