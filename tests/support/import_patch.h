// A system function that this program or a library calls, replaced while a test runs: for failures
// that the real one cannot be made to show, and for a look at what is going on in a call.
#pragma once

#include <string>

#include "platform/compiler.h"
#include "platform/win32.h"
#include "support/module_imports.h"

namespace depot::test {

// Sends one module's calls of an imported function elsewhere while it lives: this program's, or
// those of a loaded library. Calls that other modules make are not concerned.
template <class Function>
class ImportPatch {
public:
    ImportPatch(const char* name, Function replacement, HMODULE module = GetModuleHandleA(nullptr))
        : slot_(FindSlot(module, name)) {
        if (slot_ == nullptr) return;
        genuine_ = *slot_;
        StoreImport(slot_, FunctionCast<FARPROC>(replacement));
    }
    ~ImportPatch() {
        if (slot_ != nullptr) StoreImport(slot_, genuine_);
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // Whether the module imports the function at all.
    bool IsInPlace() const { return slot_ != nullptr; }
    Function Genuine() const { return FunctionCast<Function>(genuine_); }

private:
    static FARPROC* FindSlot(HMODULE module, const std::string& name) {
        FARPROC* found = nullptr;
        VisitImports(module, [&](const char* imported, FARPROC* slot) {
            if (found == nullptr && name == imported) found = slot;
        });
        return found;
    }

    FARPROC* slot_;
    FARPROC genuine_ = nullptr;
};

}  // namespace depot::test
