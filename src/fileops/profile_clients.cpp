#include "fileops/profile_clients.h"

#include <algorithm>
#include <string_view>

#include "platform/code_page.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::int32_t kMaxClients = 10000;
constexpr std::uint32_t kEntryBytes = 260;
constexpr char kResourceMark = 'u';

// The mark and one character behind it, which may have several bytes.
std::size_t MarkLength(std::string_view entry) {
    return entry.size() < 2 ? entry.size() : 1 + CharacterLength(entry, 1);
}

}  // namespace

std::int32_t ClientCount(const DepotFileContext& file) {
    const auto listed = static_cast<std::int32_t>(file.ReadInt("Skein", "Count", 0));
    return std::clamp(listed, 0, kMaxClients);
}

ProfileClient ClientOf(DepotSession& session, std::int32_t number) {
    ProfileClient client;
    client.key = Concatenate({"C", NumberText(static_cast<std::uint32_t>(number))});
    client.entry = session.currentFile->ReadString("Clients", client.key, {}, kEntryBytes);
    client.isResource = client.entry.starts_with(kResourceMark);
    client.source = client.entry;
    if (client.isResource) {
        client.entry.erase(0, MarkLength(client.entry));
        client.source = session.Folders().ResourceFolder() + client.entry;
    }
    return client;
}

std::string FolderOfProfile(const std::string& path) {
    return EnsureTrailingBackslash(RemoveTrailingBackslash(FolderPrefix(path)));
}

}  // namespace depot
