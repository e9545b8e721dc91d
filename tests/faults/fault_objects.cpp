// Objects of the kernel that cannot be made, and the handles and views that a module holds.
#include <cstring>
#include <utility>

#include "faults/fault_state.h"

namespace depot::test {
namespace {

// The handles and views of servers' blocks, which stay on purpose. A plain table: the layer must
// not need memory of its own while memory is what fails.
class KnownAddresses {
public:
    void Add(const void* address) {
        *Slot(address) = address;
        ++count_;
    }
    bool Remove(const void* address) {
        const void** const slot = Slot(address);
        if (*slot != address) return false;
        *slot = Gone();
        --count_;
        return true;
    }
    bool Knows(const void* address) { return *Slot(address) == address; }
    std::size_t Count() const { return count_; }

    // Forgets every address but the first, handing each that is forgotten to `giveBack`.
    template <class GiveBack>
    void ForgetAllButOne(const GiveBack& giveBack) {
        const void* kept = nullptr;
        for (const void*& slot : slots_) {
            if (slot == nullptr || slot == Gone()) {
                slot = nullptr;
            } else if (kept == nullptr) {
                kept = std::exchange(slot, nullptr);
            } else {
                giveBack(std::exchange(slot, nullptr));
            }
        }
        count_ = 0;
        if (kept != nullptr) Add(kept);
    }

private:
    static const void* Gone() { return reinterpret_cast<const void*>(ULONG_PTR{1}); }
    // The address's slot, or a free one for it.
    const void** Slot(const void* address) {
        const auto value = reinterpret_cast<ULONG_PTR>(address);
        std::size_t index = (value >> 2 ^ value >> 16) % kSlots;
        const void** free = nullptr;
        for (; slots_[index] != nullptr; index = (index + 1) % kSlots) {
            if (slots_[index] == address) return &slots_[index];
            if (slots_[index] == Gone() && free == nullptr) free = &slots_[index];
        }
        return free != nullptr ? free : &slots_[index];
    }
    static constexpr std::size_t kSlots = 1 << 18;
    const void* slots_[kSlots] = {};
    std::size_t count_ = 0;
};
KnownAddresses serverHandles;
KnownAddresses serverViews;

HANDLE WINAPI MakeMapping(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCSTR name) {
    if (IsWatched() && FailsNow(FaultKind::kObject)) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return nullptr;
    }
    const HANDLE mapping =
        real<&CreateFileMappingA>(file, security, protection, sizeHigh, sizeLow, name);
    if (mapping == nullptr || !IsWatched()) return mapping;
    static constexpr char kServers[] = "Quillon - Depot - LDAP Info";
    if (name != nullptr && std::strncmp(name, kServers, sizeof(kServers) - 1) == 0) {
        serverHandles.Add(mapping);
    } else {
        ForgetServerHandle(mapping);
        Note(Holding::kHandle, 1);
    }
    return mapping;
}

LPVOID WINAPI MapView(HANDLE mapping, DWORD access, DWORD high, DWORD low, SIZE_T size) {
    if (IsWatched() && FailsNow(FaultKind::kObject)) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    void* const view = real<&MapViewOfFile>(mapping, access, high, low, size);
    if (view == nullptr || !IsWatched()) return view;
    if (serverHandles.Knows(mapping)) {
        serverViews.Add(view);
    } else {
        serverViews.Remove(view);
        Note(Holding::kView, 1);
    }
    return view;
}

BOOL WINAPI UnmapView(LPCVOID view) {
    if (IsWatched() && !serverViews.Remove(view)) Note(Holding::kView, -1);
    return real<&UnmapViewOfFile>(view);
}

BOOL WINAPI Close(HANDLE handle) {
    if (IsWatched() && !serverHandles.Remove(handle)) Note(Holding::kHandle, -1);
    return real<&CloseHandle>(handle);
}

// A thread without a token of its own is no failure.
BOOL WINAPI OpenTokenOfThread(HANDLE thread, DWORD access, BOOL asSelf, PHANDLE token) {
    const BOOL opened = real<&OpenThreadToken>(thread, access, asSelf, token);
    if (opened && IsWatched()) {
        ForgetServerHandle(*token);
        Note(Holding::kHandle, 1);
    }
    return opened;
}

}  // namespace

FARPROC ObjectStandIn(const char* name, FARPROC genuine) {
    DEPOT_STAND_IN(CreateFileMappingA, MakeMapping)
    DEPOT_STAND_IN(MapViewOfFile, MapView)
    DEPOT_STAND_IN(UnmapViewOfFile, UnmapView)
    DEPOT_STAND_IN(CloseHandle, Close)
    DEPOT_STAND_IN(OpenThreadToken, OpenTokenOfThread)
    return nullptr;
}

std::size_t OpenServerHandles() {
    return serverHandles.Count();
}

void ForgetServerHandle(HANDLE handle) {
    serverHandles.Remove(handle);
}

void CloseServerHandles() {
    serverViews.ForgetAllButOne([](const void* view) { real<&UnmapViewOfFile>(view); });
    serverHandles.ForgetAllButOne(
        [](const void* handle) { real<&CloseHandle>(const_cast<void*>(handle)); });
}

}  // namespace depot::test
