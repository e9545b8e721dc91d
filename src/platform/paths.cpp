#include "platform/paths.h"

namespace depot {
namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool IsDriveLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::string NamePart(std::string_view path) {
    return std::string(path.substr(path.rfind('\\') + 1));
}

std::string FolderPart(std::string_view path) {
    return ParentFolderKeepSlash(path);
}

std::string FolderPrefix(std::string_view path) {
    return std::string(path.substr(0, path.rfind('\\') + 1));
}

std::string CollapseBackslashes(std::string_view path) {
    std::string collapsed;
    for (const char character : path) {
        const bool doubled = character == '\\' && collapsed.size() > 1 && collapsed.back() == '\\';
        if (!doubled) collapsed += character;
    }
    return collapsed;
}

std::string ExtensionPart(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return std::string(dot == std::string_view::npos ? name : name.substr(dot));
}

std::string JoinPath(std::string_view first, std::string_view second) {
    if (first.empty() || second.find(':') != std::string_view::npos) return std::string(second);
    std::string joined(first);
    if (joined.back() != '\\') joined.push_back('\\');
    if (second.starts_with('\\')) second.remove_prefix(1);
    return joined.append(second);
}

std::string RemoveTrailingBackslash(std::string_view path) {
    if (path.ends_with('\\')) path.remove_suffix(1);
    return std::string(path);
}

std::string ParentFolder(std::string_view path) {
    return ParentFolderKeepSlash(RemoveTrailingBackslash(path));
}

std::string ParentFolderKeepSlash(std::string_view path) {
    return std::string(path.substr(0, path.rfind('\\')));
}

std::string StripExtension(std::string_view name) {
    return std::string(name.substr(0, name.rfind('.')));
}

bool IsFileSystemPath(std::string_view path) {
    return path.find(":\\") == 1 || path.starts_with("\\\\");
}

bool IsAbsolutePath(std::string_view path) {
    if (path.size() < 3) return false;
    if (path[1] == ':') return IsDriveLetter(path[0]) && IsSeparator(path[2]);
    if (!IsSeparator(path[0]) || !IsSeparator(path[1])) return false;
    if (path[2] == '?') return path.size() > 4 && IsSeparator(path[3]);
    return path[2] != '.' && !IsSeparator(path[2]);
}

}  // namespace depot
