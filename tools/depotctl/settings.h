// The settings beside the definitions: which of them count, and where each comes from.
#pragma once

#include <string>
#include <vector>

#include "depotctl/definition.h"
#include "depotctl/program.h"
#include "model/depot_paths.h"

namespace depot::ctl {

// One setting as it counts now. Texts are in UTF-8.
struct SettingInForce {
    std::string name;
    std::string value;
    std::string from;    // such as "machine policy"; "default" where nothing is set
    std::string key;     // the registry key, with its hive; empty where it comes from elsewhere
    std::string wrong;   // why it does not count as it stands; empty where it does
    std::string advice;  // what to write in its place

    bool IsSet() const { return from != "default"; }
};

// Returns all settings of the product, and one for each host that is named as quiet or not.
std::vector<SettingInForce> ReadSettings();

// Returns the values of a directory location that settings may give, with where each comes from:
// the definition, a setting or neither.
std::vector<SettingInForce> SettingsOf(const RawDefinition& definition, int number,
                                       const CDepotPath& location);

// What is set in a place where it does not count, because it is no such number or too long: what
// stands there, and what counts in its place.
Findings IgnoredSettings();

// What a check shows of them: those that are set; as JSON all of them.
Findings SettingFindings(const std::vector<SettingInForce>& settings);
Json SettingsJson(const std::vector<SettingInForce>& settings);

}  // namespace depot::ctl
