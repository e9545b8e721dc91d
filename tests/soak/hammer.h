// Clients that open, read, write, list and close without a pause.
#pragma once

#include <string>

#include "component/component.h"
#include "support/component_depots.h"
#include "support/working_files.h"

namespace depot::test {

// A text that every whole file of these tests ends in.
std::string Filling();

// One session from its beginning to its end: loads the file, reads what the last round wrote,
// writes ten values, flushes, and reads one of them back. Returns what went wrong; empty when
// nothing did.
std::string RunSession(IDepotIntrApi& api, const std::string& path, int round);

// The same on a file that others write as well, so that any of their values may be read.
std::string RunSharedSession(IDepotIntrApi& api, const std::string& path, int round);

// Lists a folder. Returns what went wrong.
std::string RunListing(IDepotIntrApi& api, const std::string& folder, LONG expected);

}  // namespace depot::test
