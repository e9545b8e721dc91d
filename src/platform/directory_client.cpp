#include "platform/directory_client.h"

#include <atomic>

#include "platform/paths.h"
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

// Without a folder the system would go looking for the library where others may put files.
HMODULE LoadFrom(const std::string& path) {
    return FindSeparator(path) == std::string::npos ? nullptr : LoadLibraryA(path.c_str());
}

// Loading and freeing the library for every connection would take longer than the connection: the
// system's own stays loaded as long as the process. What could not be loaded is tried again.
HMODULE Load(const std::string& path) {
    static std::atomic<HMODULE> system = nullptr;
    if (path != DirectoryClientPath()) return LoadFrom(path);
    if (system.load() == nullptr) system = LoadFrom(path);
    return system;
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

}  // namespace depot
