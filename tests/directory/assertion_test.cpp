#include "directory/assertion.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(AssertionTest, EqualityHoldsTheAttributeAndTheBytesAsTheyAre) {
    EXPECT_EQ((Bytes{0xA3, 7, 4, 2, 'c', 'n', 4, 1, '*'}), AssertEquals("cn", "*"));
    EXPECT_EQ((Bytes{0xA3, 9, 4, 2, 'c', 'n', 4, 3, '(', 0, 0xFF}),
              AssertEquals("cn", std::string_view("(\0\xFF", 3)));
    EXPECT_EQ((Bytes{0xA3, 6, 4, 2, 'c', 'n', 4, 0}), AssertEquals("cn", ""));
}

TEST(AssertionTest, AbsenceIsTheDenialOfPresence) {
    EXPECT_EQ((Bytes{0xA2, 4, 0x87, 2, 'c', 'n'}), AssertAbsent("cn"));
}

TEST(AssertionTest, LengthsOfAnySizeAreEncodedWithTheBytesTheyNeed) {
    struct Row {
        std::size_t length;
        Bytes encoded;
    };
    const Row rows[] = {
        {127, {4, 127}},
        {128, {4, 0x81, 128}},
        {255, {4, 0x81, 255}},
        {256, {4, 0x82, 1, 0}},
        {65'536, {4, 0x83, 1, 0, 0}},
        {20'000'000, {4, 0x84, 0x01, 0x31, 0x2D, 0x00}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.length);
        const Bytes filter = AssertEquals("a", std::string(row.length, 'x'));
        const auto head = filter.end() - static_cast<std::ptrdiff_t>(row.length) -
                          static_cast<std::ptrdiff_t>(row.encoded.size());
        EXPECT_EQ(row.encoded, Bytes(head, head + static_cast<std::ptrdiff_t>(row.encoded.size())));
        EXPECT_EQ(0xA3, filter.front());
    }
}

}  // namespace
}  // namespace depot
