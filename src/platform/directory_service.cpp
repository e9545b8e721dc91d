#include "platform/directory_service.h"

#include <atomic>

#include "platform/compiler.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/system_folder.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr WORD kFolderLookupOrdinal = 34;
constexpr char kLibrary[] = "qdirsvc.dll";

using FolderLookup = int(__stdcall*)(int category, int item, char* buffer, unsigned size);

UniqueModule LoadFrom(const std::string& folder) {
    return UniqueModule(folder.empty() ? nullptr : LoadLibraryA((folder + kLibrary).c_str()));
}

FolderLookup BindLookup() {
    UniqueModule library = LoadFrom(OwnModuleFolder());
    if (!library) library = LoadFrom(SystemFolder());
    if (!library) return nullptr;
    const auto lookup = FunctionCast<FolderLookup>(
        GetProcAddress(library.get(), MAKEINTRESOURCEA(kFolderLookupOrdinal)));
    // The library stays loaded as long as the process: the bound entry point lives in it.
    if (lookup != nullptr) static_cast<void>(library.release());
    return lookup;
}

// What could not be loaded for want of memory may be there the next time.
FolderLookup BoundLookup() {
    static std::atomic<FolderLookup> bound = nullptr;
    if (bound.load() == nullptr) bound = BindLookup();
    return bound;
}

}  // namespace

std::string GetStandardFolder(int category, int item) {
    const FolderLookup lookup = BoundLookup();
    if (lookup == nullptr) return {};
    char buffer[kMaxPathBytes] = {};
    lookup(category, item, buffer, sizeof(buffer));
    return std::string(UpToNul(std::string_view(buffer, sizeof(buffer))));
}

}  // namespace depot
