// Loading the component when memory runs out on the way.
#include <cstring>

#include "component/component.h"
#include "platform/compiler.h"
#include "support/box_log.h"

namespace depot::test {
namespace {

// The entry of a library's export table that names a function, or null.
DWORD* FindExport(HMODULE library, const char* name) {
    auto* const base = reinterpret_cast<BYTE*>(library);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const auto* const exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
        base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    const auto* const names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    const auto* const places = reinterpret_cast<const WORD*>(base + exports->AddressOfNameOrdinals);
    auto* const functions = reinterpret_cast<DWORD*>(base + exports->AddressOfFunctions);
    for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
        const auto* const exported = reinterpret_cast<const char*>(base + names[index]);
        if (std::strcmp(name, exported) == 0) return &functions[places[index]];
    }
    return nullptr;
}

// Code that jumps to a function, within reach of a library's export table.
BYTE* MakeJump(HMODULE library, FARPROC target) {
    constexpr std::size_t kStep = 0x10000;
    constexpr std::size_t kReach = std::size_t{1} << 31;
    auto* const base = reinterpret_cast<BYTE*>(library);
    for (std::size_t offset = kStep; offset < kReach; offset += kStep) {
        auto* const code = static_cast<BYTE*>(
            VirtualAlloc(base + offset, kStep, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE));
        if (code == nullptr) continue;
        // mov rax, target; jmp rax
        const BYTE move[] = {0x48, 0xB8};
        const BYTE jump[] = {0xFF, 0xE0};
        std::memcpy(code, move, sizeof(move));
        std::memcpy(code + sizeof(move), &target, sizeof(target));
        std::memcpy(code + sizeof(move) + sizeof(target), jump, sizeof(jump));
        return code;
    }
    return nullptr;
}

// The memory of libraries that are loaded while it lives: one of the allocations of its thread
// fails, the `number`-th.
class MemoryOfNewLibraries {
public:
    explicit MemoryOfNewLibraries(int number) {
        genuine_ = FunctionCast<Allocator>(GetProcAddress(runtime_, "malloc"));
        thread_ = GetCurrentThreadId();
        left_ = number;
        if (jump_ == nullptr) jump_ = MakeJump(runtime_, FunctionCast<FARPROC>(&Allocate));
        Store(static_cast<DWORD>(jump_ - reinterpret_cast<BYTE*>(runtime_)));
    }
    ~MemoryOfNewLibraries() {
        Store(before_);
        thread_ = 0;
    }
    MemoryOfNewLibraries(const MemoryOfNewLibraries&) = delete;
    MemoryOfNewLibraries& operator=(const MemoryOfNewLibraries&) = delete;

    static int Left() { return left_; }

private:
    using Allocator = void*(__cdecl*)(std::size_t);

    static void* __cdecl Allocate(std::size_t bytes) {
        const bool fails = GetCurrentThreadId() == thread_ && --left_ == 0;
        return fails ? nullptr : genuine_(bytes);
    }

    void Store(DWORD place) const {
        DWORD protection = 0;
        VirtualProtect(entry_, sizeof(*entry_), PAGE_READWRITE, &protection);
        *entry_ = place;
        VirtualProtect(entry_, sizeof(*entry_), protection, &protection);
    }

    static inline Allocator genuine_ = nullptr;
    static inline DWORD thread_ = 0;
    static inline int left_ = 0;
    static inline BYTE* jump_ = nullptr;  // stays: libraries may have bound to it
    const HMODULE runtime_ = GetModuleHandleA("msvcrt.dll");
    DWORD* const entry_ = FindExport(runtime_, "malloc");
    const DWORD before_ = *entry_;
};

int AllocationsOfALoad(const std::string& path) {
    constexpr int kEnough = 1 << 20;
    const MemoryOfNewLibraries memory(kEnough);
    const HMODULE library = LoadLibraryA(path.c_str());
    const int asked = kEnough - memory.Left();
    FreeLibrary(library);
    return asked;
}

TEST(LoadWithoutMemoryTest, ComponentIsLoadedWholeOrNotAtAll) {
    const ScratchFolder folder;
    const std::string copy = CopyComponent(folder, "qdirsvc.dll");
    // Without its resources it tells so in a box.
    const BoxLog boxes;
    const int asked = AllocationsOfALoad(copy);
    // The last ones are the component's own; the first the runtime cannot do without.
    constexpr int kOwn = 12;
    int refused = 0;
    for (int number = asked; number > asked - kOwn; --number) {
        SCOPED_TRACE(number);
        HMODULE library = nullptr;
        DWORD error = ERROR_SUCCESS;
        {
            const MemoryOfNewLibraries memory(number);
            library = LoadLibraryA(copy.c_str());
            error = GetLastError();
        }
        if (library != nullptr) {
            EXPECT_TRUE(FreeLibrary(library));
        } else {
            ++refused;
            EXPECT_EQ(static_cast<DWORD>(ERROR_DLL_INIT_FAILED), error);
        }
        EXPECT_EQ(nullptr, GetModuleHandleA(copy.c_str()));
    }
    EXPECT_LT(0, refused);
    const Library library(copy);
    EXPECT_NE(nullptr, library.CreateApi());
}

}  // namespace
}  // namespace depot::test
