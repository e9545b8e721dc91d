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

// Each test starts with nothing known of the shared server, and sees every message box.
class DirectoryFixture : public testing::Test {
protected:
    DirectoryFixture() { ForgetServer(server_.Port()); }

    // The test's own location, connected as the editor.
    CLDAPItems& Connected() {
        if (!items_) {
            location_ = server_.Location(base_).Clone();
            items_ = std::make_unique<CLDAPItems>(location_.get());
            EXPECT_THAT(items_->ConnectLocation(nullptr), IsDone());
        }
        return *items_;
    }

    // The name of an entry of the folder.
    std::string Dn(const std::string& name) const { return "cn=" + name + "," + base_; }
    // What a file holds; "(missing)" when there is none.
    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        if (Connected().ReadFileContents(dn, buffer) == kFailed) return "(missing)";
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    bool Holds(const std::string& dn) {
        return CodeOf(Connected().Entries().Find(dn)) == LDAP_SUCCESS;
    }

    DirectoryServer& server_ = SharedServer();
    std::string base_ = NewFolder();
    BoxLog boxes_;
    ScriptedPrompt prompt_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    std::string text_ = "junk";
};

}  // namespace depot::test
