// What a command requires of a definition before it writes one, and how it shows what it writes.
#pragma once

#include <string>
#include <vector>

#include "depotctl/definition.h"
#include "depotctl/definition_file.h"
#include "depotctl/program.h"
#include "depotctl/steps.h"

namespace depot::ctl {

// A finding on one line.
std::string Line(const Finding& finding);

// End the command with the problems of a new key, and with those of a definition that the one
// before it does not have; `before` is null for a definition that is new.
void RequireGoodKey(const Program& program, const std::string& key);
void RequireGood(const Program& program, const RawDefinition* before, const RawDefinition& after);

// What a change does to the values of a definition, one step each; passwords are not shown.
std::vector<Step> StepsOf(const std::string& key, const DefinitionChange& change);

// Answers with the text of a file of definitions; what is no terminal is given the file's bytes.
void ShowFile(const Program& program, const std::string& text, FileForm form);

}  // namespace depot::ctl
