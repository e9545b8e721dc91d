// A profile's text, line by line, as the profile functions read it. Nothing here asks the system.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace depot {

// Numbers for names, the same for all profiles that share the table. 0 stands for no name.
class NameTable {
public:
    std::uint32_t NumberOf(std::string name) {
        const auto next = static_cast<std::uint32_t>(numbers_.size() + 1);
        return numbers_.try_emplace(std::move(name), next).first->second;
    }

private:
    std::unordered_map<std::string, std::uint32_t> numbers_;
};

enum class LineKind : std::uint8_t { kHeader, kValue, kBlank, kOther };

// One line; the views are parts of the text that was read.
struct ProfileLine {
    std::string_view text;  // with the line end, which the last line may lack
    std::string_view name;  // of the section or the key
    std::string_view value;
    LineKind kind = LineKind::kOther;
    // Of a header or a value: the same for what has the same place in other profiles, which is the
    // n-th key of a name in the n-th section of a name. Of any other line: the same for the same
    // text in the same section.
    std::uint32_t id = 0;
    std::uint32_t section = 0;  // the id of the section's header; 0 before the first one
};

// How names are to be compared.
enum class LetterCase : std::uint8_t {
    kOfCodePage,  // the text is in the installed code page
    kOfAscii,     // only ASCII letters have two cases
};

// Takes a text apart. Returns nothing for one that is no profile: a value, or a line that is
// neither that nor a comment, stands before the first header, or there is a NUL.
std::optional<std::vector<ProfileLine>> ReadProfileLines(std::string_view text, LetterCase letters,
                                                         NameTable& names);

// Returns the line end of a line's text; empty where it has none.
std::string_view LineEndOf(std::string_view line);

}  // namespace depot
