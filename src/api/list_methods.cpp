// The methods that return lists: of what a folder holds, of what was chosen, and of the depots.
#include "api/depot_infos.h"
#include "api/depot_intr_api.h"
#include "api/place_method.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

constexpr char kEveryFile[] = ".*";

struct FindCall {
    std::string folder;
    std::string extensions;
    FIND_WHAT what;
};

// Takes a pattern off the path's end where no extensions are given: "<Work>\*.kra".
ListingWish WishOf(std::string& folder, const FindCall& call) {
    const FIND_WHAT what = call.what;
    ListingWish wish = {ToLower(call.extensions), what != FIND_FOLDERS, what != FIND_FILES};
    if (!wish.extensions.empty()) return wish;
    wish.extensions = kEveryFile;
    const std::string name = NamePart(folder);
    // A wildcard is no part of any name.
    if (name.find('*') == std::string::npos) return wish;
    wish.extensions = ToLower(ExtensionPart(name));
    folder = FolderPrefix(folder);
    return wish;
}

Result FindIn(DepotSession& session, const FindCall& call, std::vector<std::string>& paths) {
    std::string folder = call.folder;
    if (call.what < FIND_FILES || call.what > FIND_BOTH) {
        return SystemError(ERROR_INVALID_PARAMETER, folder);
    }
    const ListingWish wish = WishOf(folder, call);
    AnyPlace place;
    Result found = FindPlace(session.Depots(), folder, place);
    return found ? ListAt(place, wish, paths) : found;
}

// Runs a body that returns why it has no list of names. The output is empty then.
template <class Body>
HRESULT RunForNames(WantedSession wanted, VARIANT* output, const Body& body,
                    const char* method = DEPOT_CALLER_NAME) noexcept {
    if (output == nullptr) return RefuseMethod(method);
    VariantInit(output);
    return RunOnSession(
        wanted.handle, wanted.withoutHandle,
        [&](DepotSession& session) -> Result {
            std::vector<std::string> names;
            Result done = body(session, names);
            if (done && FAILED(GiveNames(names, output))) {
                return SystemError(ERROR_NOT_ENOUGH_MEMORY, {});
            }
            return done;
        },
        method);
}

}  // namespace

STDMETHODIMP CDepotIntrApi::Find(LONG_PTR lDPIntr, BSTR bstrFolder, BSTR bstrExtensions,
                                 FIND_WHAT what, VARIANT* pPaths) noexcept {
    return RunForNames(
        {lDPIntr}, pPaths, [&](DepotSession& session, std::vector<std::string>& paths) {
            return FindIn(session, {NameText(&bstrFolder), NameText(&bstrExtensions), what}, paths);
        });
}

STDMETHODIMP CDepotIntrApi::ChosenFiles(LONG_PTR lDPIntr, VARIANT* pPaths) noexcept {
    return RunForNames({lDPIntr, WithoutHandle::kFail}, pPaths,
                       [&](const DepotSession& session, std::vector<std::string>& paths) {
                           paths = session.chosenFiles;
                           return Result();
                       });
}

STDMETHODIMP CDepotIntrApi::Depots(LONG_PTR lDPIntr, IDepotInfos** ppDepots) noexcept {
    if (ppDepots == nullptr) return RefuseMethod();
    *ppDepots = nullptr;
    return RunOnSession(lDPIntr, WithoutHandle::kMakeTemporary, [&](DepotSession& session) {
        *ppDepots = NewDepotInfos(session.Depots(), lDPIntr).release();
        return *ppDepots != nullptr;
    });
}

}  // namespace depot
