// What the methods share that work on files and folders anywhere.
#pragma once

#include "api/method.h"
#include "fileops/any_place.h"

namespace depot {

// Returns the place that a client names. A name that is refused throws RefusedName.
inline Result FindPlace(DepotSession& session, BSTR path, AnyPlace& place) {
    return FindPlace(session.Depots(), NameText(&path), place);
}

// Runs a body that answers with a truth value: it returns why there is none, and sets the value,
// which is false before. Handle 0 stands for a session of this call alone.
template <class Body>
HRESULT RunForAnswer(LONG_PTR handle, VARIANT_BOOL* answer, const Body& body,
                     const char* method = DEPOT_CALLER_NAME) noexcept {
    if (answer == nullptr) return RefuseMethod(method);
    *answer = VARIANT_FALSE;
    return RunOnSession(
        handle, WithoutHandle::kMakeTemporary,
        [&](DepotSession& session) -> Result {
            bool isTrue = false;
            Result done = body(session, isTrue);
            if (done && isTrue) *answer = VARIANT_TRUE;
            return done;
        },
        method);
}

// The same for a body that does something: true when it was done.
template <class Body>
HRESULT RunForDone(LONG_PTR handle, VARIANT_BOOL* isDone, const Body& body,
                   const char* method = DEPOT_CALLER_NAME) noexcept {
    return RunForAnswer(
        handle, isDone,
        [&](DepotSession& session, bool& isTrue) {
            isTrue = true;
            return body(session);
        },
        method);
}

}  // namespace depot
