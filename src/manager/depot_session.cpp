#include "manager/depot_session.h"

#include <optional>

#include "manager/depot_list.h"
#include "platform/system_version.h"

namespace depot {
namespace {

// From this version on, Windows itself names copies "name - Copy".
constexpr DWORD kFirstVersionWithNewCopyNames = 6;

}  // namespace

DepotSession::DepotSession() {
    if (!folders_.UserFolder().empty()) ShareUserFolder();
    systemMajorVersion_ = SystemVersion().dwMajorVersion;
    newCopyNames_ = systemMajorVersion_ >= kFirstVersionWithNewCopyNames;
}

DepotSession::~DepotSession() {
    try {
        ReleaseFile();
    } catch (...) {
        // Without memory for the write-back the rest of the session still has to be deleted.
        currentFile.reset();
    }
    findResults.reset();
}

CDepots& DepotSession::Depots() {
    if (!depots_) depots_ = std::make_unique<CDepots>(kDepotsKey, folders_.UserFolder());
    return *depots_;
}

void DepotSession::ShareUserFolder() {
    Depots().ShareUserFolder(folders_.UserFolder());
}

void DepotSession::LoadFile(const std::string& path, Result* released) {
    ReleaseFile(released);
    currentFile = std::make_unique<DepotFileContext>(path, Depots());
}

void DepotSession::ReloadFile(Result* released) {
    const std::string path = currentFile->depotPath;
    const std::optional<std::vector<std::uint8_t>> bytes = currentFile->EntryBytes();
    LoadFile(path, released);
    if (released->IsDone() && bytes) currentFile->ContinueWith(*bytes);
}

void DepotSession::ReleaseFile(Result* released) {
    if (!currentFile) return;
    const bool isStored = currentFile->Release() || !currentFile->changed;
    if (!isStored && released != nullptr) *released = currentFile->StoreFailure();
    currentFile.reset();
}

bool DepotSession::Leave() noexcept {
    if (currentFile) currentFile->KeepLocally();
    currentFile.reset();
    return depots_ && depots_->LeaveConnections();
}

}  // namespace depot
