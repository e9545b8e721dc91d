#include "platform/kept_library.h"

namespace depot {

UniqueModule LoadLibraryAlone(const std::string& path) {
    const QuietLoadScope quiet;
    return UniqueModule(LoadLibraryExA(
        path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
}

HMODULE KeptLibrary::Keep(UniqueModule library) {
    HMODULE first = nullptr;
    if (!library_.compare_exchange_strong(first, library.get())) return first;
    return library.release();
}

void KeptLibrary::Free() {
    UniqueModule(library_.exchange(nullptr)).reset();
}

}  // namespace depot
