#include "wildcard.h"

#include <cstddef>

#include "platform/code_page.h"

namespace depot::ctl {
namespace {

constexpr char32_t kAnyCharacters = U'*';
constexpr char32_t kOneCharacter = U'?';

}  // namespace

bool HasWildcard(std::string_view text) {
    return FindAnyCharacter(text, "*?") != std::string_view::npos;
}

bool MatchesWildcard(std::string_view name, std::string_view pattern) {
    std::size_t inName = 0, inPattern = 0;
    // Where the last "*" ends, and what of the name it takes so far.
    std::size_t afterStar = std::string_view::npos, starTakes = 0;
    while (inName < name.size() || inPattern < pattern.size()) {
        if (inPattern < pattern.size()) {
            const Character wanted = FoldedCharacterAt(pattern, inPattern);
            if (wanted.code == kAnyCharacters) {
                afterStar = inPattern += wanted.length;
                starTakes = inName;
                continue;
            }
            if (inName < name.size()) {
                const Character found = FoldedCharacterAt(name, inName);
                if (wanted.code == kOneCharacter || wanted.code == found.code) {
                    inPattern += wanted.length;
                    inName += found.length;
                    continue;
                }
            }
        }
        // The last "*" takes one more character: an earlier one need not, since the last one can.
        if (afterStar == std::string_view::npos || starTakes >= name.size()) return false;
        starTakes += CharacterLength(name, starTakes);
        inName = starTakes;
        inPattern = afterStar;
    }
    return true;
}

}  // namespace depot::ctl
