// Where an icon is found.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// An icon location taken apart: "app.exe,-5" gives "app.exe" and -5; without a number it is 0.
struct IconLocation {
    std::string file;
    int index = 0;
};
IconLocation ParseIconLocation(std::string_view location);

}  // namespace depot
