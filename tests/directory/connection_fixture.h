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
    // A connection that fails in this way is told once, and the object is of no more use.
    void ExpectEnded(CLDAPItems& items, std::uint32_t code) {
        EXPECT_THAT(items.ConnectLocation(&text_), Fails());
        EXPECT_EQ(code, items.LastError());
        EXPECT_FALSE(items.IsUsable());
        EXPECT_THAT(boxes_.Texts(), testing::ElementsAre(MessageFor(code)));
    }
};

}  // namespace depot::test
