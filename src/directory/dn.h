// Names of directory entries as text: nothing here asks a server or the client library.
//
// Names are put into distinguished names with escapes, and read from them without.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace depot {

// The attributes by which a location's entries are named.
struct NamingAttributes {
    std::string folder;
    std::string file;

    // With one attribute for both, the dot in a name distinguishes files from folders.
    bool AreTheSame() const;
};

// What the first component of a distinguished name says of its entry.
struct EntryName {
    std::string name;
    bool isFolder = false;
};

enum class FileExtension { kKeep, kStrip };

// Returns "attribute=name,parent", with the name escaped.
std::string EntryDN(std::string_view attribute, std::string_view name, std::string_view parent);

// Turns a base DN followed by backslash-separated folder and file names into the DN of the entry.
// One trailing backslash is ignored, and every ".." takes the name before it away. A path without a
// name is the base DN itself and comes back as it stands; so does a ".." that no name precedes.
//
// Kept: a name that holds a dot is a file's, any other a folder's.
// Relied on by: existing directories, whose files all have extensions and whose folders have none.
std::string PathToDN(std::string_view path, const NamingAttributes& attributes);

// Takes the naming attribute, and the escapes, off the first component of a DN, which may be
// "CN=report.krc". Empty when the component carries neither naming attribute.
//
// Kept: with one attribute for both kinds, a name with a dot is a file and one without a folder.
// Relied on by: existing directories of default names.
std::optional<EntryName> SplitFirstComponent(std::string_view component,
                                             const NamingAttributes& attributes,
                                             FileExtension extension = FileExtension::kKeep);

// Joins the components of a DN from index `first` on.
std::string JoinComponents(const std::vector<std::string>& components, std::size_t first);

// Replaces each run of "\XX" byte escapes above ASCII by its UTF-8 bytes, as a component that the
// client library took apart carries them. Other escapes stay. `convert` turns the bytes of a run
// into the text that replaces it.
std::string DecodeNonAsciiEscapes(std::string_view component,
                                  std::optional<std::string> (*convert)(std::string_view utf8));

// Returns the text for the user that so many entries were left out because of their names; empty
// for none.
std::string UnsafeNamesText(std::uint32_t count);

// The text for the user that two entries would become one local file.
inline constexpr char kSharedNamesText[] =
    "Several entries have one and the same name in the file system.";

// The text for the user that something else answers to a name.
inline constexpr char kTakenNameText[] =
    "The directory takes this name for that of another file or folder.";

// The text for the user that a file's entry shows no contents, alone and with the file's name.
inline constexpr char kUnseenContentsText[] =
    "The contents may not be read: the directory does not show them to this user.";
std::string UnseenContentsText(std::string_view name);

// Returns the key under which processes share what they know of a server: the host in lower case, a
// colon and the port. It is cut to what the name of a system object can take.
std::string ServerKey(std::string_view host, std::uint32_t port);

// The same for connections that are secured: no host in lower case gives such a key.
std::string SecuredServerKey(std::string_view host, std::uint32_t port);

}  // namespace depot
