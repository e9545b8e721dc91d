// The methods that list the files of a folder.
#include <optional>

#include "api/depot_intr_api.h"
#include "api/method.h"
#include "config/file_types.h"
#include "fileops/enumerate.h"
#include "manager/display_path.h"

namespace depot {
namespace {

// Returns the type of the application's own profiles, or nothing for an unknown application.
std::optional<FileType> FileTypeOf(APP_TYPE application) {
    switch (application) {
        case APP_SKEIN:
            return kSkeinProfile;
        case APP_KICKOFF:
            return kKickoffProfile;
        default:
            return std::nullopt;
    }
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPFindInit(LONG_PTR* plDPIntr, BSTR* bstrFilePath, BSTR* bstrFileExt,
                                       APP_TYPE appType, LONG* nCount) noexcept {
    if (plDPIntr == nullptr) return RefuseMethod();
    *plDPIntr = 0;
    if (nCount == nullptr) return RefuseMethod();
    return RunMethod([&] {
        const std::optional<FileType> wanted = FileTypeOf(appType);
        if (!wanted) return false;
        NewSession made(*plDPIntr);
        const SessionForCall session(made.Handle(), WithoutHandle::kFail);
        if (!session) return false;
        const std::string path = NameText(bstrFilePath);
        const CDepotItem folder(path, FindDepotHolding(session->Depots(), path));
        session->findResults = std::make_unique<CDepotItems>();
        Enumerate(*session->findResults, &folder, NameText(bstrFileExt), {}, false);
        KeepFileType(*session->findResults, *wanted);
        *nCount = static_cast<LONG>(session->findResults->Count());
        made.Keep();
        return true;
    });
}

STDMETHODIMP CDepotIntrApi::DPFindNext(LONG_PTR lDPIntr, LONG lCount, BSTR* bstrFileName) noexcept {
    return RunForText({lDPIntr, WithoutHandle::kFail}, bstrFileName,
                      [&](const DepotSession& session) -> std::optional<std::string> {
                          const CDepotItems* const found = session.findResults.get();
                          if (found == nullptr || lCount < 0) return std::nullopt;
                          const auto index = static_cast<std::size_t>(lCount);
                          if (index >= found->Count()) return std::nullopt;
                          return found->At(index)->path;
                      });
}

}  // namespace depot
