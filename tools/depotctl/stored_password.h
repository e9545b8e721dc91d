// Passwords in the user's credential store, and what a definition says of them.
#pragma once

#include "depotctl/define_options.h"

namespace depot::ctl {

// Ends the command where the options contradict each other.
void RequireOnePlace(const DefineOptions& options);

// Appends what the options change of the definition. The target is the one that the location has
// already, or is given, else a new one.
void AddStoredPassword(const DefineOptions& options, const RawDefinition& before,
                       DefinitionChange& change);

// Stores the password as the definition that is to be says, or removes it as the one before said.
// Ends the command where that cannot be.
void StorePassword(const DefineOptions& options, const RawDefinition& after,
                   const std::string& password);
void ForgetPassword(const DefineOptions& options, const RawDefinition& before);

// Ends the command for a location that nobody logs on to with a stored name.
void RequireStorable(const DefineOptions& options, const RawDefinition& after);

}  // namespace depot::ctl
