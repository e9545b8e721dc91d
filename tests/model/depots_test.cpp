#include "model/depots.h"

#include <gtest/gtest.h>

#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Depots";

class DepotsTest : public testing::Test {
protected:
    test::ScratchKey user_{HKEY_CURRENT_USER, kKey};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kKey};
};

TEST_F(DepotsTest, NoDefinitionsGiveTheBuiltInDepotAsDefault) {
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.Count());
    EXPECT_EQ("My Depot", depots.At(0)->displayName);
    EXPECT_EQ("", depots.At(0)->name);
    EXPECT_EQ(depots.At(0), depots.defaultDepot);
    EXPECT_FALSE(depots.hasConfiguredDepots);
}

}  // namespace
}  // namespace depot
