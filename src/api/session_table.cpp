#include "api/session_table.h"

#include "platform/no_destructor.h"

namespace depot {
namespace {

DepotSession* AsSession(LONG_PTR handle) {
    return reinterpret_cast<DepotSession*>(handle);
}

LONG_PTR AsHandle(const void* session) {
    return reinterpret_cast<LONG_PTR>(session);
}

// What a 32-bit parameter carries of a handle.
LONG_PTR LowHalf(LONG_PTR handle) {
    return static_cast<LONG_PTR>(static_cast<ULONG>(handle));
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
    const LONG_PTR handle = AsHandle(slot);
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
    return AsSession(LiveHandle(handle));
}

DepotSession* SessionTable::Enter(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    const LONG_PTR live = LiveHandle(handle);
    if (live == 0 || sessions_[live].busy) return nullptr;
    sessions_[live].busy = true;
    return AsSession(live);
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
    const std::lock_guard guard(lock_);
    return LiveHandle(handle);
}

bool SessionTable::IsZero(LONG_PTR handle) {
    return LowHalf(handle) == 0 && Widen(handle) == 0;
}

void SessionTable::Destroy(LONG_PTR handle) {
    const LONG_PTR removed = Remove(handle);
    if (removed != 0) DestroyRemoved(removed);
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

// REQUIRES: the lock is held.
LONG_PTR SessionTable::LiveHandle(LONG_PTR handle) const {
    if (IsLive(handle)) return handle;
    const LONG_PTR low = LowHalf(handle);
    return IsLive(low) ? low : 0;
}

// Returns the handle of the session that was removed; 0 when there was none, or when a call is at
// work on it.
LONG_PTR SessionTable::Remove(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    const auto found = sessions_.find(LiveHandle(handle));
    if (found == sessions_.end()) return 0;
    const LONG_PTR live = found->first;
    found->second.ending = true;
    if (found->second.busy) return 0;
    sessions_.erase(found);
    return live;
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

// The end of a session stores its file; what a quiet one has to show of that is its thread's.
void SessionTable::DestroyRemoved(LONG_PTR handle) {
    DepotSession* const session = AsSession(handle);
    if (session->isQuiet) {
        const NoticeCollector notices;
        std::destroy_at(session);
        CallFailure failure;
        AddNotices(notices, failure);
        if (failure.code != 0) NoteFailureOfThread(failure);
    } else {
        std::destroy_at(session);
    }
    const std::lock_guard guard(lock_);
    pool_.Free(session);
}

SessionForCall::SessionForCall(LONG_PTR handle, WithoutHandle withoutHandle) {
    SessionTable& sessions = SessionTable::Instance();
    session_ = sessions.Enter(handle);
    if (session_ != nullptr) {
        entered_ = AsHandle(session_);
        if (session_->isQuiet) notices_.emplace();
    } else if (withoutHandle == WithoutHandle::kMakeTemporary && sessions.IsZero(handle)) {
        temporary_ = std::make_unique<DepotSession>();
        session_ = temporary_.get();
    } else {
        refusal_ = sessions.Find(handle) != nullptr ? ERROR_BUSY : ERROR_INVALID_HANDLE;
    }
}

SessionForCall::~SessionForCall() {
    if (session_ != nullptr && !hasEnded_) {
        const CallFailure shown = End({});
        if (shown.code != 0) NoteFailureOfThread(shown);
    }
    notices_.reset();
    if (entered_ != 0) SessionTable::Instance().Leave(entered_);
}

CallFailure SessionForCall::End(CallFailure failure) noexcept {
    hasEnded_ = true;
    if (notices_) AddNotices(*notices_, failure);
    if (entered_ == 0) return failure;
    CallFailure& kept = session_->lastFailure;
    kept.code = failure.code;
    try {
        kept.text = failure.text;
    } catch (...) {
        // The code says enough.
        kept.text.clear();
    }
    return failure;
}

}  // namespace depot
