#include "model/depots.h"

#include <algorithm>

#include "macros/replacer_cache.h"
#include "model/localization.h"
#include "platform/paths.h"

namespace depot {
namespace {

constexpr char kBuiltInDepotName[] = "My Depot";

// A key that keeps failing instead of reporting its end must not hold the caller for ever.
constexpr int kMaxConsecutiveErrors = 1000;

bool HasOrderIndex(const CDepot* depot) {
    return depot->orderIndex != CDepot::kNoOrderIndex;
}

bool OrderedBefore(const CDepot* left, const CDepot* right) {
    if (HasOrderIndex(left) != HasOrderIndex(right)) return HasOrderIndex(left);
    return HasOrderIndex(left) && left->orderIndex < right->orderIndex;
}

bool EndsEnumeration(LSTATUS status) {
    // A key that is deleted meanwhile never reports its end.
    return status == ERROR_NO_MORE_ITEMS || status == ERROR_KEY_DELETED ||
           status == ERROR_INVALID_HANDLE;
}

}  // namespace

// Delegates, so that the destructor runs for depots that were read before memory was exhausted.
CDepots::CDepots(const std::string& path, const std::string& userDir) : CDepots() {
    userDirOverride = userDir;
    if (path.empty()) return;
    ownsItems = true;
    Load(path);
}

CDepots::~CDepots() {
    filteredView.reset();
    if (!ownsReplacerCache) static_cast<void>(replacerCache.release());  // stays its lender's
    RemoveAllElements(array_, ownsItems);
}

void CDepots::Add(CDepot* depot, bool clone) {
    AddElement(array_, depot, clone);
}

void CDepots::Copy(const CDepots* other) {
    if (other != nullptr) CopyElements(array_, other->array_);
}

void CDepots::RemoveAll(bool deleteElements) {
    defaultDepot = nullptr;
    if (filteredView) filteredView->RemoveAll(false);
    RemoveAllElements(array_, deleteElements);
}

void CDepots::Remove(CDepot* depot) {
    if (depot == defaultDepot) defaultDepot = nullptr;
    if (filteredView) filteredView->array_.Remove(depot);
    RemoveElement(array_, depot);
}

void CDepots::Load(const std::string& path) {
    keyPath = path;
    CDepots::RemoveAll(true);
    EnumerateDepotKeys(HKEY_CURRENT_USER, keyPath, 0);
    if (EnumerateDepotKeys(HKEY_LOCAL_MACHINE, keyPath, 0) == 0) {
        EnumerateDepotKeys(HKEY_LOCAL_MACHINE, keyPath, KEY_WOW64_64KEY);
    }
    SortByOrderIndex();
    hasConfiguredDepots = Count() > 0;
    if (!hasConfiguredDepots) AddBuiltInDepot();
    defaultDepot = ChooseDefault();
}

int CDepots::EnumerateDepotKeys(HKEY rootKey, const std::string& path, REGSAM extraAccess) {
    if (path.empty()) return 0;
    const std::optional<RegistryKey> key = RegistryKey::Open(rootKey, path, KEY_READ | extraAccess);
    if (!key) return 0;
    AddDepotsBelow(*key, rootKey, extraAccess);
    return 1;
}

void CDepots::AddDepotsBelow(const RegistryKey& key, HKEY rootKey, REGSAM viewFlags) {
    const std::string language = LanguageCode();
    int errorsInARow = 0;
    for (DWORD index = 0; errorsInARow < kMaxConsecutiveErrors; ++index) {
        const SubkeyName subkey = key.SubkeyAt(index);
        if (EndsEnumeration(subkey.status)) return;
        if (subkey.status != ERROR_SUCCESS) {
            ++errorsInARow;
            continue;
        }
        errorsInARow = 0;
        AddDepot(key, subkey.name, language, {rootKey, viewFlags});
    }
}

// A depot that memory runs out for is left out.
void CDepots::AddDepot(const RegistryKey& key, const std::string& subkeyName,
                       const std::string& language, const RootOfDepot& root) try {
    auto depot = std::make_unique<CDepot>(this);
    depot->rootKey = root.key;
    depot->registryViewFlags = root.viewFlags;
    if (depot->ReadDefinition(key, subkeyName, language)) AddOwned(array_, std::move(depot));
} catch (const std::bad_alloc&) {
}

CDepot* CDepots::LowestOrderDepot() const {
    CDepot** const lowest = std::min_element(begin(), end(), OrderedBefore);
    return lowest == end() || !HasOrderIndex(*lowest) ? nullptr : *lowest;
}

void CDepots::SortByOrderIndex() {
    std::stable_sort(begin(), end(), OrderedBefore);
}

void CDepots::AddBuiltInDepot() {
    auto depot = std::make_unique<CDepot>(this);
    depot->displayName = kBuiltInDepotName;
    auto location = std::make_unique<CDepotPath>(depot->paths.get());
    location->path = ParentFolder(GetUserDir(false));
    depot->paths->Append(std::move(location));
    AddOwned(array_, std::move(depot));
}

CDepot* CDepots::ChooseDefault() const {
    CDepot** const chosen =
        std::find_if(begin(), end(), [](const CDepot* depot) { return depot->isDefault; });
    if (chosen != end()) return *chosen;
    return Count() > 0 ? At(0) : nullptr;
}

MacroCacheHolder* CDepots::GetReplacers() {
    const ReplacerLock lock;
    return &OpenReplacers();
}

MacroValues CDepots::CopyReplacers() {
    const ReplacerLock lock;
    return OpenReplacers().Copy();
}

void CDepots::ShareUserFolder(const std::string& userDir) {
    const ReplacerLock lock;
    OpenReplacers().Change([&](MacroValues& values) { FillSlot(values.userFolder, userDir); });
}

// REQUIRES: the caller holds a ReplacerLock.
MacroCacheHolder& CDepots::OpenReplacers() {
    if (!replacerCache) {
        replacerCache = OpenReplacerCache(GetUserDir(false), LanguageCode());
        ownsReplacerCache = true;
    }
    return *replacerCache;
}

bool CDepots::LeaveConnections() {
    return std::count_if(begin(), end(), [](CDepot* depot) { return depot->LeaveConnections(); }) >
           0;
}

std::string CDepots::GetUserDir(bool useCache) {
    if (!userDirOverride.empty() || !useCache) return userDirOverride;
    return SlotText(CopyReplacers().userFolder);
}

}  // namespace depot
