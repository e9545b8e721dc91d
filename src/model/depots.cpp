#include "model/depots.h"

#include <algorithm>

#include "macros/replacer_cache.h"
#include "model/localization.h"
#include "model/shared_definitions.h"
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
    if (other == nullptr) return;
    other->MakeAllOwn();
    CopyElements(array_, other->array_);
}

void CDepots::RemoveAll(bool deleteElements) {
    defaultDepot = nullptr;
    if (filteredView) filteredView->RemoveAll(false);
    RemoveAllElements(array_, deleteElements);
    definitions_.reset();
}

void CDepots::Remove(CDepot* depot) {
    MakeAllOwn();
    if (depot == defaultDepot) defaultDepot = nullptr;
    if (filteredView) filteredView->array_.Remove(depot);
    RemoveElement(array_, depot);
}

void CDepots::Load(const std::string& path) {
    keyPath = path;
    CDepots::RemoveAll(true);
    if (!TakeDefinitions(SharedDefinitions(keyPath))) ReadDefinitions();
    hasConfiguredDepots = Count() > 0;
    if (!hasConfiguredDepots) AddBuiltInDepot();
    defaultDepot = ChooseDefault();
}

void CDepots::ReadDefinitions() {
    SharedReading reading(keyPath);
    leftOut_ = false;
    directoryDefaults_.reset();
    EnumerateDepotKeys(HKEY_CURRENT_USER, keyPath, 0);
    if (EnumerateDepotKeys(HKEY_LOCAL_MACHINE, keyPath, 0) == 0) {
        EnumerateDepotKeys(HKEY_LOCAL_MACHINE, keyPath, KEY_WOW64_64KEY);
    }
    SortByOrderIndex();
    if (!leftOut_) reading.Share(*this);
}

// Returns whether there are definitions, and memory for a place for each.
bool CDepots::TakeDefinitions(std::shared_ptr<const DepotDefinitions> definitions) {
    if (!definitions) return false;
    CDepot* const unused = nullptr;
    for (std::size_t index = 0; index < definitions->depots.Count(); ++index) {
        if (array_.Add(unused)) continue;
        array_.Clear();
        return false;
    }
    definitions_ = std::move(definitions);
    return true;
}

CDepot* CDepots::MakeOwn(std::size_t index) const {
    std::unique_ptr<CDepot> depot = definitions_->depots.At(index)->Clone();
    if (!depot) throw std::bad_alloc();
    // What a list holds is never const.
    depot->owner = const_cast<CDepots*>(this);
    return array_.begin()[index] = depot.release();
}

void CDepots::MakeAllOwn() const {
    for (std::size_t index = 0; index < Count(); ++index) At(index);
}

const CDepot& CDepots::DefinitionAt(std::size_t index) const {
    const CDepot* const own = array_.At(index);
    return own != nullptr ? *own : *definitions_->depots.At(index);
}

const DirectoryDefaults& CDepots::DefaultsOfDirectories() {
    if (!directoryDefaults_) directoryDefaults_ = ReadDirectoryDefaults();
    return *directoryDefaults_;
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
    const bool isDepot = depot->ReadDefinition(key, subkeyName, language);
    if (!depot->WasReadWhole()) leftOut_ = true;
    if (isDepot && AddOwned(array_, std::move(depot)) == nullptr) leftOut_ = true;
} catch (const std::bad_alloc&) {
    leftOut_ = true;
}

CDepot* CDepots::LowestOrderDepot() const {
    const Iterator lowest = std::min_element(begin(), end(), OrderedBefore);
    return lowest == end() || !HasOrderIndex(*lowest) ? nullptr : *lowest;
}

void CDepots::SortByOrderIndex() {
    MakeAllOwn();
    std::stable_sort(array_.begin(), array_.end(), OrderedBefore);
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
    for (std::size_t index = 0; index < Count(); ++index) {
        if (DefinitionAt(index).isDefault) return At(index);
    }
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
    // The language that was looked up with the definitions is that of this moment.
    if (definitions_) OpenReplacers(definitions_->language);
    OpenReplacers().Change([&](MacroValues& values) { FillSlot(values.userFolder, userDir); });
}

// REQUIRES: the caller holds a ReplacerLock.
MacroCacheHolder& CDepots::OpenReplacers() {
    return replacerCache ? *replacerCache : OpenReplacers(LanguageCode());
}

// REQUIRES: the caller holds a ReplacerLock.
MacroCacheHolder& CDepots::OpenReplacers(const std::string& language) {
    if (!replacerCache) {
        replacerCache = OpenReplacerCache(GetUserDir(false), language);
        ownsReplacerCache = true;
    }
    return *replacerCache;
}

bool CDepots::LeaveConnections() {
    return std::count_if(array_.begin(), array_.end(), [](CDepot* depot) {
               return depot != nullptr && depot->LeaveConnections();
           }) > 0;
}

std::string CDepots::GetUserDir(bool useCache) {
    if (!userDirOverride.empty() || !useCache) return userDirOverride;
    return SlotText(CopyReplacers().userFolder);
}

}  // namespace depot
