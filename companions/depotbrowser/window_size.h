// The size that the user gave the dialog the last time.
#pragma once

#include <optional>

#include "platform/win32.h"

namespace depot {

// The user's key in which the dialog remembers its size, in units of 1/96 inch.
inline constexpr char kBrowserKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotBrowser";
inline constexpr char kWidthValue[] = "Width";
inline constexpr char kHeightValue[] = "Height";

// Returns the size in the pixels of this screen; nothing when none is remembered, or one that no
// screen can have.
std::optional<SIZE> RememberedSize();

void RememberSize(SIZE size);

}  // namespace depot
