// Definitions of depots in the registry, as an administrator makes them.
#pragma once

#include <string>

#include "support/directory_server.h"
#include "support/kept_seconds.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot::test {

// Defines a depot of one directory location on this machine, whose user is asked for.
inline void DefineAskingDepot(const ScratchKey& depots, const std::string& name, unsigned port,
                              const std::string& base) {
    ForgetServer(port);
    depots.Text(name, "Path1", base);
    depots.Dword(name, "Type1", kDirectoryLocation);
    depots.Text(name, "Host1", "127.0.0.1");
    depots.Dword(name, "Port1", port);
    depots.Dword(name, "Authentication1", kSimpleAuthentication);
    if (KeptSeconds() > 0) depots.Dword(name, "KeepConnection1", KeptSeconds());
}

// Defines a depot of one directory location on this machine, used as the editor or as another user.
inline void DefineDirectoryDepot(const ScratchKey& depots, const std::string& name, unsigned port,
                                 const std::string& base, const std::string& user = kEditor,
                                 const std::string& password = kEditorPassword) {
    DefineAskingDepot(depots, name, port, base);
    depots.Text(name, "Username1", user);
    depots.Text(name, "Password1", password);
}

// The directory depot "Corp" over a folder of the shared server, and the test's own connection.
class CorpDepot {
public:
    explicit CorpDepot(const ScratchKey& depots) {
        DefineDirectoryDepot(depots, "Corp", server.Port(), base);
        EXPECT_THAT(items.ConnectLocation(nullptr), IsDone());
    }

    void Add(const std::string& name, const std::string& bytes) {
        EXPECT_THAT(items.AddFileEntry("cn=" + name + "," + base, name, bytes.data(),
                                       static_cast<std::uint32_t>(bytes.size())),
                    IsDone());
    }

    DirectoryServer& server = SharedServer();
    const std::string base = NewFolder();
    CDepotPath location = server.Location(base);
    CLDAPItems items{&location};
};

}  // namespace depot::test
