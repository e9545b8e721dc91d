// What the tests of prompts share.
#pragma once

#include <memory>

#include "support/directory_fixture.h"
#include "support/others_object.h"

namespace depot::test {

class PromptTest : public DirectoryFixture {
protected:
    CLDAPItems& Make(const std::string& userName, const std::string& password) {
        CDepotPath location = server_.Location();
        location.username = userName;
        location.password = password;
        return Make(location);
    }
    CLDAPItems& Make(const CDepotPath& location) {
        location_ = location.Clone();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        items_->Connection().SetPrompt(&prompt_);
        return *items_;
    }
    // Somebody else was there before, with a block for this server.
    void PlantABlock(const std::string& contents) {
        const std::string key = ServerKey(location_->host, location_->port);
        planted_ = std::make_unique<OthersBlock>("Quillon - Depot - LDAP Info - " + key,
                                                 kOfSomebodyElse, contents);
    }
    // A block of this name cannot be had: the name belongs to another kind of object.
    void TakeTheBlocksName() {
        location_->host = "127.0.0.1.";
        const std::string key = ServerKey(location_->host, location_->port);
        event_.reset(
            CreateEventA(nullptr, TRUE, FALSE, ("Quillon - Depot - LDAP Info - " + key).c_str()));
        items_ = std::make_unique<CLDAPItems>(location_.get());
        items_->Connection().SetPrompt(&prompt_);
        ASSERT_EQ(nullptr, items_->Connection().Shared().Block().Access());
        location_->host = "127.0.0.1";
    }
    DirectoryInfo& Info() { return *items_->Connection().Shared().Block().Access(); }

    UniqueHandle event_;
    std::unique_ptr<OthersBlock> planted_;
};

}  // namespace depot::test
