// Memory that runs out, and the blocks that a module holds.
#include <cstdlib>
#include <cstring>

#include "faults/fault_state.h"
// Behind the system's own types.
#include <dpapi.h>

namespace depot::test {
namespace {

void* Noted(void* block) {
    if (block != nullptr) Note(Holding::kBlock, 1);
    return block;
}

void* Allocate(std::size_t size) {
    if (!IsWatched()) return real<&std::malloc>(size);
    return FailsNow(FaultKind::kMemory) ? nullptr : Noted(real<&std::malloc>(size));
}

void* AllocateCleared(std::size_t count, std::size_t size) {
    if (!IsWatched()) return real<&std::calloc>(count, size);
    return FailsNow(FaultKind::kMemory) ? nullptr : Noted(real<&std::calloc>(count, size));
}

void* Reallocate(void* block, std::size_t size) {
    if (!IsWatched()) return real<&std::realloc>(block, size);
    if (FailsNow(FaultKind::kMemory)) return nullptr;
    void* const moved = real<&std::realloc>(block, size);
    return block == nullptr ? Noted(moved) : moved;
}

void Free(void* block) {
    if (block != nullptr && IsWatched()) Note(Holding::kBlock, -1);
    real<&std::free>(block);
}

// Where the text is allocated, the buffer is the place of its address.
DWORD WINAPI MakeSystemText(DWORD flags, LPCVOID source, DWORD message, DWORD language,
                            LPSTR buffer, DWORD size, va_list* arguments) {
    if (IsWatched() && FailsNow(FaultKind::kMemory)) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    const DWORD length =
        real<&FormatMessageA>(flags, source, message, language, buffer, size, arguments);
    const bool allocated = length != 0 && (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    if (allocated && IsWatched()) Note(Holding::kSystemText, 1);
    return length;
}

// What the system encrypts, or decrypts, it hands over as it does a text.
BOOL WINAPI Protect(DATA_BLOB* plain, LPCWSTR description, DATA_BLOB* entropy, PVOID reserved,
                    CRYPTPROTECT_PROMPTSTRUCT* prompt, DWORD flags, DATA_BLOB* made) {
    if (IsWatched() && FailsNow(FaultKind::kMemory)) return FALSE;
    const BOOL done =
        real<&CryptProtectData>(plain, description, entropy, reserved, prompt, flags, made);
    if (done && IsWatched()) Note(Holding::kSystemText, 1);
    return done;
}

BOOL WINAPI Unprotect(DATA_BLOB* sealed, LPWSTR* description, DATA_BLOB* entropy, PVOID reserved,
                      CRYPTPROTECT_PROMPTSTRUCT* prompt, DWORD flags, DATA_BLOB* made) {
    if (IsWatched() && FailsNow(FaultKind::kMemory)) return FALSE;
    const BOOL done =
        real<&CryptUnprotectData>(sealed, description, entropy, reserved, prompt, flags, made);
    if (done && IsWatched()) Note(Holding::kSystemText, 1);
    return done;
}

HLOCAL WINAPI FreeSystemText(HLOCAL text) {
    if (text != nullptr && IsWatched()) Note(Holding::kSystemText, -1);
    return real<&LocalFree>(text);
}

}  // namespace

FARPROC MemoryStandIn(const char* name, FARPROC genuine) {
    DEPOT_STAND_IN(malloc, Allocate)
    DEPOT_STAND_IN(calloc, AllocateCleared)
    DEPOT_STAND_IN(realloc, Reallocate)
    DEPOT_STAND_IN(free, Free)
    DEPOT_STAND_IN(FormatMessageA, MakeSystemText)
    DEPOT_STAND_IN(LocalFree, FreeSystemText)
    DEPOT_STAND_IN(CryptProtectData, Protect)
    DEPOT_STAND_IN(CryptUnprotectData, Unprotect)
    return nullptr;
}

}  // namespace depot::test
