// Whether the component is installed whole on this machine.
#pragma once

#include "depotctl/definition.h"
#include "depotctl/program.h"

namespace depot::ctl {

// Looks at the registration, the libraries beside it, the texts and the user's folder. The first
// findings of each subject that is in order say so.
Findings CheckInstallation(Program& program);

}  // namespace depot::ctl
