#include "api/method.h"

#include "directory/call_connections.h"

namespace depot {

CallFailure MethodBody::Run(DepotSession* session) const noexcept try {
    return run_(body_, session);
} catch (...) {
    return FailureOfException();
}

HRESULT RunBody(const MethodBody& body, const char* method, Remembrance remembrance) noexcept {
    const CallScope call;
    const TraceSpan span(method);
    const bool isKept = remembrance == Remembrance::kKept;
    if (isKept) ForgetFailureOfThread();
    CallFailure failure = {kUnexplained};
    try {
        const ModuleStateScope scope;
        const CallConnections connections;
        failure = body.Run();
    } catch (...) {
        failure = FailureOfException();
    }
    const HRESULT result = failure.code == 0 || failure.isNotice ? S_OK : S_FALSE;
    if (isKept && failure.code != 0) NoteFailureOfThread(failure);
    span.EndWithResult(result);
    return result;
}

HRESULT RunBodyOnSession(LONG_PTR handle, WithoutHandle withoutHandle, const MethodBody& body,
                         const char* method) noexcept {
    return RunMethod(
        [&]() -> CallFailure {
            SessionForCall session(handle, withoutHandle);
            if (!session) return {session.Refusal()};
            return session.End(body.Run(&*session));
        },
        method);
}

HRESULT RefuseMethod(const char* method) noexcept {
    return RunMethod([]() -> CallFailure { return {ERROR_INVALID_PARAMETER}; }, method);
}

}  // namespace depot
