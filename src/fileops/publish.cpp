#include "fileops/publish.h"

#include <algorithm>

#include "fileops/item_operations.h"
#include "fileops/open_stores.h"
#include "manager/display_path.h"
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

// The folder of a profile's path, with one backslash; a path without any has none.
std::string FolderOf(const std::string& path) {
    return EnsureTrailingBackslash(RemoveTrailingBackslash(FolderPrefix(path)));
}

// The way of one profile's files into its folder, over one connection to each directory.
class Publishing {
public:
    explicit Publishing(DepotSession& session)
        : session_(session),
          file_(*session.currentFile),
          targetFolder_(FolderOf(file_.depotPath)) {}

    void PublishClient(const std::string& key) {
        const std::string entry = file_.ReadString(kClients, key, {}, kEntryBytes);
        if (entry.starts_with(kResourceMark)) {
            const std::string name = entry.substr(std::min(kResourceMarkLength, entry.size()));
            CopyIntoFolder(session_.Folders().ResourceFolder() + name, {});
            file_.WriteString(kClients, key, name);
        } else {
            CopyIntoFolder(entry, targetFolder_);
            file_.WriteString(kClients, key, targetFolder_ + NamePart(entry));
        }
    }

private:
    // Copies a file into a folder; an empty folder is passed on as it is, and the result is
    // ignored.
    void CopyIntoFolder(const std::string& source, const std::string& folder) {
        if (source.empty()) return;
        CDepotItems sources;
        auto item = std::make_unique<CDepotItem>();
        ResolveItem(session_.Depots(), source, *item);
        CDepotItem target;
        if (!folder.empty()) ResolveItem(session_.Depots(), folder, target);
        if (!stores_.Hold(PlaceOf(*item)) || !stores_.Hold(PlaceOf(target))) return;
        sources.Append(std::move(item));
        ListOperation(sources, &target, FO_COPY, kQuietFlags, nullptr, nullptr);
    }

    DepotSession& session_;
    DepotFileContext& file_;
    const std::string targetFolder_;
    OpenStores stores_;
};

}  // namespace

void PublishDependentFiles(DepotSession& session, const TransferWatcher& watcher) {
    if (!session.currentFile) return;
    DepotFileContext& file = *session.currentFile;
    Publishing publishing(session);
    const auto listed = static_cast<std::int32_t>(file.ReadInt("Skein", "Count", 0));
    const std::int32_t count = std::clamp(listed, 0, kMaxClients);
    for (std::int32_t number = 1; number <= count; ++number) {
        publishing.PublishClient(
            Concatenate({"C", NumberText(static_cast<std::uint32_t>(number))}));
        const TransferProgress progress = {static_cast<std::uint32_t>(number),
                                           static_cast<std::uint32_t>(count), 0};
        if (watcher && !watcher(progress) && number < count) return;
    }
    if (!file.ReadString(kServer, kConfigurationFile, {}, kEntryBytes).empty()) {
        file.WriteString(kServer, kConfigurationFile, {});
    }
}

}  // namespace depot
