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
    // Sessions that clients left behind are ended by DestroyAll, not while the process ends.
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
        live_.insert(handle);
        return handle;
    } catch (...) {
        DestroyRemoved(handle);
        throw;
    }
}

DepotSession* SessionTable::Find(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    return live_.contains(handle) ? AsSession(handle) : nullptr;
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

void SessionTable::DestroyAll() {
    std::unordered_set<LONG_PTR> left;
    {
        const std::lock_guard guard(lock_);
        left.swap(live_);
    }
    for (const LONG_PTR handle : left) DestroyRemoved(handle);
}

bool SessionTable::Remove(LONG_PTR handle) {
    const std::lock_guard guard(lock_);
    return live_.erase(handle) > 0;
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
        session_ = SessionTable::Instance().Find(handle);
    }
}

}  // namespace depot
