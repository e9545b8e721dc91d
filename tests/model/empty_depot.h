// What a depot is before anything is known of it.
#pragma once

#include <gtest/gtest.h>

#include "model/depot.h"

namespace depot::test {

inline void ExpectEmpty(const CDepot& depot, const CDepots* owner) {
    EXPECT_EQ("", depot.name);
    EXPECT_EQ("", depot.displayName);
    EXPECT_EQ("", depot.icon);
    EXPECT_EQ("", depot.profileFolder);
    EXPECT_FALSE(depot.iconHandle);
    EXPECT_FALSE(depot.isDefault);
    EXPECT_EQ(-1, depot.orderIndex);
    EXPECT_EQ(0u, depot.contains);
    EXPECT_EQ(HKEY_CURRENT_USER, depot.rootKey);
    EXPECT_EQ(0u, depot.registryViewFlags);
    EXPECT_EQ(owner, depot.owner);
    ASSERT_TRUE(depot.paths);
    EXPECT_EQ(0u, depot.paths->Count());
    EXPECT_EQ(&depot, depot.paths->owner);
}

}  // namespace depot::test
