// The colours of the browse dialog where the user wants dark ones.
#pragma once

#include <cstdint>
#include <optional>

namespace depot {

// A colour as the system writes it: 0x00BBGGRR.
using Colour = std::uint32_t;

// A text and what it stands on.
struct ColourPair {
    Colour text;
    Colour ground;
};

struct Palette {
    ColourPair dialog;    // of labels, of the path and of the dialog itself
    ColourPair disabled;  // of what cannot be used there
    ColourPair field;     // of list, tree and fields
    ColourPair selected;  // of what is selected there without the focus
};

inline constexpr Palette kDarkPalette = {
    {0xFFFFFF, 0x202020}, {0xA0A0A0, 0x202020}, {0xFFFFFF, 0x191919}, {0xFFFFFF, 0x4D4D4D}};

inline constexpr double kReadableContrast = 4.5;

// Whether the user wants dark windows: by the switch of the system's settings, which is missing on
// older systems, and never where the system's own colours are chosen for their contrast.
bool WantsDark(bool highContrast, std::optional<std::uint32_t> appsUseLightTheme);

// The contrast of two colours from 1 to 21, by the lightness that eyes see. A text is readable from
// kReadableContrast on.
double Contrast(ColourPair colours);

}  // namespace depot
