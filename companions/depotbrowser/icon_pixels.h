// The dialog's own icons, drawn for any size.
#pragma once

#include <cstdint>
#include <vector>

namespace depot {

enum class OwnIcon { kFolder, kFile, kDepot };

// Returns the pixels of a square icon, row by row from the top, as 0xAARRGGBB with the colour not
// multiplied by its share. Edges lie between pixels at every size; slanting ones are smooth. Each
// icon can be seen on light and on dark grounds.
std::vector<std::uint32_t> IconPixels(OwnIcon icon, int side);

}  // namespace depot
