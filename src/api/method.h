// What every interface method does around its own work.
#pragma once

#include <optional>
#include <string>

#include "api/automation_text.h"
#include "api/call_count.h"
#include "api/call_failure.h"
#include "api/session_table.h"
#include "platform/compiler.h"
#include "platform/module_state.h"
#include "platform/trace.h"

namespace depot {

using WithoutHandle = SessionForCall::WithoutHandle;

// A body of a method as its runner calls it, which is compiled once for all of them. The body
// outlives the runner; it returns whether the method succeeded, or why it did not.
class MethodBody {
public:
    template <class Body>
    explicit MethodBody(const Body& body)
        : body_(&body), run_([](const void* given, DepotSession* session) -> CallFailure {
              const Body& called = *static_cast<const Body*>(given);
              if constexpr (std::is_invocable_v<const Body&, DepotSession&>) {
                  return FailureOf(called(*session));
              } else {
                  return FailureOf(called());
              }
          }) {}

    // The failure also of a body that throws.
    CallFailure Run(DepotSession* session = nullptr) const noexcept;

private:
    const void* body_;
    CallFailure (*run_)(const void* body, DepotSession* session);
};

// Whether a call is remembered as the thread's last one.
enum class Remembrance : std::uint8_t { kKept, kNone };

HRESULT RunBody(const MethodBody& body, const char* method,
                Remembrance remembrance = Remembrance::kKept) noexcept;
HRESULT RunBodyOnSession(LONG_PTR handle, WithoutHandle withoutHandle, const MethodBody& body,
                         const char* method) noexcept;

// Runs the body of a method in the DLL's own module state and lets no exception out. The body
// returns whether the method succeeded, or why it failed; a name that is refused makes it fail. The
// trace names the method that calls, here and below.
template <class Body>
HRESULT RunMethod(const Body& body, const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunBody(MethodBody(body), method);
}

// Refuses a call that lacks what it needs.
HRESULT RefuseMethod(const char* method = DEPOT_CALLER_NAME) noexcept;

// Runs the body on the session that the handle names, or on a temporary one for handle 0 where that
// is allowed. Without a session the method fails.
template <class Body>
HRESULT RunOnSession(LONG_PTR handle, WithoutHandle withoutHandle, const Body& body,
                     const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunBodyOnSession(handle, withoutHandle, MethodBody(body), method);
}

// The session on which a method works.
struct WantedSession {
    LONG_PTR handle;
    WithoutHandle withoutHandle = WithoutHandle::kMakeTemporary;
};

// Runs a body that makes a path or another name. The output is null unless the body returns one.
template <class Body>
HRESULT RunForText(WantedSession wanted, BSTR* output, const Body& body,
                   const char* method = DEPOT_CALLER_NAME) noexcept {
    if (output == nullptr) return RefuseMethod(method);
    *output = nullptr;
    return RunOnSession(
        wanted.handle, wanted.withoutHandle,
        [&](DepotSession& session) {
            const std::optional<std::string> text = body(session);
            if (text) *output = NewNameBstr(*text).release();
            return *output != nullptr;
        },
        method);
}

}  // namespace depot
