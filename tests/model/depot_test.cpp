#include "model/depot.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "model/depots.h"
#include "model/empty_depot.h"
#include "support/record_rules.h"

namespace depot {
namespace {

using test::ExpectEmpty;

static_assert(std::is_polymorphic_v<CDepot> && std::has_virtual_destructor_v<CDepot>);

UniqueIcon MakeIcon() {
    const BYTE mask[32] = {};
    return UniqueIcon(CreateIcon(nullptr, 16, 16, 1, 1, mask, mask));
}

bool IsIcon(HICON icon) {
    ICONINFO info = {};
    if (!GetIconInfo(icon, &info)) return false;
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
    return true;
}

void AppendLocation(CDepot& depot, const std::string& path) {
    auto location = std::make_unique<CDepotPath>(depot.paths.get());
    location->path = path;
    depot.paths->Append(std::move(location));
}

// A location that tells when it is deleted.
class WatchedLocation : public CDepotPath {
public:
    WatchedLocation(CDepotPaths* owningPaths, bool& deleted)
        : CDepotPath(owningPaths), deleted_(deleted) {}
    ~WatchedLocation() override { deleted_ = true; }

private:
    bool& deleted_;
};

void FillWithJunk(CDepot& depot) {
    depot.name = "Work";
    depot.displayName = "Travail";
    depot.icon = "a.ico,1";
    depot.profileFolder = "<Work>\\Profile";
    depot.isDefault = true;
    depot.orderIndex = 5;
    depot.contains = 6;
    depot.rootKey = HKEY_LOCAL_MACHINE;
    depot.registryViewFlags = KEY_WOW64_64KEY;
    depot.iconHandle = MakeIcon();
    AppendLocation(depot, "C:\\a");
    AppendLocation(depot, "C:\\b");
}

// Compares all but the icon's handle.
void ExpectJunk(const CDepot& depot, const CDepots* owner) {
    EXPECT_EQ("Work", depot.name);
    EXPECT_EQ("Travail", depot.displayName);
    EXPECT_EQ("a.ico,1", depot.icon);
    EXPECT_TRUE(depot.isDefault);
    EXPECT_EQ(5, depot.orderIndex);
    EXPECT_EQ(6u, depot.contains);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, depot.rootKey);
    EXPECT_EQ(REGSAM{KEY_WOW64_64KEY}, depot.registryViewFlags);
    EXPECT_EQ(owner, depot.owner);
    ASSERT_EQ(2u, depot.paths->Count());
    EXPECT_EQ("C:\\a", depot.paths->At(0)->path);
    EXPECT_EQ("C:\\b", depot.paths->At(1)->path);
    EXPECT_EQ(&depot, depot.paths->owner);
}

TEST(DepotTest, NewDepotIsEmpty) {
    CDepots owner;
    const CDepot depot(&owner);
    ExpectEmpty(depot, &owner);
}

TEST(DepotTest, InitEmptiesTheDepotAndDoesNotFreeTheOldLocations) {
    CDepots owner;
    CDepots other;
    CDepot depot(&owner);
    FillWithJunk(depot);
    bool deleted = false;
    CDepotPaths* const old = depot.paths.get();
    old->Append(std::make_unique<WatchedLocation>(old, deleted));
    depot.Init(&other);
    ExpectEmpty(depot, &other);
    ASSERT_FALSE(deleted);
    EXPECT_EQ("C:\\a", old->At(0)->path);
    std::default_delete<CDepotPaths>()(old);
    EXPECT_TRUE(deleted);
}

TEST(DepotTest, CloneHasLocationsAndAnIconOfItsOwn) {
    CDepots owner;
    CDepot depot(&owner);
    FillWithJunk(depot);
    const std::unique_ptr<CDepot> clone = depot.Clone();
    ASSERT_TRUE(clone);
    ExpectJunk(*clone, &owner);
    EXPECT_NE(depot.paths->At(0), clone->paths->At(0));
    ASSERT_TRUE(clone->iconHandle);
    EXPECT_NE(depot.iconHandle, clone->iconHandle);
    EXPECT_TRUE(IsIcon(clone->iconHandle.get()));
}

TEST(DepotTest, CopyFromReplacesTheLocationsAndTheIcon) {
    CDepots owner;
    CDepot source(&owner);
    FillWithJunk(source);
    CDepot target(nullptr);
    AppendLocation(target, "C:\\old");
    target.profileFolder = "<Old>\\Profile";
    target.iconHandle = MakeIcon();
    const HICON old = target.iconHandle.get();
    ASSERT_TRUE(IsIcon(old));
    target.CopyFrom(&source);
    ExpectJunk(target, &owner);
    EXPECT_NE("<Old>\\Profile", target.profileFolder);
    EXPECT_NE(source.iconHandle, target.iconHandle);
    EXPECT_TRUE(IsIcon(source.iconHandle.get()));
    EXPECT_FALSE(IsIcon(old));
}

TEST(DepotTest, CopyFromADepotWithoutAnIconRemovesTheTargets) {
    const CDepot source(nullptr);
    CDepot target(nullptr);
    FillWithJunk(target);
    target.CopyFrom(&source);
    ExpectEmpty(target, nullptr);
}

TEST(DepotTest, LocationWhoseTypeChangesIsUsedAsWhatItIs) {
    CDepot depot(nullptr);
    auto owned = std::make_unique<CDepotPath>(depot.paths.get());
    CDepotPath& location = *owned;
    location.path = "dc=farrow,dc=test";
    location.type = kDirectoryLocation;
    location.authentication = kAnonymousAuthentication;
    depot.paths->Append(std::move(owned));
    EXPECT_FALSE(depot.ActiveStore().IsLocal());
    EXPECT_NE(nullptr, depot.DirectoryConnection());
    location.type = kFolderLocation;
    EXPECT_TRUE(depot.ActiveStore().IsLocal());
    EXPECT_EQ(nullptr, depot.DirectoryConnection());
    location.type = kDirectoryLocation;
    EXPECT_FALSE(depot.ActiveStore().IsLocal());
}

TEST(DepotTest, CopyFromNullOrItselfChangesNothing) {
    CDepots owner;
    CDepot depot(&owner);
    FillWithJunk(depot);
    const HICON icon = depot.iconHandle.get();
    depot.CopyFrom(nullptr);
    depot.CopyFrom(&depot);
    ExpectJunk(depot, &owner);
    EXPECT_EQ(icon, depot.iconHandle.get());
}

TEST(DepotTest, IconIsDestroyedWithTheDepot) {
    HICON icon = nullptr;
    {
        CDepot depot(nullptr);
        depot.iconHandle = MakeIcon();
        icon = depot.iconHandle.get();
        ASSERT_TRUE(IsIcon(icon));
    }
    EXPECT_FALSE(IsIcon(icon));
}

TEST(DepotTest, MembersLieInTheirOrder) {
    const CDepot depot(nullptr);
    test::ExpectMembersInOrder(depot, &CDepot::name, &CDepot::displayName, &CDepot::icon,
                               &CDepot::iconHandle, &CDepot::isDefault, &CDepot::orderIndex,
                               &CDepot::contains, &CDepot::paths, &CDepot::rootKey,
                               &CDepot::registryViewFlags, &CDepot::owner);
}

TEST(DepotTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(2u, test::VirtualSlot(&CDepot::Init));
    EXPECT_EQ(3u, test::VirtualSlot(&CDepot::Clone));
    EXPECT_EQ(4u, test::VirtualSlot(&CDepot::CopyFrom));
}

}  // namespace
}  // namespace depot
