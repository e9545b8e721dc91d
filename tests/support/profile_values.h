// What a profile says, as a list of values that two profiles can be compared by.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "config/profile_lines.h"

namespace depot::test {

// The values by the ids that `names` gives their places; headers have an empty value. Empty for
// what is no profile.
inline std::map<std::uint32_t, std::string> ValuesById(std::string_view text, NameTable& names) {
    std::map<std::uint32_t, std::string> values;
    for (const ProfileLine& line : ReadProfileLines(text, LetterCase::kOfCodePage, names)
                                       .value_or(std::vector<ProfileLine>{})) {
        const bool isPlaced = line.kind == LineKind::kHeader || line.kind == LineKind::kValue;
        if (isPlaced) values.emplace(line.id, line.value);
    }
    return values;
}

}  // namespace depot::test
