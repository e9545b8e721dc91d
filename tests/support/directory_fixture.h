// What the tests of a directory location share.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/error_text.h"
#include "support/box_log.h"
#include "support/directory_server.h"
#include "support/results.h"
#include "support/scripted_prompt.h"

namespace depot::test {

// The message of a directory code, as users see it.
inline std::string MessageFor(std::uint32_t code) {
    DirectoryClient client;
    BindDirectoryClient(client);
    std::string text;
    FormatErrorText(client.LdapMapErrorToWin32(code), nullptr, nullptr, &text, nullptr);
    return text.empty() ? text : "LDAP: " + text;
}

// A folder of the shared server for one test, which starts with nothing known of the server and
// sees every message box.
class DirectoryPlace {
public:
    DirectoryPlace() { ForgetServer(server.Port()); }

    // A location's own object, with the scripted prompt.
    CLDAPItems& Make(const CDepotPath& copied) {
        location = copied.Clone();
        items = std::make_unique<CLDAPItems>(location.get());
        items->Connection().SetPrompt(&prompt);
        return *items;
    }
    // The test's own location, connected as the editor.
    CLDAPItems& Connected() {
        if (!items) {
            location = server.Location(base).Clone();
            items = std::make_unique<CLDAPItems>(location.get());
            EXPECT_THAT(items->ConnectLocation(nullptr), IsDone());
        }
        return *items;
    }

    // The name of an entry of the folder.
    std::string Dn(const std::string& name) const { return "cn=" + name + "," + base; }
    // What a file holds; "(missing)" when there is none.
    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        if (Connected().ReadFileContents(dn, buffer) == kFailed) return "(missing)";
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    bool Holds(const std::string& dn) {
        return CodeOf(Connected().Entries().Find(dn)) == LDAP_SUCCESS;
    }

    DirectoryServer& server = SharedServer();
    std::string base = NewFolder();
    BoxLog boxes;
    ScriptedPrompt prompt;
    std::unique_ptr<CDepotPath> location;
    std::unique_ptr<CLDAPItems> items;
};

// A test of one location.
class DirectoryFixture : public testing::Test {
protected:
    CLDAPItems& Make(const CDepotPath& location) { return place_.Make(location); }
    CLDAPItems& Make(const std::string& userName, const std::string& password) {
        CDepotPath location = server_.Location();
        location.username = userName;
        location.password = password;
        return Make(location);
    }
    DirectoryInfo& Info() { return *items_->Connection().Shared().Block().Access(); }

    CLDAPItems& Connected() { return place_.Connected(); }
    std::string Dn(const std::string& name) const { return place_.Dn(name); }
    std::string Contents(const std::string& dn) { return place_.Contents(dn); }
    bool Holds(const std::string& dn) { return place_.Holds(dn); }

    DirectoryPlace place_;
    DirectoryServer& server_ = place_.server;
    std::string& base_ = place_.base;
    BoxLog& boxes_ = place_.boxes;
    ScriptedPrompt& prompt_ = place_.prompt;
    std::unique_ptr<CDepotPath>& location_ = place_.location;
    std::unique_ptr<CLDAPItems>& items_ = place_.items;
    std::string text_ = "junk";
};

}  // namespace depot::test
