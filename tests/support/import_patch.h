// A system function that this program calls, replaced while a test runs: for failures that the real
// one cannot be made to show.
#pragma once

#include <string>

#include "platform/compiler.h"
#include "platform/win32.h"
#include "support/module_imports.h"

namespace depot::test {

// Sends this program's calls of an imported function elsewhere while it lives. Calls that a library
// makes are not concerned.
template <class Function>
class ImportPatch {
public:
    ImportPatch(const char* name, Function replacement) : slot_(FindSlot(name)) {
        if (slot_ == nullptr) return;
        genuine_ = *slot_;
        StoreImport(slot_, FunctionCast<FARPROC>(replacement));
    }
    ~ImportPatch() {
        if (slot_ != nullptr) StoreImport(slot_, genuine_);
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // Whether the program imports the function at all.
    bool IsInPlace() const { return slot_ != nullptr; }
    Function Genuine() const { return FunctionCast<Function>(genuine_); }

private:
    static FARPROC* FindSlot(const std::string& name) {
        FARPROC* found = nullptr;
        VisitImports(GetModuleHandleA(nullptr), [&](const char* imported, FARPROC* slot) {
            if (found == nullptr && name == imported) found = slot;
        });
        return found;
    }

    FARPROC* slot_;
    FARPROC genuine_ = nullptr;
};

}  // namespace depot::test
