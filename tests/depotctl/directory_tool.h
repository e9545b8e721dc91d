// A world with a depot in a directory besides those in folders.
#pragma once

#include "depotctl/tool.h"
#include "support/directory_server.h"

namespace depot::test {

// The depot "Dir" is a folder of the shared server, new for each test.
class DirectoryToolTest : public ToolTest {
protected:
    DirectoryToolTest() {
        ForgetServer(server_.Port());
        DefineDirectory("Dir", server_.Port());
        server_.AddFolder("Sessions", base_);
        server_.AddFile("office.kre", "cn=Sessions," + base_, "[Host]\r\nName=mail\r\n");
    }

    void DefineDirectory(const std::string& key, unsigned port) {
        key_.Text(key, "Path1", base_);
        key_.Dword(key, "Type1", 1);
        key_.Text(key, "Host1", "127.0.0.1");
        key_.Dword(key, "Port1", port);
        key_.Text(key, "Username1", kEditor);
        key_.Text(key, "Password1", kEditorPassword);
    }

    DirectoryServer& server_ = SharedServer();
    std::string base_ = NewFolder();
};

}  // namespace depot::test
