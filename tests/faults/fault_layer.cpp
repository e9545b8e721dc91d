#include "faults/fault_layer.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "faults/fault_points.h"
#include "platform/compiler.h"
#include "platform/paging_client.h"
#include "support/module_imports.h"
// After the Windows headers.
#include <imagehlp.h>
#include <oleauto.h>
#include <shellapi.h>
#include <shlobj.h>

namespace depot::test {
namespace {

// State of the watched thread; other threads only compare their number.
std::atomic<DWORD> watchedThread = 0;
FaultKind failingKind = FaultKind::kMemory;
bool armed = false;
int failingCall = 0;
int failingCalls = 0;
int callsMade = 0;
Holdings held;
std::vector<std::string> boxes;

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

bool IsWatched() {
    return GetCurrentThreadId() == watchedThread.load();
}

bool FailsNow(FaultKind kind) {
    if (!armed || kind != failingKind) return false;
    ++callsMade;
    return failingCall != 0 && callsMade >= failingCall && callsMade - failingCall < failingCalls;
}

void Note(Holding holding, std::ptrdiff_t change) {
    held.counts[static_cast<std::size_t>(holding)] += change;
}

template <class Result>
bool IsSomething(Result result) {
    if constexpr (std::is_same_v<Result, HANDLE>) {
        return result != nullptr && result != INVALID_HANDLE_VALUE;
    } else if constexpr (std::is_pointer_v<Result>) {
        return result != nullptr;
    } else if constexpr (std::is_same_v<Result, HFILE>) {
        return result != HFILE_ERROR;
    } else if constexpr (std::is_same_v<Result, BOOL>) {
        return result != FALSE;
    } else {
        return result == ERROR_SUCCESS;
    }
}

// A search hands out its message through its last argument, also when it fails.
template <class First, class... Rest>
LDAPMessage** MessageOutput(First first, Rest... rest) {
    if constexpr (sizeof...(Rest) == 0) {
        if constexpr (std::is_same_v<First, LDAPMessage**>)
            return first;
        else
            return nullptr;
    } else {
        return MessageOutput(rest...);
    }
}

// Per function: what stands in for it, and where it really is. `Point` tells how it fails and what
// it takes or gives back.
template <class Point, class Function>
class Interception;

template <class Point, class Result, class... Arguments>
class Interception<Point, Result(WINAPI*)(Arguments...)> {
public:
    static inline Result(WINAPI* real)(Arguments...) = nullptr;

    static Result WINAPI Call(Arguments... arguments) {
        if (!IsWatched()) return real(arguments...);
        if constexpr (Point::kCanFail) {
            if (FailsNow(Point::kKind)) {
                if constexpr (sizeof...(Arguments) > 0) {
                    LDAPMessage** const message = MessageOutput(arguments...);
                    if (message != nullptr) *message = nullptr;
                }
                SetLastError(Point::kError);
                return static_cast<Result>(Point::Failure());
            }
        }
        if constexpr (std::is_void_v<Result>) {
            Note(Point::kHolding, Point::kChange);
            return real(arguments...);
        } else {
            return Noted(real(arguments...), arguments...);
        }
    }

private:
    template <class Returned>
    static Returned Noted(Returned result, Arguments... arguments) {
        if constexpr (sizeof...(Arguments) > 0) {
            LDAPMessage** const message = MessageOutput(arguments...);
            if (message != nullptr && *message != nullptr) Note(Holding::kMessage, 1);
        }
        if constexpr (Point::kHolding != Holding::kNothing) {
            // Whatever is given back is gone, whatever the call says.
            if (Point::kChange < 0 || IsSomething(result)) Note(Point::kHolding, Point::kChange);
        }
        return result;
    }
};

#define DEPOT_DEFINE_TAKES(kind, function, failure, error, holding) \
    struct function##Point {                                        \
        static constexpr bool kCanFail = true;                      \
        static constexpr FaultKind kKind = FaultKind::kind;         \
        static constexpr DWORD kError = error;                      \
        static constexpr Holding kHolding = Holding::holding;       \
        static constexpr std::ptrdiff_t kChange = 1;                \
        static auto Failure() { return failure; }                   \
    };
#define DEPOT_DEFINE_FAULT(kind, function, failure, error) \
    DEPOT_DEFINE_TAKES(kind, function, failure, error, kNothing)
#define DEPOT_DEFINE_RETURNS(function, holding)               \
    struct function##Point {                                  \
        static constexpr bool kCanFail = false;               \
        static constexpr Holding kHolding = Holding::holding; \
        static constexpr std::ptrdiff_t kChange = -1;         \
    };
DEPOT_FAULT_POINTS(DEPOT_DEFINE_FAULT, DEPOT_DEFINE_TAKES, DEPOT_DEFINE_RETURNS)
DEPOT_DIRECTORY_FAULT_POINTS(DEPOT_DEFINE_FAULT, DEPOT_DEFINE_TAKES, DEPOT_DEFINE_RETURNS)

template <class Point, class Function>
FARPROC Intercepted(FARPROC genuine) {
    using Hook = Interception<Point, Function>;
    Hook::real = FunctionCast<Function>(genuine);
    return FunctionCast<FARPROC>(&Hook::Call);
}

// The genuine functions behind those below.
template <auto Function>
inline decltype(Function) real = nullptr;

template <auto Function>
FARPROC StandIn(FARPROC genuine, decltype(Function) replacement) {
    real<Function> = FunctionCast<decltype(Function)>(genuine);
    return FunctionCast<FARPROC>(replacement);
}

void* Allocate(std::size_t size) {
    if (!IsWatched()) return real<&std::malloc>(size);
    if (FailsNow(FaultKind::kMemory)) return nullptr;
    void* const block = real<&std::malloc>(size);
    if (block != nullptr) Note(Holding::kBlock, 1);
    return block;
}

void* AllocateCleared(std::size_t count, std::size_t size) {
    if (!IsWatched()) return real<&std::calloc>(count, size);
    if (FailsNow(FaultKind::kMemory)) return nullptr;
    void* const block = real<&std::calloc>(count, size);
    if (block != nullptr) Note(Holding::kBlock, 1);
    return block;
}

void* Reallocate(void* block, std::size_t size) {
    if (!IsWatched()) return real<&std::realloc>(block, size);
    if (FailsNow(FaultKind::kMemory)) return nullptr;
    void* const moved = real<&std::realloc>(block, size);
    if (block == nullptr && moved != nullptr) Note(Holding::kBlock, 1);
    return moved;
}

void Free(void* block) {
    if (block != nullptr && IsWatched()) Note(Holding::kBlock, -1);
    real<&std::free>(block);
}

// A disk that becomes full takes the first bytes.
BOOL WINAPI WriteToFile(HANDLE file, LPCVOID bytes, DWORD length, LPDWORD written,
                        LPOVERLAPPED overlapped) {
    if (!IsWatched() || !FailsNow(FaultKind::kFile)) {
        return real<&WriteFile>(file, bytes, length, written, overlapped);
    }
    real<&WriteFile>(file, bytes, length / 2, written, overlapped);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

UINT WINAPI WriteToLegacyFile(HFILE file, LPCSTR bytes, UINT length) {
    if (!IsWatched() || !FailsNow(FaultKind::kFile)) return real<&_lwrite>(file, bytes, length);
    // A length of 0 would cut the file.
    return length < 2 ? 0 : real<&_lwrite>(file, bytes, length / 2);
}

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

int WINAPI NoteBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (!IsWatched()) return real<&MessageBoxA>(owner, text, caption, type);
    const bool wasArmed = std::exchange(armed, false);
    const Holdings before = held;
    boxes.emplace_back(text);
    held = before;
    armed = wasArmed;
    return IDOK;
}

bool IsName(LPCSTR text) {
    // An ordinal is no name.
    return reinterpret_cast<ULONG_PTR>(text) >= 0x10000;
}

#define DEPOT_CHOOSE_TAKES(kind, function, failure, error, holding) \
    DEPOT_CHOOSE_RETURNS(function, holding)
#define DEPOT_CHOOSE_FAULT(kind, function, failure, error) DEPOT_CHOOSE_RETURNS(function, kNothing)
#define DEPOT_CHOOSE_RETURNS(function, holding) \
    if (std::strcmp(name, #function) == 0)      \
        return Intercepted<function##Point, decltype(&::function)>(genuine);

FARPROC WINAPI FindEntryPoint(HMODULE library, LPCSTR name) {
    const FARPROC genuine = real<&GetProcAddress>(library, name);
    if (genuine == nullptr || !IsName(name)) return genuine;
    DEPOT_DIRECTORY_FAULT_POINTS(DEPOT_CHOOSE_FAULT, DEPOT_CHOOSE_TAKES, DEPOT_CHOOSE_RETURNS)
    return genuine;
}

#define DEPOT_STAND_IN(function, replacement) \
    if (std::strcmp(name, #function) == 0) return StandIn<&::function>(genuine, &replacement);

// Returns what stands in for an imported function, or null.
FARPROC Replacement(const char* name, FARPROC genuine) {
    DEPOT_FAULT_POINTS(DEPOT_CHOOSE_FAULT, DEPOT_CHOOSE_TAKES, DEPOT_CHOOSE_RETURNS)
    DEPOT_STAND_IN(malloc, Allocate)
    DEPOT_STAND_IN(calloc, AllocateCleared)
    DEPOT_STAND_IN(realloc, Reallocate)
    DEPOT_STAND_IN(free, Free)
    DEPOT_STAND_IN(WriteFile, WriteToFile)
    DEPOT_STAND_IN(_lwrite, WriteToLegacyFile)
    DEPOT_STAND_IN(CreateFileMappingA, MakeMapping)
    DEPOT_STAND_IN(MapViewOfFile, MapView)
    DEPOT_STAND_IN(UnmapViewOfFile, UnmapView)
    DEPOT_STAND_IN(CloseHandle, Close)
    DEPOT_STAND_IN(MessageBoxA, NoteBox)
    DEPOT_STAND_IN(GetProcAddress, FindEntryPoint)
    return nullptr;
}

const char* NameOf(Holding holding) {
    static constexpr const char* kNames[] = {"nothing", "block",      "handle",        "file",
                                             "search",  "key",        "view",          "connection",
                                             "message", "value list", "directory text"};
    return kNames[static_cast<std::size_t>(holding)];
}

}  // namespace

const char* NameOf(FaultKind kind) {
    static constexpr const char* kNames[] = {"memory", "registry", "file", "directory", "object"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string Holdings::Since(const Holdings& before, std::ptrdiff_t spareBlocks) const {
    std::string text;
    for (std::size_t index = 0; index < counts.size(); ++index) {
        const auto holding = static_cast<Holding>(index);
        const std::ptrdiff_t more = counts[index] - before.counts[index];
        const std::ptrdiff_t spare = holding == Holding::kBlock ? spareBlocks : 0;
        if (more <= spare) continue;
        text += std::to_string(more) + " " + NameOf(holding) + "; ";
    }
    return text;
}

FaultLayer::FaultLayer(HMODULE module) {
    watchedThread = GetCurrentThreadId();
    VisitImports(module, [this](const char* name, FARPROC* entry) {
        const FARPROC replacement = Replacement(name, *entry);
        if (replacement != nullptr) replaced_.push_back({entry, *entry, replacement});
    });
    for (const Replaced& each : replaced_) StoreImport(each.entry, each.replacement);
}

FaultLayer::~FaultLayer() {
    Stop();
    for (const Replaced& each : replaced_) StoreImport(each.entry, each.genuine);
}

void FaultLayer::Fail(FaultKind kind, int number, int count) {
    failingKind = kind;
    failingCall = number;
    failingCalls = count;
    callsMade = 0;
    armed = true;
}

int FaultLayer::Stop() {
    armed = false;
    // What a failed call left must not be taken for the state of the next one.
    SetLastError(ERROR_SUCCESS);
    return callsMade;
}

Holdings FaultLayer::Held() {
    return held;
}

std::vector<std::string> FaultLayer::TakeBoxes() {
    return std::exchange(boxes, {});
}

std::size_t FaultLayer::LastingServerBlocks() {
    return serverHandles.Count();
}

}  // namespace depot::test
