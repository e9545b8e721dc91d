#include "depotbrowser/drag_rules.h"

#include <algorithm>

#include "platform/text.h"

namespace depot {

bool LiesInFolder(std::string_view folder, std::string_view other) {
    return PrefixLengthNoCase(folder, other).has_value();
}

bool CanTakeEntries(std::string_view folder, std::string_view from,
                    const std::vector<std::string>& folderNames) {
    if (EqualsNoCase(folder, from)) return false;
    return std::none_of(folderNames.begin(), folderNames.end(), [&](const std::string& name) {
        return LiesInFolder(folder, std::string(from) + name + "\\");
    });
}

int ScrollStep(int position, int length, int edge) {
    if (position < 0 || position >= length || length <= 2 * edge) return 0;
    if (position < edge) return -1;
    return position >= length - edge ? 1 : 0;
}

}  // namespace depot
