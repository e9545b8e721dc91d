// The connections of one call of the interface.
#pragma once

#include <cstdint>

#include "platform/not_copied.h"

namespace depot {

class LdapConnection;

// While it lives, connections that operations on this thread open stay open for the operations that
// follow: a call connects and binds once to each location that it uses. Its end closes them, but
// for those of locations that want theirs kept. Scopes nest; a connection belongs to the innermost
// one in which it was opened.
class CallConnections : NotCopied {
public:
    CallConnections();
    ~CallConnections();

    // The innermost of this thread; null where there is none.
    static CallConnections* Current();
    // A number that all scopes within this thread's outermost one share, and no others; 0 where
    // there is none.
    static std::uint64_t CurrentNumber();

private:
    friend class LdapConnection;

    CallConnections* const outer_;
    const std::uint64_t number_;
    LdapConnection* first_ = nullptr;  // none of them is owned
};

// Closes the connections that were kept for their sessions longer than their locations want.
void CloseExpiredConnections();

}  // namespace depot
