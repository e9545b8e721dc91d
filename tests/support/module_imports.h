// The import table of a loaded module.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot::test {

// Calls `visit` with the name and the place of every function that the module imports by name.
template <class Visit>
void VisitImports(HMODULE module, const Visit& visit) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const DWORD imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
         library->Name != 0; ++library) {
        const auto* names =
            reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + library->OriginalFirstThunk);
        auto* entry = reinterpret_cast<FARPROC*>(base + library->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++entry) {
            if (IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal)) continue;
            const auto* const imported =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            visit(reinterpret_cast<const char*>(imported->Name), entry);
        }
    }
}

// Changes where the calls of one imported function go.
inline void StoreImport(FARPROC* entry, FARPROC target) {
    DWORD before = 0;
    VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &before);
    *entry = target;
    VirtualProtect(entry, sizeof(*entry), before, &before);
}

}  // namespace depot::test
