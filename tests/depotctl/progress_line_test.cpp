#include "depotctl/progress_line.h"

#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

TEST(ProgressLineTest, SizeTextUsesTheUnitThatFits) {
    EXPECT_EQ("0 B", SizeText(0));
    EXPECT_EQ("1023 B", SizeText(1023));
    EXPECT_EQ("1.0 KB", SizeText(1024));
    EXPECT_EQ("1.5 MB", SizeText(1536 * 1024));
    EXPECT_EQ("3.0 GB", SizeText(3ull << 30));
    EXPECT_EQ("2048.0 TB", SizeText(2048ull << 40));
}

TEST(ProgressLineTest, LineReportsCountsBytesAndRateBehindABar) {
    const ProgressState half = {12, 24, 2048, 2.0};
    EXPECT_EQ("[###    ] 12/24 files  2.0 KB  1.0 KB/s", ProgressLine(half, 39));
    EXPECT_EQ("[##########          ] 12/24 files  2.0 KB  1.0 KB/s  0:02 left",
              ProgressLine(half, 63));
    EXPECT_EQ("[                              ] 0/1 file  0 B", ProgressLine({0, 1, 0, 0}, 80));
    EXPECT_EQ("[##############################] 1/1 file  9 B  9 B/s",
              ProgressLine({1, 1, 9, 1}, 80));
}

TEST(ProgressLineTest, LineFitsEveryWidth) {
    const ProgressState state = {9999, 10000, 123456789, 12.5};
    for (std::size_t width = 1; width < 90; ++width) {
        EXPECT_LE(ProgressLine(state, width).size(), width);
    }
    EXPECT_EQ("9999/10000 files", ProgressLine(state, 17));
    EXPECT_EQ("9999/10000 files  117.7 MB  9.4 MB/s", ProgressLine(state, 40));
}

TEST(ProgressLineTest, DurationTextHasHoursWhereItNeedsThem) {
    EXPECT_EQ("0:00", DurationText(0));
    EXPECT_EQ("0:59", DurationText(59));
    EXPECT_EQ("10:00", DurationText(600));
    EXPECT_EQ("1:02:03", DurationText(3723));
    EXPECT_EQ("99:59:59", DurationText(~std::uint64_t{0}));
}

}  // namespace
}  // namespace depot::ctl
