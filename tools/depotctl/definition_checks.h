// The mistakes of definitions that were written by hand, found in their registry values alone: no
// folder and no server is tried.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "depotctl/definition.h"

namespace depot::ctl {

// Names every mistake of a definition, each with what to do about it; nothing for a good one.
Findings CheckDefinition(const RawDefinition& definition);

// The mistakes of one location that is read, other than those of single values.
Findings CheckLocation(const RawDefinition& definition, int location);

// The mistakes of a name that is to become the key of a depot.
Findings CheckKey(const std::string& key);

// What the definitions on one machine have to do with each other.
struct DepotSummary {
    std::string key;
    std::string displayName;
    bool isForUser = true;
    bool isDefault = false;
    std::vector<std::string> roots;  // expanded; of folders only
};

// Returns whether two texts in UTF-8 are one name to the component.
using SameText = std::function<bool(std::string_view, std::string_view)>;

// Returns, for each depot in the order of the list, what stands in the way of others.
std::vector<Findings> CheckTogether(const std::vector<DepotSummary>& depots, const SameText& same);

// Whether any of them is a problem, or worse.
bool HasProblems(const Findings& findings);

}  // namespace depot::ctl
