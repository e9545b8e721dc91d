#include "depotbrowser/dark_palette.h"

#include <algorithm>
#include <cmath>

namespace depot {
namespace {

// The formula and its numbers are those of the common rules for readable texts.
double Linear(Colour colour, unsigned shift) {
    constexpr double kLargest = 255.0, kDarkest = 0.03928;
    const double part = static_cast<double>((colour >> shift) & 0xFF) / kLargest;
    return part <= kDarkest ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Lightness(Colour colour) {
    return 0.2126 * Linear(colour, 0) + 0.7152 * Linear(colour, 8) + 0.0722 * Linear(colour, 16);
}

}  // namespace

bool WantsDark(bool highContrast, std::optional<std::uint32_t> appsUseLightTheme) {
    return !highContrast && appsUseLightTheme.value_or(1) == 0;
}

double Contrast(ColourPair colours) {
    const double text = Lightness(colours.text);
    const double ground = Lightness(colours.ground);
    return (std::max(text, ground) + 0.05) / (std::min(text, ground) + 0.05);
}

}  // namespace depot
