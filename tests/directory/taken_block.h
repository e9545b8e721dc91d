// A server's shared block that cannot be had.
#pragma once

#include "platform/handles.h"
#include "support/directory_fixture.h"

namespace depot::test {

// Makes the place's object anew while the block's name belongs to another kind of object, which it
// does as long as the result is open.
inline UniqueHandle TakeTheBlocksName(DirectoryPlace& place) {
    place.location->host = "127.0.0.1.";
    const std::string key = ServerKey(place.location->host, place.location->port);
    UniqueHandle event(
        CreateEventA(nullptr, TRUE, FALSE, ("Quillon - Depot - LDAP Info - " + key).c_str()));
    place.items = std::make_unique<CLDAPItems>(place.location.get());
    place.items->Connection().SetPrompt(&place.prompt);
    EXPECT_EQ(nullptr, place.items->Connection().Shared().Block().Access());
    place.location->host = "127.0.0.1";
    return event;
}

}  // namespace depot::test
