// The methods that convert between the ways in which a file is named, and ask about paths.
#include <algorithm>

#include "api/depot_intr_api.h"
#include "api/method.h"
#include "fileops/depot_file.h"
#include "manager/depot_list.h"
#include "manager/display_path.h"
#include "manager/display_path_text.h"
#include "manager/writability.h"
#include "platform/text.h"

namespace depot {
namespace {

std::string RootDepotPath(CDepot& depot) {
    return BuildDisplayPath(depot, {}, PathForm::kDisplay, DepotName::kKey);
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPGetDepotDisplayPath(LONG_PTR lDPIntr, BSTR* bstrFileName,
                                                  BSTR* bstrDspName) noexcept {
    return RunForText({lDPIntr}, bstrDspName,
                      [&](DepotSession& session) -> std::optional<std::string> {
                          const std::string fileName = NameText(bstrFileName);
                          const CDepot* const depot = FindDepotHolding(session.Depots(), fileName);
                          if (depot == nullptr) return std::nullopt;
                          return FolderDisplayPath(depot->displayName, fileName);
                      });
}

STDMETHODIMP CDepotIntrApi::DPGetPathFromDisplayName(LONG_PTR lDPIntr, BSTR* bstrDspName,
                                                     BSTR* bstrDPPath) noexcept {
    return RunForText(
        {lDPIntr}, bstrDPPath, [&](DepotSession& session) -> std::optional<std::string> {
            const DisplayPathParts parts = SplitDisplayPath(NameText(bstrDspName));
            const CDepots& depots = session.Depots();
            const auto named = std::find_if(depots.begin(), depots.end(), [&](const CDepot* depot) {
                return EqualsNoCase(depot->displayName, parts.depotName);
            });
            if (named == depots.end()) return std::nullopt;
            return RootDepotPath(**named) + parts.relative;
        });
}

STDMETHODIMP CDepotIntrApi::DPGetDefaultDPPath(LONG_PTR lDPIntr, BSTR* bstrDPPath) noexcept {
    return RunForText({lDPIntr}, bstrDPPath,
                      [](DepotSession& session) -> std::optional<std::string> {
                          CDepots& depots = session.Depots();
                          // The built-in depot has no display path to return.
                          if (!depots.hasConfiguredDepots) return std::nullopt;
                          CDepot* const depot = GetDefaultDepot(depots, 0);
                          if (depot == nullptr) return std::nullopt;
                          return RootDepotPath(*depot);
                      });
}

STDMETHODIMP CDepotIntrApi::DPPathConvertDPtoFS(BSTR* bstrDPFilePath,
                                                BSTR* bstrFSFilePath) noexcept {
    return RunForText({0}, bstrFSFilePath,
                      [&](DepotSession& session) -> std::optional<std::string> {
                          const DepotFileContext file(NameText(bstrDPFilePath), session.Depots());
                          // A working copy is no place to keep a path to.
                          if (file.NeedsWorkingCopy() || file.localPath.empty())
                              return std::nullopt;
                          return file.localPath;
                      });
}

STDMETHODIMP CDepotIntrApi::DPFileExists(LONG_PTR lDPIntr, BSTR* bstrFileName) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kMakeTemporary, [&](DepotSession& session) {
        const std::string fileName = NameText(bstrFileName);
        CDepot* const depot = FindDepotHolding(session.Depots(), fileName);
        return depot != nullptr && FileExists(*depot, fileName) != 0;
    });
}

STDMETHODIMP CDepotIntrApi::DPIsPathWriteAble(LONG_PTR lDPIntr, BSTR* bstrFilePath) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) {
        const std::string path = NameText(bstrFilePath);
        CDepot* const depot = FindDepotHolding(session.Depots(), path);
        return depot != nullptr && TestPathWritable(*depot, path, nullptr) != 0;
    });
}

STDMETHODIMP CDepotIntrApi::DPSetSelItemPath(LONG_PTR lDPIntr, BSTR* bstrFilePath) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) {
        session.selectedItemPath = NameText(bstrFilePath);
        return true;
    });
}

}  // namespace depot
