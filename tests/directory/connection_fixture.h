// What the tests of connections share.
#pragma once

#include "support/directory_fixture.h"

namespace depot::test {

// What a replaced entry point saw of its calls; one test at a time.
struct Seen {
    int calls = 0;
    std::vector<std::pair<int, ULONG>> options;
    LONG seconds = -1;
    LONG microseconds = -1;
    std::string userName;
    ULONG method = 0;
};
inline Seen seen;
inline DirectoryClient genuine;

class ConnectionTest : public DirectoryFixture {
protected:
    ConnectionTest() {
        seen = {};
        BindDirectoryClient(genuine);
    }

    CLDAPItems& Make(const CDepotPath& location) {
        location_ = location.Clone();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        items_->Connection().SetPrompt(&prompt_);
        return *items_;
    }
    CDepotPath Anonymous() const {
        CDepotPath location = server_.Location();
        location.authentication = kAnonymousAuthentication;
        return location;
    }
    CDepotPath WithoutServer() const {
        CDepotPath location = Anonymous();
        location.port = ClosedPort();
        ForgetServer(location.port);
        return location;
    }
    DirectoryInfo& Info() { return *items_->Connection().Shared().Block().Access(); }
};

}  // namespace depot::test
