// The methods that ask about files and folders anywhere, with a truth value as their answer.
#include "api/depot_intr_api.h"
#include "api/place_method.h"

namespace depot {

STDMETHODIMP CDepotIntrApi::Exists(LONG_PTR lDPIntr, BSTR bstrPath,
                                   VARIANT_BOOL* pbExists) noexcept {
    return RunForAnswer(lDPIntr, pbExists, [&](DepotSession& session, bool& exists) {
        AnyPlace place;
        ItemKind kind = ItemKind::kMissing;
        Result looked = FindPlace(session, bstrPath, place);
        if (looked) looked = LookAt(place, kind);
        exists = kind != ItemKind::kMissing;
        return looked;
    });
}

STDMETHODIMP CDepotIntrApi::IsWritable(LONG_PTR lDPIntr, BSTR bstrPath,
                                       VARIANT_BOOL* pbWritable) noexcept {
    return RunForDone(lDPIntr, pbWritable, [&](DepotSession& session) {
        AnyPlace place;
        Result tested = FindPlace(session, bstrPath, place);
        return tested ? TestWritableAt(place) : tested;
    });
}

}  // namespace depot
