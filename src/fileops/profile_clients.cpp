#include "fileops/profile_clients.h"

#include <algorithm>

#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::int32_t kMaxClients = 10000;
constexpr std::uint32_t kEntryBytes = 260;
constexpr char kResourceMark = 'u';
constexpr std::size_t kResourceMarkLength = 2;

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
        client.entry.erase(0, kResourceMarkLength);
        client.source = session.Folders().ResourceFolder() + client.entry;
    }
    return client;
}

std::string FolderOfProfile(const std::string& path) {
    return EnsureTrailingBackslash(RemoveTrailingBackslash(FolderPrefix(path)));
}

}  // namespace depot
