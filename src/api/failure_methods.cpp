// The methods by which a client asks why a call failed, and wants no boxes.
#include "api/depot_intr_api.h"
#include "api/method.h"

namespace depot {
namespace {

// What the last call on the session came to, or the thread's last call for handle 0. A handle that
// names no session is a failure of its own.
CallFailure LastFailureOf(LONG_PTR handle) {
    SessionTable& sessions = SessionTable::Instance();
    if (sessions.IsZero(handle)) return FailureOfThread();
    const LONG_PTR live = sessions.Widen(handle);
    // To ask is no call on the session, whose failure stays.
    const DepotSession* const session = sessions.Enter(live);
    if (session == nullptr)
        return {static_cast<std::uint32_t>(live == 0 ? ERROR_INVALID_HANDLE : ERROR_BUSY)};
    CallFailure failure = session->lastFailure;
    sessions.Leave(live);
    return failure;
}

// Runs a body that asks for a failure, and does not replace it.
template <class Body>
HRESULT RunForFailure(const Body& body, const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunBody(MethodBody(body), method, Remembrance::kNone);
}

}  // namespace

STDMETHODIMP CDepotIntrApi::LastErrorCode(LONG_PTR lDPIntr, LONG* plCode) noexcept {
    if (plCode == nullptr) return RefuseMethod();
    *plCode = 0;
    return RunForFailure([&] {
        *plCode = static_cast<LONG>(LastFailureOf(lDPIntr).code);
        return true;
    });
}

STDMETHODIMP CDepotIntrApi::LastErrorText(LONG_PTR lDPIntr, BSTR* pbstrText) noexcept {
    if (pbstrText == nullptr) return RefuseMethod();
    *pbstrText = nullptr;
    return RunForFailure([&] {
        *pbstrText = NewNameBstr(TextOf(LastFailureOf(lDPIntr))).release();
        return *pbstrText != nullptr;
    });
}

STDMETHODIMP CDepotIntrApi::Quiet(LONG_PTR lDPIntr, VARIANT_BOOL bQuiet,
                                  VARIANT_BOOL* pbBefore) noexcept {
    if (pbBefore == nullptr) return RefuseMethod();
    *pbBefore = VARIANT_FALSE;
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) {
        *pbBefore = session.isQuiet ? VARIANT_TRUE : VARIANT_FALSE;
        session.isQuiet = bQuiet != VARIANT_FALSE;
        return true;
    });
}

}  // namespace depot
