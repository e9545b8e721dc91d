#include "platform/directory_service.h"

#include <atomic>
#include <utility>

#include "platform/compiler.h"
#include "platform/kept_library.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/system_folder.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr WORD kFolderLookupOrdinal = 34;
constexpr char kLibrary[] = "qdirsvc.dll";

using FolderLookup = int(__stdcall*)(int category, int item, char* buffer, unsigned size);

// Stays loaded as long as this component; what could not be loaded for want of memory may be there
// the next time.
KeptLibrary service;
std::atomic<FolderLookup> boundLookup = nullptr;

UniqueModule LoadFrom(const std::string& folder) {
    return folder.empty() ? nullptr : LoadLibraryAlone(folder + kLibrary);
}

FolderLookup LookupOf(HMODULE library) {
    return library == nullptr ? nullptr
                              : FunctionCast<FolderLookup>(GetProcAddress(
                                    library, MAKEINTRESOURCEA(kFolderLookupOrdinal)));
}

FolderLookup BindLookup() {
    if (const FolderLookup bound = boundLookup) return bound;
    UniqueModule library = LoadFrom(OwnModuleFolder());
    if (!library) library = LoadFrom(SystemFolder());
    // One without the entry point is of no use.
    if (LookupOf(library.get()) == nullptr) return nullptr;
    boundLookup = LookupOf(service.Keep(std::move(library)));
    return boundLookup;
}

}  // namespace

std::string GetStandardFolder(int category, int item) {
    const FolderLookup lookup = BindLookup();
    if (lookup == nullptr) return {};
    char buffer[kMaxPathBytes] = {};
    lookup(category, item, buffer, sizeof(buffer));
    return std::string(UpToNul(std::string_view(buffer, sizeof(buffer))));
}

void FreeDirectoryService() {
    boundLookup = nullptr;
    service.Free();
}

}  // namespace depot
