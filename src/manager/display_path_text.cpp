#include "manager/display_path_text.h"

#include <algorithm>

#include "platform/paths.h"
#include "platform/text.h"

namespace depot {

std::string DisplayPrefix(std::string_view name) {
    return Concatenate({"<", name, ">\\"});
}

bool MatchesPrefix(std::string_view path, std::string_view prefix) {
    if (prefix.empty()) return false;
    if (FindSeparator(path) != std::string_view::npos) return StartsWithNoCase(path, prefix);
    return StartsWithNoCase(EnsureTrailingBackslash(std::string(path)), prefix);
}

std::string CompleteBareName(const std::string& path, const std::string& prefix) {
    const bool bare = FindSeparator(path) == std::string::npos && MatchesPrefix(path, prefix);
    return bare ? prefix : path;
}

std::string FolderDisplayPath(std::string_view displayName, std::string_view fileName) {
    const std::string_view relative = fileName.substr(FindLastCharacter(fileName, '>') + 1);
    const std::size_t backslash = FindLastSeparator(relative);
    const std::string_view folder =
        backslash == std::string_view::npos ? std::string_view() : relative.substr(0, backslash);
    return EnsureTrailingBackslash(Concatenate({"<", displayName, ">", folder}));
}

DisplayPathParts SplitDisplayPath(std::string_view displayPath) {
    DisplayPathParts parts;
    const std::size_t backslash = FindSeparator(displayPath);
    if (backslash != std::string_view::npos) parts.relative = displayPath.substr(backslash + 1);
    std::string_view name = displayPath.substr(0, FindLastCharacter(displayPath, '>'));
    name.remove_prefix(std::min(name.find_first_not_of('<'), name.size()));
    parts.depotName = name;
    return parts;
}

}  // namespace depot
