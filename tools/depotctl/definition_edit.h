// Changing definitions, as texts and numbers: nothing here touches the registry.
#pragma once

#include <string>

#include "depotctl/definition.h"
#include "depotctl/definition_checks.h"

namespace depot::ctl {

// The definition after the change.
RawDefinition Changed(RawDefinition definition, const DefinitionChange& change);

// The change that takes a location out and numbers those behind it anew. Nothing when the
// definition holds a value that could not be written again as it is, or has no such location.
std::optional<DefinitionChange> WithoutLocation(const RawDefinition& definition, int location);

// The problems of a definition that the one which it was made from does not have; null for none.
Findings NewProblems(const RawDefinition* before, const RawDefinition& after);

// A definition beside the others, as far as its values alone show.
DepotSummary SummaryOf(const RawDefinition& definition, bool isForUser);

// The contents of a .reg file that makes the change below `keyPath`, which begins with the hive's
// full name; a null change removes the key. Passwords are left out, and removed by an import: the
// file is shown and kept. In UTF-8, with lines that end in CR LF.
std::string RegistryFile(const std::string& keyPath, const DefinitionChange* change);

// A text in the quotation marks of such files.
std::string QuotedForRegistry(const std::string& text);

// The same in the encoding that registry editors import: UTF-16 with a byte order mark.
std::string RegistryFileBytes(const std::string& text);

}  // namespace depot::ctl
