// The directory client's requests in the trace.
#pragma once

#include "platform/directory_client.h"
#include "platform/paging_client.h"

namespace depot {

// Puts functions in front of the table's entry points that send requests; each traces the request
// with the name or the host that it is for, and passes it on. Entry points that the library lacks
// stay as they are. Called for a bound table, while something is traced.
void TraceRequests(DirectoryClient& client);
void TraceRequests(PagingClient& client);

}  // namespace depot
