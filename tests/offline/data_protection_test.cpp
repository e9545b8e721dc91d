#include "platform/data_protection.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DataProtectionTest, BytesComeBackAndAreNotReadableMeanwhile) {
    const Bytes plain(1000, 'p');
    const auto sealed = ProtectForUser(plain);
    ASSERT_TRUE(sealed);
    const std::string text(sealed->begin(), sealed->end());
    EXPECT_EQ(std::string::npos, text.find("pppppppp"));
    EXPECT_EQ(plain, UnprotectForUser(*sealed));
}

TEST(DataProtectionTest, NothingIsReadOfOtherBytes) {
    EXPECT_EQ(std::nullopt, UnprotectForUser({}));
    EXPECT_EQ(std::nullopt, UnprotectForUser(Bytes(100, 'x')));
    auto sealed = ProtectForUser(Bytes(100, 'p'));
    ASSERT_TRUE(sealed);
    sealed->resize(sealed->size() / 2);
    EXPECT_EQ(std::nullopt, UnprotectForUser(*sealed));
}

TEST(DataProtectionTest, SeveralMegabytesComeBack) {
    const Bytes plain(20 * 1024 * 1024, 'x');
    const auto sealed = ProtectForUser(plain);
    ASSERT_TRUE(sealed);
    EXPECT_TRUE(plain == UnprotectForUser(*sealed));
}

}  // namespace
}  // namespace depot
