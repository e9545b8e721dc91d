#include "model/depot.h"

#include <new>
#include <optional>
#include <string_view>

#include "config/directory_defaults.h"
#include "config/languages.h"
#include "config/registry_values.h"
#include "model/depots.h"
#include "model/offline_edits.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

std::optional<std::string> ReadDisplayName(const RegistryKey& key, std::string_view language) {
    return key.ReadString(Concatenate({"DisplayName.", language}));
}

std::string LocalizedName(const RegistryKey& key, const std::string& userLanguage,
                          const std::string& subkeyName) {
    std::optional<std::string> name = ReadDisplayName(key, userLanguage);
    for (const Language& language : kLanguages) {
        if (name) break;
        if (language.servesOthers) name = ReadDisplayName(key, language.code);
    }
    return name.value_or(subkeyName);
}

UniqueIcon DuplicateIcon(const UniqueIcon& icon) {
    return UniqueIcon(icon ? CopyIcon(icon.get()) : nullptr);
}

}  // namespace

CDepot::CDepot(CDepots* owningList)
    : paths(std::make_unique<CDepotPaths>(this)), owner(owningList) {}

CDepot::CDepot(const CDepot& other) : CDepot(other.owner) {
    CDepot::CopyFrom(&other);
}

void CDepot::Init(CDepots* owningList) {
    name.clear();
    displayName.clear();
    icon.clear();
    profileFolder.clear();
    iconHandle.reset();
    isDefault = false;
    orderIndex = kNoOrderIndex;
    contains = 0;
    rootKey = HKEY_CURRENT_USER;
    registryViewFlags = 0;
    owner = owningList;
    directory_.reset();
    // Kept: see the declaration.
    static_cast<void>(paths.release());
    paths = std::make_unique<CDepotPaths>(this);
}

std::unique_ptr<CDepot> CDepot::Clone() const {
    try {
        auto clone = std::make_unique<CDepot>(*this);
        // A location that found no memory was left out.
        if (clone->paths->Count() != paths->Count()) return nullptr;
        return clone;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CDepot::CopyFrom(const CDepot* other) {
    if (other == nullptr || other == this) return;
    rootKey = other->rootKey;
    registryViewFlags = other->registryViewFlags;
    owner = other->owner;
    name = other->name;
    displayName = other->displayName;
    icon = other->icon;
    isDefault = other->isDefault;
    orderIndex = other->orderIndex;
    contains = other->contains;
    profileFolder.clear();
    directory_.reset();
    paths->RemoveAll(true);
    paths->Copy(other->paths.get());
    iconHandle = DuplicateIcon(other->iconHandle);
}

bool CDepot::ReadDefinition(const RegistryKey& listKey, const std::string& subkeyName,
                            const std::string& language) {
    const std::optional<RegistryKey> key =
        listKey.OpenSubkey(subkeyName, KEY_READ | registryViewFlags);
    if (!key) return false;
    displayName = LocalizedName(*key, language, subkeyName);
    name = subkeyName;
    ReadOwnValues(*key);
    ReadLocations(*key);
    return paths->Count() > 0;
}

CLDAPItems* CDepot::DirectoryConnection() {
    CDepotPath* const location = paths->ActiveLocation();
    if (location == nullptr || !location->IsDirectory()) {
        directory_.reset();
    } else if (!directory_ || &directory_->items->Location() != location) {
        std::unique_ptr<CLDAPItems> known = paths->TakeDirectory();
        if (!known) known = std::make_unique<CLDAPItems>(location);
        known->Connection().SetServersBeside(paths->ServersBeside(*location));
        const bool hasReplicas =
            paths->Count() > 1 || location->host.find(' ') != std::string::npos;
        directory_ = std::make_unique<Directory>(std::move(known), hasReplicas);
    }
    return directory_ ? directory_->items.get() : nullptr;
}

bool CDepot::LeaveConnections() {
    const bool left = paths->LeaveConnection();
    return (directory_ && directory_->items->Connection().Leave()) || left;
}

Store& CDepot::ActiveStore() {
    if (DirectoryConnection() == nullptr) return FolderStore::Instance();
    if (directory_->offlineStore) return *directory_->offlineStore;
    return directory_->store;
}

CDepot::Directory::Directory(std::unique_ptr<CLDAPItems> owned, bool hasReplicas)
    : items(std::move(owned)), store(*items) {
    // The path is a part of what names the location.
    ExpandedPath(items->Location());
    if (DetectsConflicts(items->Location())) stored = std::make_shared<StoredEdits>(hasReplicas);
    offline = OfflineLocation::Of(items->Location());
    if (!offline) return;
    offlineStore.emplace(store, *offline, items->Connection());
    offline->SetStoreEdits([directory = items.get()](OfflineFolder& folder) {
        StoreWaitingEdits(*directory, folder);
    });
}

CDepot::Directory::~Directory() {
    if (offline) offline->SetStoreEdits({});
}

CopyMemory CDepot::Memory() {
    if (DirectoryConnection() == nullptr) return {};
    return {directory_->offline, directory_->stored};
}

void CDepot::ReadOwnValues(const RegistryKey& key) {
    DepotSettings settings = {isDefault, static_cast<std::uint32_t>(orderIndex), contains, icon};
    ReadDepotValues(RegistryValues(key), settings);
    isDefault = settings.defaultDepot == 1;
    orderIndex = static_cast<std::int32_t>(settings.orderIndex);
    contains = settings.contains;
    icon = settings.icon;
}

void CDepot::TakeDefaults(const RegistryKey& key, int index, CDepotPath& location) const {
    const DirectoryDefaults& defaults =
        owner != nullptr ? owner->DefaultsOfDirectories() : ReadDirectoryDefaults();
    if (!defaults.AreNone()) ApplyDefaults(defaults, RegistryValues(key), index, location);
}

void CDepot::ReadLocations(const RegistryKey& key) {
    for (int index = 1;; ++index) {
        auto location = std::make_unique<CDepotPath>(paths.get());
        if (location->LoadFromRegistry(key, index) == 0) return;
        if (location->IsDirectory()) TakeDefaults(key, index, *location);
        paths->Append(std::move(location));
        if (paths->Count() != static_cast<std::size_t>(index)) wasReadWhole_ = false;
    }
}

}  // namespace depot
