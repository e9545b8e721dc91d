// Where a transfer goes, and what is told of it.
#pragma once

#include <string>

#include "depotctl/transfer.h"

namespace depot::ctl {

// The place that `to` names for a copy of `from`: a folder that is there, or a path that ends in a
// separator, takes it under its own name. The folder above must be there.
Place TargetOf(Places& places, const Place& from, const std::string& to);

// Refuses a target that is there: a file unless it may be replaced, and another kind in any case.
void RequireFree(const Places& places, ItemKind kind, const Place& to, bool force);

void AnswerTransfer(const Program& program, const char* verb, const Place& to,
                    const TransferResult& result);

}  // namespace depot::ctl
