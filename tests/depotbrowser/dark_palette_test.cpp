// The dark colours of the browse dialog.
#include "depotbrowser/dark_palette.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(DarkPaletteTest, ContrastIsThatOfTheCommonRules) {
    EXPECT_NEAR(21.0, Contrast({0xFFFFFF, 0x000000}), 0.01);
    EXPECT_NEAR(21.0, Contrast({0x000000, 0xFFFFFF}), 0.01);
    EXPECT_NEAR(1.0, Contrast({0x123456, 0x123456}), 0.0001);
    EXPECT_NEAR(4.54, Contrast({0x767676, 0xFFFFFF}), 0.01);
    // Blue stands in the highest byte.
    EXPECT_NEAR(8.59, Contrast({0xFF0000, 0xFFFFFF}), 0.01);
}

TEST(DarkPaletteTest, EveryTextIsReadable) {
    for (const ColourPair& pair :
         {kDarkPalette.dialog, kDarkPalette.disabled, kDarkPalette.field, kDarkPalette.selected}) {
        SCOPED_TRACE(pair.text);
        EXPECT_GE(Contrast(pair), kReadableContrast);
    }
}

TEST(DarkPaletteTest, DarkIsWantedByTheSwitchAndNeverInHighContrast) {
    EXPECT_TRUE(WantsDark(false, 0));
    EXPECT_FALSE(WantsDark(false, 1));
    EXPECT_FALSE(WantsDark(false, 2));
    EXPECT_FALSE(WantsDark(false, std::nullopt));
    EXPECT_FALSE(WantsDark(true, 0));
}

}  // namespace
}  // namespace depot
