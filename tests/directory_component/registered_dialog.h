// The real dialogs beside the component.
#pragma once

#include <gtest/gtest.h>

#include "platform/compiler.h"
#include "platform/handles.h"
#include "support/results.h"

namespace depot::test {

// The dialog's library, registered as long as the object lives.
class RegisteredDialog {
public:
    RegisteredDialog() : module_(LoadLibraryA("DepotBrowser.dll")) { Call("DllRegisterServer"); }
    ~RegisteredDialog() { Call("DllUnregisterServer"); }
    RegisteredDialog(const RegisteredDialog&) = delete;
    RegisteredDialog& operator=(const RegisteredDialog&) = delete;

private:
    void Call(const char* name) const {
        const auto call = FunctionCast<HRESULT(WINAPI*)()>(GetProcAddress(module_.get(), name));
        ASSERT_NE(nullptr, call);
        EXPECT_THAT(call(), IsOk());
    }
    UniqueModule module_;
};

}  // namespace depot::test
