// Kept copies as commands name and show them.
#pragma once

#include <string>
#include <vector>

#include "depotctl/program.h"
#include "recovery/kept_copies.h"

namespace depot::ctl {

// The name in quotes, for a message.
std::string Shown(const KeptCopy& copy);

// Why it is kept, in UTF-8 and on one line; empty where that is not known.
std::string WhyKept(const KeptCopy& copy);

// Returns all kept copies. Reports the names that have to be left out.
std::vector<KeptCopy> AllKeptCopies(const Program& program);

// Returns those of the names, in their order. Each is one that AllKeptCopies returns, in any
// letter case, or the path of such a recovered file. Ends the command where one is not there.
std::vector<KeptCopy> RequireKeptCopies(const Program& program,
                                        const std::vector<std::string>& names);
KeptCopy RequireKeptCopy(const Program& program, const std::string& name);

// Returns the user's bytes. Ends the command when they cannot be read.
KeptBytes BytesOf(const KeptCopy& copy);

// Returns in UTF-8 why a copy was not deleted.
std::string WhyNotDeleted(const KeptCopy& copy, const Error& why);

}  // namespace depot::ctl
