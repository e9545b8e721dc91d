// What every interface method does around its own work.
#pragma once

#include <optional>
#include <string>

#include "api/automation_text.h"
#include "api/call_count.h"
#include "api/session_table.h"
#include "directory/call_connections.h"
#include "platform/compiler.h"
#include "platform/module_state.h"
#include "platform/trace.h"

namespace depot {

using WithoutHandle = SessionForCall::WithoutHandle;

inline HRESULT ToResult(bool succeeded) {
    return succeeded ? S_OK : S_FALSE;
}

// Runs the body of a method in the DLL's own module state and lets no exception out. The body
// returns whether the method succeeded; a name that is refused makes it fail. The trace names the
// method that calls, here and below.
template <class Body>
HRESULT RunMethod(const Body& body, const char* method = DEPOT_CALLER_NAME) noexcept {
    const CallScope call;
    const TraceSpan span(method);
    HRESULT result = S_FALSE;
    try {
        const ModuleStateScope scope;
        const CallConnections connections;
        result = ToResult(body());
    } catch (...) {
        result = S_FALSE;
    }
    span.EndWithResult(result);
    return result;
}

// Refuses a call that lacks what it needs.
inline HRESULT RefuseMethod(const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunMethod([] { return false; }, method);
}

// Runs the body on the session that the handle names, or on a temporary one for handle 0 where that
// is allowed. Without a session the method fails.
template <class Body>
HRESULT RunOnSession(LONG_PTR handle, WithoutHandle withoutHandle, const Body& body,
                     const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunMethod(
        [&] {
            const SessionForCall session(handle, withoutHandle);
            return session && body(*session.operator->());
        },
        method);
}

// Runs a body that makes a path or another name. The output is null unless the body returns one.
template <class Body>
HRESULT RunForText(LONG_PTR handle, WithoutHandle withoutHandle, BSTR* output, const Body& body,
                   const char* method = DEPOT_CALLER_NAME) noexcept {
    if (output == nullptr) return RefuseMethod(method);
    *output = nullptr;
    return RunOnSession(
        handle, withoutHandle,
        [&](DepotSession& session) {
            const std::optional<std::string> text = body(session);
            if (text) *output = NewNameBstr(*text).release();
            return *output != nullptr;
        },
        method);
}

}  // namespace depot
