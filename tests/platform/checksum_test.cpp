#include "platform/checksum.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace depot {
namespace {

std::uint64_t Of(const std::string& bytes) {
    return ChecksumOf(bytes.data(), bytes.size());
}

TEST(ChecksumTest, IsTheSameInEveryBuild) {
    EXPECT_EQ(0x352CD682A12810AFu, ChecksumOf(nullptr, 0));
    EXPECT_EQ(0x7A5DDBB3CFBC73D7u, Of("123456789"));
}

TEST(ChecksumTest, DetectsEveryChangeOfOneBit) {
    const std::string text = "[S]\r\nK=a value of some length\r\n";
    std::set<std::uint64_t> seen = {Of(text)};
    for (std::size_t bit = 0; bit < text.size() * 8; ++bit) {
        std::string changed = text;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
        EXPECT_TRUE(seen.insert(Of(changed)).second) << bit;
    }
}

TEST(ChecksumTest, DistinguishesLengthsOfEqualBytes) {
    std::set<std::uint64_t> seen;
    for (std::size_t length = 0; length < 100; ++length) {
        EXPECT_TRUE(seen.insert(Of(std::string(length, '\0'))).second) << length;
    }
}

TEST(ChecksumTest, DetectsTheOrderOfWords) {
    EXPECT_NE(Of("12345678abcdefgh"), Of("abcdefgh12345678"));
}

}  // namespace
}  // namespace depot
