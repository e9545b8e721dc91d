#include "depotbrowser/name_rules.h"

#include <algorithm>

#include "config/file_types.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kSeparator = '\\';
constexpr std::string_view kForbidden = "\\/:*?\"<>|";
constexpr std::string_view kEveryName = "*.*";

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < ' ';
}

// Returns whether one character of the name is the pattern's, which may stand for any.
bool MatchesOne(std::string_view name, std::size_t at, std::string_view pattern, std::size_t p) {
    return pattern[p] == '?' ||
           FoldedCharacterAt(pattern, p).code == FoldedCharacterAt(name, at).code;
}

bool MatchesFrom(std::string_view name, std::string_view pattern) {
    // The last '*' takes one character more each time the rest does not fit.
    std::size_t star = std::string_view::npos, resume = 0, at = 0, p = 0;
    while (at < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = at;
        } else if (p < pattern.size() && MatchesOne(name, at, pattern, p)) {
            p += CharacterLength(pattern, p);
            at += CharacterLength(name, at);
        } else if (star != std::string_view::npos) {
            p = star + 1;
            resume += CharacterLength(name, resume);
            at = resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace

bool IsValidName(std::string_view name) {
    if (name.empty() || name.size() > kLongestName) return false;
    if (name.back() == '.' || name.back() == ' ') return false;
    return FindAnyCharacter(name, kForbidden) == std::string_view::npos &&
           std::none_of(name.begin(), name.end(), IsControl);
}

bool IsPattern(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

bool MatchesPattern(std::string_view name, std::string_view pattern) {
    return pattern == kEveryName || MatchesFrom(name, pattern);
}

std::string WithDefaultExtension(std::string_view name, std::string_view extension) {
    if (name.ends_with('.')) return std::string(name.substr(0, name.size() - 1));
    const std::size_t dot = name.rfind('.');
    const bool known =
        dot != std::string_view::npos && IsProfileExtension(std::string(name.substr(dot + 1)));
    if (known || name.empty()) return std::string(name);
    return std::string(name).append(extension);
}

std::string PatternOfType(std::int32_t fileType) {
    const std::string extension = ExtensionForType(fileType);
    return extension.empty() ? std::string(kEveryName) : "*" + extension;
}

std::string FolderAbove(std::string_view folder) {
    return FolderPrefix(RemoveTrailingBackslash(folder));
}

std::vector<std::string> FolderNames(std::string_view folder) {
    const std::vector<std::string_view> parts = SplitAtAny(folder, "\\/");
    std::vector<std::string> folders(parts.begin(), parts.end());
    // Nothing stands behind a separator at the end.
    if (folders.back().empty()) folders.pop_back();
    return folders;
}

RelativeTarget FollowPath(std::string_view folder, std::string_view path) {
    const bool fromRoot = path.starts_with(kSeparator) || path.starts_with('/');
    RelativeTarget target = {fromRoot ? std::string() : std::string(folder), {}};
    std::vector<std::string> parts = FolderNames(path);
    const bool namesFolder = EndsInSeparator(path) || path.ends_with('/') || parts.empty() ||
                             parts.back() == "." || parts.back() == "..";
    if (!namesFolder) {
        target.name = parts.back();
        parts.pop_back();
    }
    for (const std::string& part : parts) {
        if (part == "..") {
            target.folder = FolderAbove(target.folder);
        } else if (!part.empty() && part != ".") {
            target.folder += part + kSeparator;
        }
    }
    return target;
}

}  // namespace depot
