#include "platform/paging_client.h"

#include "platform/trace.h"
#include "platform/traced_client.h"

namespace depot {

PagingClient::PagingClient() {
#define DEPOT_MISSING_ENTRY(member, entry) member = &MissingEntryPoint<decltype(&::entry)>::Fail;
    DEPOT_PAGING_CLIENT_ENTRIES(DEPOT_MISSING_ENTRY)
#undef DEPOT_MISSING_ENTRY
}

PagingClient::PagingClient(HMODULE library) : PagingClient() {
    if (library == nullptr) return;
#define DEPOT_BIND_ENTRY(member, entry) BindEntryPoint(member, library, #entry);
    DEPOT_PAGING_CLIENT_ENTRIES(DEPOT_BIND_ENTRY)
#undef DEPOT_BIND_ENTRY
    if (IsTracing()) TraceRequests(*this);
}

bool PagingClient::IsComplete() const {
    bool complete = true;
#define DEPOT_ENTRY_IS_THERE(member, entry) complete = complete && !IsMissing(member);
    DEPOT_PAGING_CLIENT_ENTRIES(DEPOT_ENTRY_IS_THERE)
#undef DEPOT_ENTRY_IS_THERE
    return complete;
}

}  // namespace depot
