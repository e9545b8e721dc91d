#include "support/leak_counts.h"

#include <cstdint>
#include <vector>

#include "platform/compiler.h"
#include "platform/win32.h"

namespace depot::test {
namespace {

// The system's list of all open handles, as far as it is read here.
struct HandleEntry {
    std::uint32_t processId;
    std::uint8_t objectType;
    std::uint8_t flags;
    std::uint16_t handle;
    void* object;
    std::uint32_t access;
};
struct HandleList {
    std::uint32_t count;
    HandleEntry entries[1];
};

constexpr ULONG kSystemHandleInformation = 16;
constexpr LONG kStatusInfoLengthMismatch = static_cast<LONG>(0xC0000004);

using QuerySystem = LONG(WINAPI*)(ULONG kind, void* buffer, ULONG size, ULONG* needed);

}  // namespace

std::size_t CountHeapBlocks() {
    HANDLE heaps[64] = {};
    const DWORD heapCount = GetProcessHeaps(64, heaps);
    std::size_t blocks = 0;
    for (DWORD index = 0; index < heapCount; ++index) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[index], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) ++blocks;
        }
    }
    return blocks;
}

std::size_t CountOpenHandles() {
    const auto query = FunctionCast<QuerySystem>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
    std::vector<char> buffer(1 << 16);
    ULONG needed = 0;
    while (query(kSystemHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
                 &needed) == kStatusInfoLengthMismatch) {
        buffer.resize(buffer.size() * 2);
    }
    const auto* const list = reinterpret_cast<const HandleList*>(buffer.data());
    std::size_t own = 0;
    for (std::uint32_t index = 0; index < list->count; ++index) {
        if (list->entries[index].processId == GetCurrentProcessId()) ++own;
    }
    return own;
}

}  // namespace depot::test
