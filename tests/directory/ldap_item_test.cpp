#include "directory/ldap_item.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/record_rules.h"

namespace depot {
namespace {

// Only its list ever destroys an item.
static_assert(std::is_polymorphic_v<CLDAPItem> && !std::has_virtual_destructor_v<CLDAPItem>);

TEST(LdapItemTest, VirtualOperationsStandInTheirOrder) {
    EXPECT_EQ(0u, test::VirtualSlot(&CLDAPItem::Clone));
    EXPECT_EQ(1u, test::VirtualSlot(&CLDAPItem::CopyFrom));
}

TEST(LdapItemTest, CloneWithoutMemoryIsNull) {
    test::ExpectNullCloneWithoutMemory(CLDAPItem(std::string(100, 'x'), true));
}

TEST(LdapItemListTest, ItemsAreDeletedWithTheirList) {
    EXPECT_EQ(0u, test::CountLeftovers([] {
                  LdapItemList items;
                  for (int count = 0; count < 10; ++count) items.Add(std::string(100, 'x'), true);
                  items.Clear();
                  for (int count = 0; count < 10; ++count) items.Add(std::string(100, 'x'), true);
              }));
}

TEST(LdapItemTest, CopiesTakeBothMembers) {
    const CLDAPItem source("CN=a,base", true);
    CLDAPItem target("junk", false);
    target.CopyFrom(&source);
    EXPECT_EQ("CN=a,base", target.path);
    EXPECT_EQ(1u, target.isFolder);
    const std::unique_ptr<CLDAPItem> clone = source.Clone();
    EXPECT_EQ("CN=a,base", clone->path);
    EXPECT_EQ(1u, clone->isFolder);
}

TEST(LdapItemTest, CopyingNothingChangesNothing) {
    CLDAPItem target("CN=a,base", true);
    target.CopyFrom(nullptr);
    EXPECT_EQ("CN=a,base", target.path);
    EXPECT_EQ(1u, target.isFolder);
}

TEST(LdapItemListTest, KeepsTheOrderAndForgetsOnClear) {
    LdapItemList items;
    for (int index = 0; index < 5; ++index) items.Add(std::to_string(index), index % 2 == 1);
    ASSERT_EQ(5u, items.Count());
    EXPECT_EQ("3", items.At(3).path);
    EXPECT_EQ(1u, items.At(3).isFolder);
    items.Clear();
    EXPECT_EQ(0u, items.Count());
}

}  // namespace
}  // namespace depot
