#include "platform/paths.h"

#include "platform/code_page.h"

namespace depot {
namespace {

constexpr char kSeparator = '\\';

bool IsSeparator(char c) {
    return c == kSeparator || c == '/';
}

bool IsDriveLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::size_t FindSeparator(std::string_view path, std::size_t from) {
    return FindCharacter(path, kSeparator, from);
}

std::size_t FindLastSeparator(std::string_view path, std::size_t end) {
    return FindLastCharacter(path, kSeparator, end);
}

bool EndsInSeparator(std::string_view path) {
    return EndsInCharacter(path, kSeparator);
}

std::string NamePart(std::string_view path) {
    return std::string(path.substr(FindLastSeparator(path) + 1));
}

std::string FolderPrefix(std::string_view path) {
    return std::string(path.substr(0, FindLastSeparator(path) + 1));
}

std::string CollapseBackslashes(std::string_view path) {
    std::string collapsed;
    bool afterSeparator = false;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t length = CharacterLength(path, at);
        const bool separator = length == 1 && path[at] == kSeparator;
        const bool doubled = separator && afterSeparator && collapsed.size() > 1;
        if (!doubled) collapsed.append(path, at, length);
        afterSeparator = separator;
        at += length;
    }
    return collapsed;
}

std::string ExtensionPart(std::string_view name) {
    const std::size_t dot = FindLastCharacter(name, '.');
    return std::string(dot == std::string_view::npos ? name : name.substr(dot));
}

std::string JoinPath(std::string_view first, std::string_view second) {
    if (first.empty() || FindCharacter(second, ':') != std::string_view::npos)
        return std::string(second);
    std::string joined(first);
    if (!EndsInSeparator(joined)) joined.push_back(kSeparator);
    if (second.starts_with(kSeparator)) second.remove_prefix(1);
    return joined.append(second);
}

std::string RemoveTrailingBackslash(std::string_view path) {
    if (EndsInSeparator(path)) path.remove_suffix(1);
    return std::string(path);
}

std::string ParentFolder(std::string_view path) {
    return ParentFolderKeepSlash(RemoveTrailingBackslash(path));
}

std::string ParentFolderKeepSlash(std::string_view path) {
    return std::string(path.substr(0, FindLastSeparator(path)));
}

std::string StripExtension(std::string_view name) {
    return std::string(name.substr(0, FindLastCharacter(name, '.')));
}

bool IsFileSystemPath(std::string_view path) {
    return path.find(":\\") == 1 ? IsCharacterStart(path, 1) : path.starts_with("\\\\");
}

bool IsAbsolutePath(std::string_view path) {
    if (path.size() < 3) return false;
    if (path[1] == ':') return IsDriveLetter(path[0]) && IsSeparator(path[2]);
    if (!IsSeparator(path[0]) || !IsSeparator(path[1])) return false;
    if (path[2] == '?') return path.size() > 4 && IsSeparator(path[3]);
    return path[2] != '.' && !IsSeparator(path[2]);
}

bool NamesNetworkPlace(std::string_view path) {
    if (path.size() < 2 || !IsSeparator(path[0])) return false;
    const bool isNative = path.substr(1).starts_with("??");
    if (!IsSeparator(path[1]) && !isNative) return false;
    // Behind one of these prefixes a drive stands for itself.
    const bool isVerbatim = path.size() >= 4 && path[2] == '?' && IsSeparator(path[3]);
    return !(isVerbatim && path.size() >= 6 && IsDriveLetter(path[4]) && path[5] == ':');
}

}  // namespace depot
