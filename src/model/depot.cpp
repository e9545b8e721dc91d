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
#include "store/offline_store.h"

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

// A location of the list as clients use it and as a store: here a folder, or none.
struct CDepot::Place : NotCopied {
    Place(CDepotPaths& /*locations*/, CDepotPath* used, std::unique_ptr<CLDAPItems>& /*known*/)
        : location(used), type(used != nullptr ? used->type : 0) {}
    virtual ~Place() = default;

    // Whether it was made for what the location is now.
    bool IsOf(const CDepotPath* used) const {
        return location == used && (used == nullptr || used->type == type);
    }

    CDepotPath* const location;
    const std::uint32_t type;
    std::unique_ptr<CLDAPItems> directory;  // null for a folder
    Store* store = &FolderStore::Instance();
    CopyMemory memory;
};

struct CDepot::DirectoryPlace final : Place {
    DirectoryPlace(CDepotPaths& locations, CDepotPath* used, std::unique_ptr<CLDAPItems>& known)
        : Place(locations, used, known) {
        directory = std::move(known);
        if (!directory) directory = std::make_unique<CLDAPItems>(used);
        directory->Connection().SetServersBeside(locations.ServersBeside(*used));
        // The path is a part of what names the location.
        ExpandedPath(*used);
        if (DetectsConflicts(*used)) {
            const bool hasReplicas =
                locations.Count() > 1 || used->host.find(' ') != std::string::npos;
            memory.stored = std::make_shared<StoredEdits>(hasReplicas);
        }
        memory.offline = OfflineLocation::Of(*used);
        MakeStore();
        store = ownStore.get();
    }
    // Working copies may hold on to what is kept, which must not lead here any more.
    ~DirectoryPlace() override {
        if (memory.offline) memory.offline->SetStoreEdits({});
    }

private:
    void MakeStore() {
        CLDAPItems& items = *directory;
        if (!memory.offline) {
            ownStore = std::make_unique<DirectoryStore>(items);
            return;
        }
        ownStore = std::make_unique<OfflineStore>(items, *memory.offline);
        memory.offline->SetStoreEdits(
            [&items](OfflineFolder& folder) { return StoreWaitingEdits(items, folder); });
    }

    std::unique_ptr<DirectoryStore> ownStore;
};

CDepot::CDepot(CDepots* owningList)
    : paths(std::make_unique<CDepotPaths>(this)), owner(owningList) {}

CDepot::CDepot(const CDepot& other) : CDepot(other.owner) {
    CDepot::CopyFrom(&other);
}

CDepot::~CDepot() = default;

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
    place_.reset();
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
    place_.reset();
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

CDepot::Place& CDepot::ActivePlace() {
    CDepotPath* const location = paths->ActiveLocation();
    if (place_ && place_->IsOf(location)) return *place_;
    place_.reset();
    // What was opened to choose the location ends here where there is no memory for its place.
    std::unique_ptr<CLDAPItems> known = paths->TakeDirectory();
    if (location == nullptr) {
        place_ = std::make_unique<Place>(*paths, nullptr, known);
    } else {
        place_ = MakeByType<Place, Place, DirectoryPlace>(*location, *paths, location, known);
    }
    return *place_;
}

CLDAPItems* CDepot::DirectoryConnection() {
    return ActivePlace().directory.get();
}

bool CDepot::LeaveConnections() {
    const bool left = paths->LeaveConnection();
    return (place_ && place_->directory && place_->directory->Connection().Leave()) || left;
}

Store& CDepot::ActiveStore() {
    return *ActivePlace().store;
}

CopyMemory CDepot::Memory() {
    return ActivePlace().memory;
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
