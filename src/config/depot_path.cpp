#include "config/depot_path.h"

#include <new>

namespace depot {
namespace {

struct TextValue {
    const char* name;
    std::string CDepotPath::*member;
};

struct NumberValue {
    const char* name;
    std::uint32_t CDepotPath::*member;
};

constexpr TextValue kCredentials[] = {
    {"Host", &CDepotPath::host},
    {"Username", &CDepotPath::username},
    {"Password", &CDepotPath::password},
};

constexpr NumberValue kNumbers[] = {
    {"Port", &CDepotPath::port},         {"Authentication", &CDepotPath::authentication},
    {"Version", &CDepotPath::version},   {"ConnectTimeout", &CDepotPath::connectTimeout},
    {"Security", &CDepotPath::security}, {"DetectConflicts", &CDepotPath::detectConflicts},
};

constexpr TextValue kSchemaNames[] = {
    {"FileAttributeName", &CDepotPath::fileAttributeName},
    {"FileObjectClass", &CDepotPath::fileObjectClass},
    {"FolderAttributeName", &CDepotPath::folderAttributeName},
    {"FolderObjectClass", &CDepotPath::folderObjectClass},
    {"FileContentsAttributeName", &CDepotPath::fileContentsAttributeName},
};

template <class Member, class Value>
void StoreIfPresent(Member& member, std::optional<Value> value) {
    if (value) member = *std::move(value);
}

}  // namespace

CDepotPath::CDepotPath(CDepotPaths* owningPaths) : owner(owningPaths) {}

CDepotPath::CDepotPath(const CDepotPath& other) {
    CDepotPath::CopyFrom(&other);
}

void CDepotPath::Reset(CDepotPaths* owningPaths) {
    owner = owningPaths;
    type = kFolderLocation;
    locationText.clear();
    for (const TextValue& value : kCredentials) (this->*value.member).clear();
    for (const TextValue& value : kSchemaNames) (this->*value.member).clear();
    port = kDefaultPort;
    authentication = kSimpleAuthentication;
    version = kDefaultVersion;
    connectTimeout = kDefaultConnectTimeout;
    security = 0;
    detectConflicts = 0;
    handleSlot = nullptr;
    indexSlot = kWritabilityUnknown;
}

std::unique_ptr<CDepotPath> CDepotPath::Clone() const {
    try {
        return std::make_unique<CDepotPath>(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CDepotPath::CopyFrom(const CDepotPath* other) {
    if (other == nullptr) return;
    owner = other->owner;
    type = other->type;
    locationText = other->locationText;
    path = other->path;
    for (const TextValue& value : kCredentials) this->*value.member = other->*value.member;
    for (const NumberValue& value : kNumbers) this->*value.member = other->*value.member;
    for (const TextValue& value : kSchemaNames) this->*value.member = other->*value.member;
    indexSlot = other->indexSlot;
}

int CDepotPath::LoadFromRegistry(const RegistryKey& key, int index) {
    const std::string number = std::to_string(index);
    std::optional<std::string> location = key.ReadString("Path" + number);
    if (!location) return 0;
    locationText.clear();
    path = *std::move(location);
    StoreIfPresent(type, key.ReadDwordOfAnySize("Type" + number));
    if (type > kDirectoryLocation) type = kFolderLocation;
    if (type == kDirectoryLocation) LoadDirectorySettings(key, number);
    return 1;
}

void CDepotPath::LoadDirectorySettings(const RegistryKey& key, const std::string& number) {
    for (const TextValue& value : kCredentials) {
        StoreIfPresent(this->*value.member, key.ReadString(value.name + number));
    }
    for (const NumberValue& value : kNumbers) {
        StoreIfPresent(this->*value.member, key.ReadDword(value.name + number));
    }
    for (const TextValue& value : kSchemaNames) {
        StoreIfPresent(this->*value.member, key.ReadString(value.name + number));
    }
}

}  // namespace depot
