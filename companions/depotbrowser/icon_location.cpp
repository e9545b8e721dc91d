#include "depotbrowser/icon_location.h"

#include <algorithm>
#include <charconv>

namespace depot {

IconLocation ParseIconLocation(std::string_view location) {
    const std::size_t comma = location.rfind(',');
    if (comma == std::string_view::npos) return {std::string(location), 0};
    std::string_view number = location.substr(comma + 1);
    number.remove_prefix(std::min(number.find_first_not_of(' '), number.size()));
    int index = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), index);
    // A comma may belong to the file's name.
    if (error != std::errc() || end != number.data() + number.size()) {
        return {std::string(location), 0};
    }
    return {std::string(location.substr(0, comma)), index};
}

}  // namespace depot
