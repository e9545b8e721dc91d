#include "fileops/publish.h"

#include <algorithm>

#include "fileops/item_operations.h"
#include "manager/resolve_item.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::int32_t kMaxClients = 10000;
constexpr std::uint32_t kEntryBytes = 260;
constexpr char kClients[] = "Clients";
constexpr char kServer[] = "Server";
constexpr char kConfigurationFile[] = "Configuration File";
constexpr char kResourceMark = 'u';
constexpr std::size_t kResourceMarkLength = 2;

// Copies a file into a folder; an empty folder is passed on as it is, and the result is ignored.
void CopyIntoFolder(CDepots& depots, const std::string& source, const std::string& folder) {
    CDepotItems sources;
    auto item = std::make_unique<CDepotItem>();
    ResolveItem(depots, source, *item);
    sources.Append(std::move(item));
    CDepotItem target;
    if (!folder.empty()) ResolveItem(depots, folder, target);
    ListOperation(sources, &target, FO_COPY, kQuietFlags, nullptr, nullptr);
}

void PublishClient(DepotSession& session, const std::string& targetFolder, const std::string& key) {
    DepotFileContext& file = *session.currentFile;
    const std::string entry = file.ReadString(kClients, key, {}, kEntryBytes);
    if (entry.starts_with(kResourceMark)) {
        const std::string name = entry.substr(std::min(kResourceMarkLength, entry.size()));
        CopyIntoFolder(session.Depots(), session.Folders().ResourceFolder() + name, {});
        file.WriteString(kClients, key, name);
    } else {
        CopyIntoFolder(session.Depots(), entry, targetFolder);
        file.WriteString(kClients, key, targetFolder + NamePart(entry));
    }
}

}  // namespace

void PublishDependentFiles(DepotSession& session) {
    if (!session.currentFile) return;
    DepotFileContext& file = *session.currentFile;
    const std::string targetFolder = EnsureTrailingBackslash(FolderPart(file.depotPath));
    const auto count = static_cast<std::int32_t>(file.ReadInt("Skein", "Count", 0));
    for (std::int32_t number = 1; number <= std::min(count, kMaxClients); ++number) {
        PublishClient(session, targetFolder, "C" + std::to_string(number));
    }
    if (!file.ReadString(kServer, kConfigurationFile, {}, kEntryBytes).empty()) {
        file.WriteString(kServer, kConfigurationFile, {});
    }
}

}  // namespace depot
