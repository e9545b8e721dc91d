// The methods that change files.
#include "api/depot_intr_api.h"
#include "api/method.h"
#include "config/profile_file.h"
#include "fileops/depot_file.h"
#include "fileops/numbered_copy.h"
#include "fileops/publish.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "platform/full_path.h"
#include "platform/handles.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/same_file.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// Opens the destination of a copy; null when it cannot be opened or must not exist and does. What
// an existing one holds stays until there is something to take its place.
UniqueHandle OpenDestination(const std::string& path, bool failIfExists) {
    return OwnFile(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                               failIfExists ? CREATE_NEW : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                               nullptr));
}

// The local file that a copy of `source` reads; empty when it is not known without fetching it.
std::string SourceFile(DepotSession& session, const std::string& source) {
    if (source.empty()) return session.currentFile->localPath;
    // Were it filed under a default depot in a directory, its own place would be forgotten.
    if (IsFileSystemPath(source)) return source;
    CDepotItem item;
    ResolveItem(session.Depots(), source, item);
    if (item.depot == nullptr) return {};
    const StorePath place = PlaceOf(item);
    return place.store->LocalPath(place.path).value_or("");
}

bool NamesSameFile(const std::string& left, const std::string& right) {
    return !left.empty() &&
           (EqualsNoCase(FullPath(left), FullPath(right)) || IsSameFile(left, right));
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPRenameFile(LONG_PTR lDPIntr, BSTR* bstrOldFileName,
                                         BSTR* bstrNewFileName) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) -> Result {
        const std::string oldName = NameText(bstrOldFileName);
        CDepot* const depot = FindDepotHolding(session.Depots(), oldName);
        if (depot == nullptr) return SystemError(ERROR_PATH_NOT_FOUND, oldName);
        return MoveDepotFile({*depot, oldName, NameText(bstrNewFileName), nullptr, nullptr, {}});
    });
}

STDMETHODIMP CDepotIntrApi::DPDeleteFile(LONG_PTR lDPIntr, BSTR* bstrFileName) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) -> Result {
        const std::string fileName = NameText(bstrFileName);
        CDepot* const depot = FindDepotHolding(session.Depots(), fileName);
        if (depot == nullptr) return SystemError(ERROR_PATH_NOT_FOUND, fileName);
        return DeleteDepotFile(*depot, fileName);
    });
}

STDMETHODIMP CDepotIntrApi::DPCopyFileToLocalFS(LONG_PTR lDPIntr, BSTR* bstrSrcFileName,
                                                BSTR* bstrDstFileName,
                                                VARIANT_BOOL vbFailIfExists) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) {
        const std::string source = NameText(bstrSrcFileName);
        // Without a source there must be a current file; nothing is created for nothing.
        if (source.empty() && !session.currentFile) return false;
        const std::string path = NameText(bstrDstFileName);
        // A file copied onto itself would be emptied before it is read.
        const bool failIfExists = vbFailIfExists == VARIANT_TRUE;
        if (!failIfExists && PathMayExist(path) &&
            NamesSameFile(SourceFile(session, source), path)) {
            return false;
        }
        const UniqueHandle destination = OpenDestination(path, failIfExists);
        if (!destination) return false;
        if (!source.empty()) session.LoadFile(source);
        const std::string text = ReadWholeFile(session.currentFile->localPath);
        return WriteOverOpenFile(destination.get(), text.data(), text.size());
    });
}

STDMETHODIMP CDepotIntrApi::DPMakeCopyFromSrcFile(LONG_PTR lDPIntr, BSTR* bstrSrcFile,
                                                  BSTR* bstrDstFile) noexcept {
    if (bstrDstFile == nullptr) return RefuseMethod();
    // Kept: without a session the output stays as it was, and a failed copy gives an empty text.
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [&](DepotSession& session) {
        // Memory may run out later.
        *bstrDstFile = NewNameBstr({}).release();
        const auto source = ExactName(bstrSrcFile);
        const auto copy = source ? MakeNumberedCopy(session, *source) : std::nullopt;
        UniqueBstr name = copy ? NewNameBstr(*copy) : nullptr;
        if (!name) return false;
        SysFreeString(*bstrDstFile);
        *bstrDstFile = name.release();
        return true;
    });
}

STDMETHODIMP CDepotIntrApi::DPPublishSkesDepFiles(LONG_PTR lDPIntr) noexcept {
    return RunOnSession(lDPIntr, WithoutHandle::kFail, [](DepotSession& session) {
        PublishDependentFiles(session);
        return true;
    });
}

}  // namespace depot
