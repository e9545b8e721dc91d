// Taking backslash-separated paths apart and joining them, as text: nothing here asks the system.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// The longest path, its terminating NUL included, that a fixed path buffer of the system takes.
inline constexpr std::size_t kMaxPathBytes = 260;

// Return the position of the first separator at or after `from`, where a character begins, or of
// the last one before `end`; npos when there is none. The one separator of narrow paths is the
// backslash.
std::size_t FindSeparator(std::string_view path, std::size_t from = 0);
std::size_t FindLastSeparator(std::string_view path, std::size_t end = std::string_view::npos);
bool EndsInSeparator(std::string_view path);

// Returns the text after the last backslash, or the whole text when there is none.
std::string NamePart(std::string_view path);

// Returns the path up to and including its last backslash, or nothing when there is none.
std::string FolderPrefix(std::string_view path);

// Returns the text from the last '.' on, or the whole text when there is none.
std::string ExtensionPart(std::string_view name);

// Appends `second` to `first` with one backslash between them. A second text that holds a drive
// colon is absolute and comes back as it is, as does the second text when the first is empty.
std::string JoinPath(std::string_view first, std::string_view second);

// Makes one backslash of several in a row, but for two that begin the path.
std::string CollapseBackslashes(std::string_view path);

// Removes one trailing backslash.
std::string RemoveTrailingBackslash(std::string_view path);

// Removes one trailing backslash, then everything from the last backslash on. A path without a
// backslash is returned as it is.
std::string ParentFolder(std::string_view path);

// Removes everything from the last backslash on, so that a path that ends in a backslash loses only
// that one. A path without a backslash is returned as it is.
std::string ParentFolderKeepSlash(std::string_view path);

// Removes the text from the last '.' on, if there is one.
std::string StripExtension(std::string_view name);

// Whether the text names a place in the file system by itself: with a drive or as a UNC path.
bool IsFileSystemPath(std::string_view path);

// Whether the text itself names a place of another machine, or a device, which may lead to one:
// "\\server\share", "\\?\UNC\server\share" or "\\.\...", with slashes of either kind. A drive that
// stands for a place of another machine cannot be told from the text.
bool NamesNetworkPlace(std::string_view path);

// Whether the path names the same place whatever the process's current folder and drive are:
// it begins with a drive and a separator, with a server, or with "\\?\". A device ("\\.\NUL") is
// no place for a file. What writes, moves or deletes asks this before it touches anything.
bool IsAbsolutePath(std::string_view path);

}  // namespace depot
