// What every interface method does around its own work.
#pragma once

#include <optional>
#include <string>

#include "api/automation_text.h"
#include "api/session_table.h"
#include "platform/module_state.h"

namespace depot {

using WithoutHandle = SessionForCall::WithoutHandle;

inline HRESULT ToResult(bool succeeded) {
    return succeeded ? S_OK : S_FALSE;
}

// Runs the body of a method in the DLL's own module state and lets no exception out. The body
// returns whether the method succeeded.
template <class Body>
HRESULT RunMethod(const Body& body) noexcept {
    try {
        const ModuleStateScope scope;
        return ToResult(body());
    } catch (...) {
        return S_FALSE;
    }
}

// Runs the body on the session that the handle names, or on a temporary one for handle 0 where that
// is allowed. Without a session the method fails.
template <class Body>
HRESULT RunOnSession(LONG_PTR handle, WithoutHandle withoutHandle, const Body& body) noexcept {
    return RunMethod([&] {
        const SessionForCall session(handle, withoutHandle);
        return session && body(*session.operator->());
    });
}

// Runs a body that makes a text. The output is null unless the body returns one.
template <class Body>
HRESULT RunForText(LONG_PTR handle, WithoutHandle withoutHandle, BSTR* output,
                   const Body& body) noexcept {
    if (output == nullptr) return S_FALSE;
    *output = nullptr;
    return RunOnSession(handle, withoutHandle, [&](DepotSession& session) {
        const std::optional<std::string> text = body(session);
        if (text) *output = NewBstr(*text).release();
        return *output != nullptr;
    });
}

}  // namespace depot
