#include "faults/fault_layer.h"

#include <atomic>
#include <cstring>
#include <utility>

#include "faults/fault_interception.h"
#include "faults/fault_points.h"
#include "platform/paging_client.h"
#include "support/module_imports.h"
// After the Windows headers.
#include <oleauto.h>
#include <shellapi.h>
#include <shlobj.h>

namespace depot::test {
namespace {

// State of the watched thread; other threads only compare their number.
std::atomic<DWORD> watchedThread = 0;
FaultKind failingKind = FaultKind::kMemory;
bool armed = false;
bool endsProcess = false;
int failingCall = 0;
int failingCalls = 0;
int callsMade = 0;
Holdings held;
std::vector<std::string> boxes;

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

int WINAPI NoteBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (!IsWatched()) return real<&MessageBoxA>(owner, text, caption, type);
    const FaultPause pause;
    boxes.emplace_back(text);
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
    const FARPROC replacement = MemoryStandIn(name, genuine);
    return replacement != nullptr ? replacement : genuine;
}

// Returns what stands in for an imported function, or null.
FARPROC Replacement(const char* name, FARPROC genuine) {
    DEPOT_FAULT_POINTS(DEPOT_CHOOSE_FAULT, DEPOT_CHOOSE_TAKES, DEPOT_CHOOSE_RETURNS)
    DEPOT_STAND_IN(MessageBoxA, NoteBox)
    DEPOT_STAND_IN(GetProcAddress, FindEntryPoint)
    for (const auto standIn : {MemoryStandIn, FileStandIn, ObjectStandIn}) {
        if (const FARPROC replacement = standIn(name, genuine)) return replacement;
    }
    return nullptr;
}

const char* NameOf(Holding holding) {
    static constexpr const char* kNames[] = {
        "nothing",     "block",      "handle",  "file",       "search",         "key",
        "view",        "connection", "message", "value list", "directory text", "control",
        "system text", "item list",  "icon",    "activation"};
    static_assert(std::size(kNames) == static_cast<std::size_t>(Holding::kHoldings));
    return kNames[static_cast<std::size_t>(holding)];
}

}  // namespace

bool IsWatched() {
    return GetCurrentThreadId() == watchedThread.load();
}

bool FailsMidway(FaultKind kind) {
    if (!armed || kind != failingKind) return false;
    ++callsMade;
    return failingCall != 0 && callsMade >= failingCall && callsMade - failingCall < failingCalls;
}

bool FailsNow(FaultKind kind) {
    const bool fails = FailsMidway(kind);
    if (fails) EndIfLast();
    return fails;
}

void EndIfLast() {
    if (endsProcess) TerminateProcess(GetCurrentProcess(), FaultLayer::kEnded);
}

void Note(Holding holding, std::ptrdiff_t change) {
    held.counts[static_cast<std::size_t>(holding)] += change;
}

FaultPause::FaultPause() : wasArmed_(std::exchange(armed, false)), before_(held) {}

FaultPause::~FaultPause() {
    held = before_;
    armed = wasArmed_;
}

const char* NameOf(FaultKind kind) {
    static constexpr const char* kNames[] = {"memory", "registry", "file", "directory", "object"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string Holdings::Since(const Holdings& before, std::ptrdiff_t spareBlocks) const {
    std::string text;
    for (std::size_t index = 0; index < counts.size(); ++index) {
        const auto holding = static_cast<Holding>(index);
        const std::ptrdiff_t more = counts[index] - before.counts[index];
        // What was given back without having been taken was not noted when it was.
        if (more == 0 || (holding == Holding::kBlock && more <= spareBlocks)) continue;
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

void FaultLayer::EndProcess(FaultKind kind, int number) {
    endsProcess = true;
    Fail(kind, number, 1);
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
    return OpenServerHandles();
}

void FaultLayer::CloseLastingServerBlocks() {
    CloseServerHandles();
}

}  // namespace depot::test
