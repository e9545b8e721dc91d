#include "directory/call_connections.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "directory/ldap_connection.h"
#include "platform/lock.h"
#include "platform/no_destructor.h"
#include "platform/thread_slot.h"

namespace depot {
namespace {

ThreadSlot<CallConnections> scopeSlot;

// How many calls there were so far.
std::atomic<std::uint64_t> calls = 0;

// The connections that are kept open between calls, of all sessions. Whoever uses one takes it out
// first; expired ones are closed here by whatever thread comes along.
struct KeptConnections {
    Lock lock;
    LdapConnection* first = nullptr;
};

KeptConnections& Kept() {
    static NoDestructor<KeptConnections> kept;
    return *kept;
}

}  // namespace

CallConnections::CallConnections()
    : outer_(Current()), number_(outer_ != nullptr ? outer_->number_ : ++calls) {
    scopeSlot.Set(this);
}

CallConnections::~CallConnections() {
    scopeSlot.Set(outer_);
    while (first_ != nullptr) {
        LdapConnection& connection = *first_;
        connection.LeaveCall();
        connection.EndCall();
    }
    CloseExpiredConnections();
}

CallConnections* CallConnections::Current() {
    return scopeSlot.Get();
}

std::uint64_t CallConnections::CurrentNumber() {
    const CallConnections* const current = Current();
    return current != nullptr ? current->number_ : 0;
}

void LdapConnection::JoinCall() {
    if (call_ != nullptr) return;
    call_ = CallConnections::Current();
    if (call_ != nullptr) nextOfCall_ = std::exchange(call_->first_, this);
}

void LdapConnection::LeaveCall() {
    if (call_ == nullptr) return;
    LdapConnection** link = &call_->first_;
    while (*link != this) link = &(*link)->nextOfCall_;
    *link = nextOfCall_;
    call_ = nullptr;
}

void LdapConnection::EndCall() {
    if (!isConnected_ || !isIdle_) return;
    if (location_.keepConnection == 0) {
        Close();
        return;
    }
    KeptConnections& kept = Kept();
    const std::lock_guard guard(kept.lock);
    keptUntil_ = std::chrono::steady_clock::now() +
                 std::chrono::seconds(std::min(location_.keepConnection, kLongestKeptConnection));
    nextKept_ = std::exchange(kept.first, this);
    isKept_ = true;
}

void LdapConnection::TakeFromKept() {
    // Only the session's own thread sets it.
    if (!isKept_) return;
    KeptConnections& kept = Kept();
    const std::lock_guard guard(kept.lock);
    isKept_ = false;
    LdapConnection** link = &kept.first;
    while (*link != nullptr && *link != this) link = &(*link)->nextKept_;
    // One that is not there any more has expired, and is closed.
    if (*link != nullptr) *link = nextKept_;
}

void CloseExpiredConnections() {
    KeptConnections& kept = Kept();
    const std::lock_guard guard(kept.lock);
    const auto now = std::chrono::steady_clock::now();
    for (LdapConnection** link = &kept.first; *link != nullptr;) {
        LdapConnection& connection = **link;
        if (connection.keptUntil_ > now) {
            link = &connection.nextKept_;
            continue;
        }
        *link = connection.nextKept_;
        connection.CloseHandle();
    }
}

}  // namespace depot
