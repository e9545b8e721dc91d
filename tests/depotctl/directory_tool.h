// A world with a depot in a directory besides those in folders.
#pragma once

#include "depotctl/tool.h"
#include "support/directory_server.h"

namespace depot::test {

// The depot "Dir": a folder of the shared server, new for each test.
class DirectoryDepot {
public:
    explicit DirectoryDepot(const ScratchKey& definitions) : definitions_(definitions) {
        ForgetServer(server.Port());
        Define("Dir");
        server.AddFolder("Sessions", base);
        server.AddFile("office.kre", "cn=Sessions," + base, "[Host]\r\nName=mail\r\n");
    }

    // Defines one more depot of the same folder.
    void Define(const std::string& key) const {
        definitions_.Text(key, "Path1", base);
        definitions_.Dword(key, "Type1", 1);
        definitions_.Text(key, "Host1", "127.0.0.1");
        definitions_.Dword(key, "Port1", server.Port());
        definitions_.Text(key, "Username1", kEditor);
        definitions_.Text(key, "Password1", kEditorPassword);
    }

    DirectoryServer& server = SharedServer();
    const std::string base = NewFolder();

private:
    const ScratchKey& definitions_;
};

class DirectoryToolTest : public ToolTest {
protected:
    DirectoryDepot dir_{key_};
};

}  // namespace depot::test
