// The directory client's requests in the trace.
#pragma once

#include "platform/directory_client.h"

namespace depot {

// Puts functions in front of the table's entry points that send requests; each traces the request
// with the name or the host that it is for, and passes it on. Called for a bound table, while
// something is traced.
void TraceRequests(DirectoryClient& client);

}  // namespace depot
