// The methods that copy, move and make files and folders anywhere.
#include "api/depot_intr_api.h"
#include "api/place_method.h"
#include "api/script_progress.h"
#include "fileops/any_transfer.h"
#include "platform/paths.h"
#include "store/folder_store.h"

namespace depot {
namespace {

struct TransferCall {
    BSTR from;
    BSTR to;
    VARIANT_BOOL mayExist;
    const VARIANT& progress;
};

using TransferWork = Result (*)(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish);

Result Transfer(DepotSession& session, const TransferCall& call, TransferWork work) {
    const ScriptProgress progress(call.progress);
    if (!progress.IsUsable()) return SystemError(ERROR_INVALID_PARAMETER, "Progress");
    AnyPlace from, to;
    Result found = FindPlace(session, call.from, from);
    if (!found) return found;
    const std::string target = NameText(&call.to);
    // A path that ends in a separator is a folder, which takes it under its own name.
    found = EndsInSeparator(target) ? PlaceInFolder(session.Depots(), from, target, to)
                                    : FindPlace(session.Depots(), target, to);
    if (!found) return found;
    return work(from, to, {call.mayExist == VARIANT_TRUE, progress.Watcher()});
}

}  // namespace

STDMETHODIMP CDepotIntrApi::Copy(LONG_PTR lDPIntr, BSTR bstrFrom, BSTR bstrTo,
                                 VARIANT_BOOL bMayExist, VARIANT progress,
                                 VARIANT_BOOL* pbDone) noexcept {
    return RunForDone(lDPIntr, pbDone, [&](DepotSession& session) {
        return Transfer(session, {bstrFrom, bstrTo, bMayExist, progress}, CopyAnywhere);
    });
}

STDMETHODIMP CDepotIntrApi::Move(LONG_PTR lDPIntr, BSTR bstrFrom, BSTR bstrTo,
                                 VARIANT_BOOL bMayExist, VARIANT progress,
                                 VARIANT_BOOL* pbDone) noexcept {
    return RunForDone(lDPIntr, pbDone, [&](DepotSession& session) {
        return Transfer(session, {bstrFrom, bstrTo, bMayExist, progress}, MoveAnywhere);
    });
}

STDMETHODIMP CDepotIntrApi::MakeFolder(LONG_PTR lDPIntr, BSTR bstrFolder, VARIANT_BOOL bMayExist,
                                       VARIANT_BOOL* pbDone) noexcept {
    return RunForDone(lDPIntr, pbDone, [&](DepotSession& session) {
        AnyPlace place;
        Result made = FindPlace(session, bstrFolder, place);
        return made ? MakeFolderAt(place, bMayExist == VARIANT_TRUE) : made;
    });
}

}  // namespace depot
