#include "api/chosen_files.h"

#include <string_view>

#include "platform/paths.h"

namespace depot {
namespace {

struct PathParts {
    std::string_view folder;
    std::string_view name;
};

PathParts SplitAtLastBackslash(std::string_view path) {
    const std::size_t backslash = FindLastSeparator(path);
    if (backslash == std::string_view::npos) return {{}, path};
    return {path.substr(0, backslash), path.substr(backslash + 1)};
}

// The part's length with its NUL added to `length`, in 16 bits.
std::int16_t Lengthened(std::int16_t length, std::string_view part) {
    const std::size_t sum = static_cast<std::uint16_t>(length) + part.size() + 1;
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(sum));
}

void AppendPart(std::string& text, std::string_view part) {
    text += part;
    text += '\0';
}

}  // namespace

std::string ChosenFileList(const std::vector<std::string>& paths, std::int16_t size) {
    if (paths.empty()) return {};
    const std::string_view folder = SplitAtLastBackslash(paths.front()).folder;
    std::string text;
    AppendPart(text, folder);
    std::int16_t length = Lengthened(0, folder);
    for (const std::string& path : paths) {
        const std::string_view name = SplitAtLastBackslash(path).name;
        length = Lengthened(length, name);
        if (length >= size) break;
        AppendPart(text, name);
    }
    return text + '\0';
}

}  // namespace depot
