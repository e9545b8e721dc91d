#include "config/depot_path.h"

#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>

#include "config/location_records.h"
#include "support/record_rules.h"

namespace depot {
namespace {

using test::ExpectDirectoryDefaults;
using test::ExpectJunk;
using test::FillWithJunk;
using test::kHandle;
using test::kOtherOwner;
using test::kOwner;

static_assert(std::is_polymorphic_v<CDepotPath> && std::has_virtual_destructor_v<CDepotPath>);

TEST(DepotPathTest, AuthenticationNamesStandInTheOrderOfTheirNumbers) {
    ASSERT_EQ(3u, std::size(kAuthenticationNames));
    EXPECT_STREQ("Anonymous", kAuthenticationNames[0]);
    EXPECT_STREQ("Simple", kAuthenticationNames[1]);
    EXPECT_STREQ("GSSAPI/Windows", kAuthenticationNames[2]);
}

// Checks all but the path.
void ExpectDefaults(const CDepotPath& location, const CDepotPaths* owner) {
    EXPECT_EQ(kFolderLocation, location.type);
    ExpectDirectoryDefaults(location);
    EXPECT_EQ(owner, location.owner);
    EXPECT_EQ("", location.locationText);
    EXPECT_EQ(nullptr, location.handleSlot);
    EXPECT_EQ(-1, location.indexSlot);
}

TEST(DepotPathTest, NewLocationHasTheDefaults) {
    const CDepotPath location(kOwner);
    EXPECT_EQ("", location.path);
    ExpectDefaults(location, kOwner);
}

TEST(DepotPathTest, ResetKeepsThePathAndGivesAllElseItsDefault) {
    CDepotPath location(kOwner);
    FillWithJunk(location);
    location.Reset(kOtherOwner);
    EXPECT_EQ("path", location.path);
    ExpectDefaults(location, kOtherOwner);
}

TEST(DepotPathTest, CopyFromKeepsTheTargetsHandleSlotAndCopiesAllElse) {
    CDepotPath source(kOwner);
    FillWithJunk(source);
    CDepotPath target(kOtherOwner);
    void* const own = &target;
    target.handleSlot = own;
    target.CopyFrom(&source);
    ExpectJunk(target);
    EXPECT_EQ(kOwner, target.owner);
    EXPECT_EQ(own, target.handleSlot);
    EXPECT_EQ(kHandle, source.handleSlot);
}

TEST(DepotPathTest, CopyFromNullOrItselfChangesNothing) {
    CDepotPath location(kOwner);
    FillWithJunk(location);
    location.CopyFrom(nullptr);
    location.CopyFrom(&location);
    ExpectJunk(location);
    EXPECT_EQ(kOwner, location.owner);
    EXPECT_EQ(kHandle, location.handleSlot);
}

TEST(DepotPathTest, CloneHasEverythingButTheHandleSlot) {
    CDepotPath source(kOwner);
    FillWithJunk(source);
    const std::unique_ptr<CDepotPath> clone = source.Clone();
    ASSERT_TRUE(clone);
    ExpectJunk(*clone);
    EXPECT_EQ(kOwner, clone->owner);
    EXPECT_EQ(nullptr, clone->handleSlot);
    source.path = "changed";
    EXPECT_EQ("path", clone->path);
}

TEST(DepotPathTest, MembersLieInTheirOrder) {
    const CDepotPath location(kOwner);
    test::ExpectMembersInOrder(
        location, &CDepotPath::type, &CDepotPath::path, &CDepotPath::host, &CDepotPath::username,
        &CDepotPath::password, &CDepotPath::fileAttributeName, &CDepotPath::fileObjectClass,
        &CDepotPath::folderAttributeName, &CDepotPath::folderObjectClass,
        &CDepotPath::fileContentsAttributeName, &CDepotPath::port, &CDepotPath::authentication,
        &CDepotPath::version, &CDepotPath::connectTimeout, &CDepotPath::owner,
        &CDepotPath::locationText, &CDepotPath::handleSlot, &CDepotPath::indexSlot);
}

TEST(DepotPathTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(2u, test::VirtualSlot(&CDepotPath::Reset));
    EXPECT_EQ(3u, test::VirtualSlot(&CDepotPath::Clone));
    EXPECT_EQ(4u, test::VirtualSlot(&CDepotPath::CopyFrom));
}

TEST(DepotPathTest, CloneWithoutMemoryIsNull) {
    CDepotPath source(kOwner);
    FillWithJunk(source);
    source.path = source.host = source.locationText = std::string(100, 'x');
    test::ExpectNullCloneWithoutMemory(source);
}

}  // namespace
}  // namespace depot
