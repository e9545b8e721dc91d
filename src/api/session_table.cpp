#include "api/session_table.h"

#include <memory>

#include "platform/no_destructor.h"

namespace depot {
namespace {

DepotSession* AsSession(LONG_PTR handle) {
    return reinterpret_cast<DepotSession*>(handle);
}

}  // namespace

SessionTable& SessionTable::Instance() {
    // Sessions that clients left behind are ended with the DLL, not while the process ends.
    static NoDestructor<SessionTable> table;
    return *table;
}

LONG_PTR SessionTable::Create() {
    void* slot = nullptr;
    {
        const std::lock_guard guard(lock_);
        slot = pool_.Allocate();
    }
    if (slot == nullptr) return 0;
    // Loading the depots takes long: other apartments do not wait for it.
    try {
        std::construct_at(static_cast<DepotSession*>(slot));
    } catch (...) {
        const std::lock_guard guard(lock_);
        pool_.Free(slot);
        throw;
    }
    return Publish(slot);
}

LONG_PTR SessionTable::Publish(void* slot) {
    const auto handle = reinterpret_cast<LONG_PTR>(slot);
    try {
        const std::lock_guard guard(lock_);
        sessions_.emplace(handle, Use());
        return handle;
    } catch (...) {
        DestroyRemoved(handle);
        throw;
    }
}

DepotSession* SessionTable::Find(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    return IsLive(handle) ? AsSession(handle) : nullptr;
}

DepotSession* SessionTable::Enter(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    if (!IsLive(handle) || sessions_[handle].busy) return nullptr;
    sessions_[handle].busy = true;
    return AsSession(handle);
}

void SessionTable::Leave(LONG_PTR handle) {
    {
        const std::lock_guard guard(lock_);
        const auto found = sessions_.find(handle);
        if (found == sessions_.end()) return;
        found->second.busy = false;
        if (!found->second.ending) return;
        sessions_.erase(found);
    }
    DestroyRemoved(handle);
}

LONG_PTR SessionTable::Widen(LONG_PTR handle) {
    if (Find(handle) != nullptr) return handle;
    const auto low = static_cast<LONG_PTR>(static_cast<ULONG>(handle));
    return Find(low) != nullptr ? low : 0;
}

void SessionTable::Destroy(LONG_PTR handle) {
    if (Remove(handle)) DestroyRemoved(handle);
}

void SessionTable::Abandon(LONG_PTR handle) {
    Remove(handle);
}

SessionTable::~SessionTable() {
    for (const auto& [handle, use] : sessions_) std::destroy_at(AsSession(handle));
}

bool SessionTable::EndThoseLeft(const std::function<bool()>& goesOn) {
    for (const LONG_PTR handle : IdleHandles()) {
        if (!goesOn()) break;
        if (RemoveIdle(handle)) DestroyRemoved(handle);
    }
    const std::lock_guard guard(lock_);
    return sessions_.empty();
}

bool SessionTable::LeaveAll() noexcept {
    const std::lock_guard guard(lock_);
    bool quiet = true;
    for (const auto& [handle, use] : sessions_) {
        if (use.busy || AsSession(handle)->Leave()) quiet = false;
        if (use.busy) continue;  // a call may still come back to it
        std::destroy_at(AsSession(handle));
        pool_.Free(AsSession(handle));
    }
    sessions_.clear();
    return quiet;
}

bool SessionTable::IsLive(LONG_PTR handle) const {
    const auto found = sessions_.find(handle);
    return found != sessions_.end() && !found->second.ending;
}

// Returns whether nobody is at work on the session that was removed.
bool SessionTable::Remove(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    const auto found = sessions_.find(handle);
    if (found == sessions_.end()) return false;
    found->second.ending = true;
    if (found->second.busy) return false;
    sessions_.erase(found);
    return true;
}

bool SessionTable::RemoveIdle(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    const auto found = sessions_.find(handle);
    if (found == sessions_.end() || found->second.busy) return false;
    sessions_.erase(found);
    return true;
}

std::vector<LONG_PTR> SessionTable::IdleHandles() {
    const std::lock_guard guard(lock_);
    std::vector<LONG_PTR> handles;
    for (const auto& [handle, use] : sessions_) {
        if (!use.busy) handles.push_back(handle);
    }
    return handles;
}

void SessionTable::DestroyRemoved(LONG_PTR handle) {
    DepotSession* const session = AsSession(handle);
    std::destroy_at(session);
    const std::lock_guard guard(lock_);
    pool_.Free(session);
}

SessionForCall::SessionForCall(LONG_PTR handle, WithoutHandle withoutHandle) {
    if (handle == 0 && withoutHandle == WithoutHandle::kMakeTemporary) {
        temporary_ = std::make_unique<DepotSession>();
        session_ = temporary_.get();
    } else {
        session_ = SessionTable::Instance().Enter(handle);
        if (session_ != nullptr) entered_ = handle;
    }
}

SessionForCall::~SessionForCall() {
    if (entered_ != 0) SessionTable::Instance().Leave(entered_);
}

}  // namespace depot
