#include "manager/writability.h"

#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/win32.h"
#include "store/directory_store.h"
#include "store/folder_store.h"

namespace depot {
namespace {

Result Failure(DWORD code, const std::string& shownName) {
    Error error = {Reason::kRefused, CodeKind::kSystem, code};
    FormatErrorText(code, shownName.c_str(), nullptr, &error.text, nullptr);
    return error;
}

Result TestPlace(Store& store, const std::string& path, const std::string& shownName) {
    const StoreScope open(store);
    if (!open) return open.Outcome();
    Result tested = store.TestWritable(path);
    if (tested || tested.Why().kind != CodeKind::kSystem || shownName == path) return tested;
    return Failure(tested.Why().code, shownName);
}

}  // namespace

int TestWritable(std::uint32_t storeType, const std::string& storagePath, CLDAPItems* connection,
                 std::string* errorText, const std::string& shownName) {
    const std::string& shown = shownName.empty() ? storagePath : shownName;
    if (storeType != kDirectoryLocation) {
        return TestPlace(FolderStore::Instance(), storagePath, shown).AsFlag(errorText);
    }
    if (connection == nullptr) return 0;
    DirectoryStore store(*connection);
    return TestPlace(store, storagePath, shown).AsFlag(errorText);
}

int TestPathWritable(CDepot& depot, const std::string& path, std::string* errorText) {
    const std::string storage = DisplayToStorage(depot, path);
    if (depot.paths->Count() == 0) return 0;
    return TestPlace(depot.ActiveStore(), storage, storage).AsFlag(errorText);
}

int TestDepotWritable(CDepot& depot, const std::string& shownName, std::string* errorText) {
    CDepotPath* const location = depot.paths->ActiveLocation();
    if (location == nullptr) return 0;
    const std::string path = ExpandedPath(*location);
    const std::string& shown = shownName.empty() ? path : shownName;
    if (location->indexSlot == CDepotPath::kWritabilityUnknown) {
        Store& store = depot.ActiveStore();
        location->indexSlot = TestPlace(store, store.PathOf(path), shown).AsFlag(errorText);
    } else if (location->indexSlot == 0) {
        Failure(ERROR_ACCESS_DENIED, shown).AsFlag(errorText);
    }
    return location->indexSlot == 1 ? 1 : 0;
}

}  // namespace depot
