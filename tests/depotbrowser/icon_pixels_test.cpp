// The browse dialog's own icons.
#include "depotbrowser/icon_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "depotbrowser/dark_palette.h"

namespace depot {
namespace {

constexpr OwnIcon kIcons[] = {OwnIcon::kFolder, OwnIcon::kFile, OwnIcon::kDepot};
constexpr int kSides[] = {16, 20, 24, 32, 40, 48};

bool IsWhole(std::uint32_t pixel) {
    return pixel >> 24 == 0xFF;
}

// The same colour as the system writes it.
Colour Swapped(std::uint32_t pixel) {
    return (pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF);
}

// How many pixels stand out from a ground, as signs without a text have to.
std::ptrdiff_t Seen(const std::vector<std::uint32_t>& pixels, Colour ground) {
    constexpr double kContrastOfSigns = 3.0;
    return std::count_if(pixels.begin(), pixels.end(), [&](std::uint32_t pixel) {
        return IsWhole(pixel) && Contrast({Swapped(pixel), ground}) >= kContrastOfSigns;
    });
}

TEST(IconPixelsTest, IconsFillTheirSquareAtEverySize) {
    for (const int side : kSides) {
        for (const OwnIcon icon : kIcons) {
            SCOPED_TRACE(side);
            const auto pixels = IconPixels(icon, side);
            ASSERT_EQ(static_cast<std::size_t>(side * side), pixels.size());
            EXPECT_EQ(0u, pixels.front());
            EXPECT_EQ(0u, pixels.back());
            const auto whole = std::count_if(pixels.begin(), pixels.end(), IsWhole);
            EXPECT_GT(whole, side * side / 2);
        }
    }
}

TEST(IconPixelsTest, IconsAreSeenOnLightAndDarkGrounds) {
    for (const int side : kSides) {
        for (const OwnIcon icon : kIcons) {
            SCOPED_TRACE(side);
            const auto pixels = IconPixels(icon, side);
            EXPECT_GT(Seen(pixels, 0xFFFFFF), 2 * side);
            EXPECT_GT(Seen(pixels, kDarkPalette.field.ground), 2 * side);
        }
    }
}

// Level and upright edges lie between pixels: only slanting ones have shares of a colour.
TEST(IconPixelsTest, LevelAndUprightEdgesAreSharp) {
    for (const int side : kSides) {
        SCOPED_TRACE(side);
        for (const std::uint32_t pixel : IconPixels(OwnIcon::kDepot, side)) {
            EXPECT_TRUE(pixel == 0 || IsWhole(pixel));
        }
    }
}

TEST(IconPixelsTest, IconsDiffer) {
    std::set<std::vector<std::uint32_t>> pictures;
    for (const OwnIcon icon : kIcons) pictures.insert(IconPixels(icon, 16));
    EXPECT_EQ(std::size(kIcons), pictures.size());
}

TEST(IconPixelsTest, IconWithoutASizeHasNoPixels) {
    EXPECT_TRUE(IconPixels(OwnIcon::kFile, 0).empty());
    EXPECT_TRUE(IconPixels(OwnIcon::kFile, -1).empty());
}

}  // namespace
}  // namespace depot
