#include "support/handle_count.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/compiler.h"
#include "platform/win32.h"

namespace depot::test {
namespace {

constexpr ULONG kSystemHandleInformation = 16;
constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);

struct HandleEntry {
    ULONG owner;
    BYTE type;
    BYTE flags;
    USHORT value;
    void* object;
    ULONG access;
};

struct HandleList {
    ULONG count;
    HandleEntry entries[1];
};

using Query = LONG(__stdcall*)(ULONG kind, void* buffer, ULONG size, ULONG* needed);

}  // namespace

std::size_t HandleCount() {
    static const auto query = FunctionCast<Query>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation"));
    std::vector<HandleEntry> room(1024);
    LONG status = kLengthMismatch;
    while (status == kLengthMismatch) {
        room.resize(room.size() * 2);
        status = query(kSystemHandleInformation, room.data(),
                       static_cast<ULONG>(room.size() * sizeof(HandleEntry)), nullptr);
    }
    EXPECT_EQ(0, status);
    const auto* list = reinterpret_cast<const HandleList*>(room.data());
    return static_cast<std::size_t>(std::count_if(
        list->entries, list->entries + list->count,
        [](const HandleEntry& entry) { return entry.owner == GetCurrentProcessId(); }));
}

}  // namespace depot::test
