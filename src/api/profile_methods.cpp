// The methods that open, read, write and flush the current file.
#include <optional>
#include <utility>

#include "api/depot_intr_api.h"
#include "api/method.h"

namespace depot {
namespace {

// Runs the body on the session's current file; without one the method fails.
template <class Body>
HRESULT RunOnCurrentFile(LONG_PTR handle, const Body& body,
                         const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunOnSession(
        handle, WithoutHandle::kFail,
        [&](DepotSession& session) { return session.currentFile && body(session); }, method);
}

// Why a file that was just loaded does not show what it holds, or else that a change of the file
// before could not be stored: the methods succeed all the same, because clients rely on that, and
// leave the reason to the second interface.
CallFailure LoadFailure(const DepotSession& session, const Result& released) {
    CallFailure failure = FailureOf(session.currentFile->FetchFailure());
    if (failure.code == 0) failure = FailureOf(released);
    failure.isNotice = true;
    return failure;
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPLoadFile(LONG_PTR* plDPIntr, BSTR* bstrFileToLoad) noexcept {
    if (plDPIntr == nullptr) return RefuseMethod();
    const LONG_PTR given = *plDPIntr;
    *plDPIntr = 0;
    return RunMethod([&]() -> CallFailure {
        SessionTable& sessions = SessionTable::Instance();
        std::optional<NewSession> made;
        if (sessions.IsZero(given)) {
            made.emplace(*plDPIntr);
        } else {
            *plDPIntr = sessions.Widen(given);
        }
        SessionForCall session(*plDPIntr, WithoutHandle::kFail);
        if (!session) return {session.Refusal()};
        CallFailure failure;
        if (const auto path = ExactName(bstrFileToLoad)) {
            Result released;
            session->LoadFile(*path, &released);
            failure = LoadFailure(*session, released);
        } else {
            // Kept: any name is a success.
            // Relied on by: clients that load first and look for values then. Without a current
            // file these fail; the one before must not be taken for it.
            session->ReleaseFile();
        }
        if (made) made->Keep();
        return session.End(std::move(failure));
    });
}

STDMETHODIMP CDepotIntrApi::DPGetProfileString(LONG_PTR lDPIntr, BSTR* bstrSectName,
                                               BSTR* bstrKeyName, BSTR* bstrDefVal,
                                               BSTR* bstrKeyVal, ULONG nSize) noexcept {
    if (bstrKeyVal == nullptr) return RefuseMethod();
    *bstrKeyVal = nullptr;
    return RunOnCurrentFile(lDPIntr, [&](const DepotSession& session) {
        *bstrKeyVal = NewBstr(session.currentFile->ReadString(NarrowText(bstrSectName),
                                                              NarrowText(bstrKeyName),
                                                              NarrowText(bstrDefVal), nSize))
                          .release();
        return *bstrKeyVal != nullptr;
    });
}

STDMETHODIMP CDepotIntrApi::DPGetProfileInt(LONG_PTR lDPIntr, BSTR* bstrSectName, BSTR* bstrKeyName,
                                            ULONG nDefVal, ULONG* pnKeyVal) noexcept {
    if (pnKeyVal == nullptr) return RefuseMethod();
    // Kept: without a session the output stays as it was.
    // Relied on by: callers that set it to their own default before the call.
    return RunOnCurrentFile(lDPIntr, [&](const DepotSession& session) {
        *pnKeyVal = session.currentFile->ReadInt(NarrowText(bstrSectName), NarrowText(bstrKeyName),
                                                 nDefVal);
        return true;
    });
}

STDMETHODIMP CDepotIntrApi::DPSetProfileString(LONG_PTR lDPIntr, BSTR* bstrSectName,
                                               BSTR* bstrKeyName, BSTR* bstValue) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](const DepotSession& session) {
        if (!session.currentFile) return CallFailure{kUnexplained};
        const DWORD error = session.currentFile->WriteString(
            NarrowText(bstrSectName), NarrowText(bstrKeyName), NarrowText(bstValue));
        CallFailure failure = {error};
        // Without a working copy, what kept it from being made is what keeps the edit from it.
        if (error == ERROR_BAD_PATHNAME && session.currentFile->FetchCode() != 0) {
            failure = FailureOf(session.currentFile->FetchFailure());
        }
        // A success all the same; who wants to know asks the second interface.
        failure.isNotice = true;
        return failure;
    });
}

STDMETHODIMP CDepotIntrApi::DPFlushFile(LONG_PTR lDPIntr) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [](DepotSession& session) -> CallFailure {
        if (!session.currentFile) return {kUnexplained};
        if (!session.currentFile->NeedsWorkingCopy()) return {};
        Result released;
        session.ReloadFile(&released);
        return LoadFailure(session, released);
    });
}

}  // namespace depot
