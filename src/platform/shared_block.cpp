#include "platform/shared_block.h"

#include "platform/own_objects.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kUnnamedBlockPrefix[] = "Quillon - File Mapping - ";

// Whether the memory can be touched: whoever made a block may have reserved its pages only.
bool IsUsable(const void* view, std::uint32_t size) {
    MEMORY_BASIC_INFORMATION memory = {};
    return VirtualQuery(view, &memory, sizeof(memory)) != 0 && memory.State == MEM_COMMIT &&
           memory.RegionSize >= size;
}

}  // namespace

int OpenSharedBlock(const char* name, std::uint32_t size, UniqueHandle& handle, UniqueView& view) {
    const std::string blockName =
        name != nullptr && *name != '\0' ? name : ProcessBlockName(kUnnamedBlockPrefix);
    view.reset();
    handle.reset();
    OwnObjectRights rights;
    handle.reset(CreateFileMappingA(INVALID_HANDLE_VALUE, rights.Get(), PAGE_READWRITE, 0, size,
                                    blockName.c_str()));
    const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
    if (handle && existed && !IsTrustedObject(handle.get(), blockName)) handle.reset();
    if (!handle) return 0;
    view.reset(MapViewOfFile(handle.get(), FILE_MAP_WRITE, 0, 0, size));
    // A new block comes from the system filled with zeros. Filling it once more here could wipe out
    // what another module has stored in it since.
    if (view && existed && !IsUsable(view.get(), size)) view.reset();
    return existed ? 0 : 1;
}

void CloseSharedBlock(SharedBlockLink& link) {
    link.view.reset();
    link.handle.reset();
    link.key.clear();
}

std::string ProcessBlockName(std::string_view prefix, DWORD processId) {
    char number[16];
    wsprintfA(number, "0x%08ld", static_cast<long>(processId));
    return Concatenate({prefix, number});
}

}  // namespace depot
