#include "platform/directory_client.h"

#include "platform/kept_library.h"
#include "platform/system_folder.h"
#include "platform/trace.h"
#include "platform/traced_client.h"

namespace depot {
namespace {

constexpr char kLibrary[] = "wldap32.dll";

ULONG LDAPAPI CountNothing(LDAP*, LDAPMessage*) {
    return 0;
}

ULONG LDAPAPI CountNoValues(PCHAR*) {
    return 0;
}

// What the library itself makes of the code 81.
ULONG LDAPAPI MapToServerDown(ULONG) {
    return ERROR_BAD_NET_RESP;
}

// Loading and freeing the library for every connection would take longer than the connection: the
// system's own stays loaded as long as this component. What could not be loaded is tried again.
KeptLibrary systemClient;

HMODULE Load(const std::string& path) {
    // Another library than the system's stays loaded as long as the process.
    if (path != DirectoryClientPath()) return LoadLibraryAlone(path).release();
    const HMODULE loaded = systemClient.Get();
    return loaded != nullptr ? loaded : systemClient.Keep(LoadLibraryAlone(path));
}

}  // namespace

DirectoryClient::DirectoryClient()
    :
#define DEPOT_MISSING_ENTRY(member, entry) member(&MissingEntryPoint<decltype(&::entry)>::Fail),
      DEPOT_DIRECTORY_CLIENT_ENTRIES(DEPOT_MISSING_ENTRY)
#undef DEPOT_MISSING_ENTRY
          library(nullptr) {
    ldap_count_entries = &CountNothing;
    ldap_count_values = &CountNoValues;
    LdapMapErrorToWin32 = &MapToServerDown;
}

std::string DirectoryClientPath() {
    return SystemFolder() + kLibrary;
}

int BindDirectoryClient(DirectoryClient& client, const std::string& path) {
    client = DirectoryClient();
    client.library = Load(path);
    if (client.library == nullptr) return 0;
#define DEPOT_BIND_ENTRY(member, entry) BindEntryPoint(client.member, client.library, #entry);
    DEPOT_DIRECTORY_CLIENT_ENTRIES(DEPOT_BIND_ENTRY)
#undef DEPOT_BIND_ENTRY
    if (IsTracing()) TraceRequests(client);
    return 1;
}

void FreeDirectoryClient() {
    systemClient.Free();
}

}  // namespace depot
