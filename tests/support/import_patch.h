// A system function that this program calls, replaced while a test runs: for failures that the real
// one cannot be made to show.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot::test {

// Sends this program's calls of an imported function elsewhere while it lives. Calls that a library
// makes are not concerned.
template <class Function>
class ImportPatch {
public:
    ImportPatch(const char* name, Function replacement) : slot_(FindSlot(name)) {
        if (slot_ == nullptr) return;
        genuine_ = *slot_;
        Store(reinterpret_cast<ULONG_PTR>(replacement));
    }
    ~ImportPatch() {
        if (slot_ != nullptr) Store(genuine_);
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // Whether the program imports the function at all.
    bool IsInPlace() const { return slot_ != nullptr; }
    Function Genuine() const { return reinterpret_cast<Function>(genuine_); }

private:
    static ULONG_PTR* FindSlot(const std::string& name) {
        auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleA(nullptr));
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto* const headers =
            reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
        const IMAGE_DATA_DIRECTORY& directory =
            headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (const auto* library =
                 reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
             library->Name != 0; ++library) {
            const auto* names =
                reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + library->OriginalFirstThunk);
            auto* slots = reinterpret_cast<ULONG_PTR*>(base + library->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++slots) {
                if (IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal)) continue;
                const auto* const imported =
                    reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
                if (name == reinterpret_cast<const char*>(imported->Name)) return slots;
            }
        }
        return nullptr;
    }

    void Store(ULONG_PTR target) {
        DWORD before = 0;
        VirtualProtect(slot_, sizeof(*slot_), PAGE_READWRITE, &before);
        *slot_ = target;
        VirtualProtect(slot_, sizeof(*slot_), before, &before);
    }

    ULONG_PTR* slot_;
    ULONG_PTR genuine_ = 0;
};

}  // namespace depot::test
