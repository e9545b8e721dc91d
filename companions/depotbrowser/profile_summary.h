// What a profile says of itself.
#pragma once

#include <string>
#include <string_view>

namespace depot {

struct ProfileSummary {
    std::wstring title;
    std::wstring host;
};

// Reads the title and the host's name out of a profile's text, the first value of each, as the
// profile functions do: letter case does not count, and quotes around a value are not its own. Each
// is cut where a line of the dialog has no room for more.
ProfileSummary SummaryOf(std::wstring_view text);

}  // namespace depot
