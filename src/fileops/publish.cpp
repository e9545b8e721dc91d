#include "fileops/publish.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "fileops/depot_file.h"
#include "fileops/file_copies.h"
#include "fileops/item_operations.h"
#include "fileops/open_stores.h"
#include "fileops/profile_clients.h"
#include "fileops/read_ahead.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "platform/paths.h"

namespace depot {
namespace {

constexpr std::int32_t kClientsAtOnce = 32;
constexpr char kClients[] = "Clients";
constexpr char kServer[] = "Server";
constexpr char kConfigurationFile[] = "Configuration File";
constexpr std::uint32_t kEntryBytes = 260;

bool IsFile(const StorePath& place) {
    ItemKind kind = ItemKind::kMissing;
    return place.store->Look(place.path, kind) && kind == ItemKind::kFile;
}

// The way of one profile's files into its folder, over one connection to each directory.
class Publishing {
public:
    // What is copied into a directory is written together, unless somebody may end the work
    // between two clients.
    Publishing(DepotSession& session, bool writesTogether)
        : session_(session),
          file_(*session.currentFile),
          targetFolder_(FolderOfProfile(file_.depotPath)),
          writesTogether_(writesTogether) {}

    // Looks for the sources of the clients up to `last`; those before were published.
    void Begin(std::int32_t first, std::int32_t last) {
        clients_.clear();
        std::vector<StorePath> sources;
        for (std::int32_t number = first; number <= last; ++number) {
            Client& client = clients_.emplace_back(ClientOf(session_, number));
            if (!client.source.empty()) {
                client.item = std::make_unique<CDepotItem>();
                ResolveItem(session_.Depots(), client.source, *client.item);
            }
            sources.push_back(client.item ? PlaceOf(*client.item) : StorePath());
        }
        ahead_.emplace(std::move(sources), SourceFate::kStays);
    }

    void PublishClient(std::size_t index) {
        Client& client = clients_[index];
        CopyIntoFolder(index, client.isResource ? std::string() : targetFolder_);
        file_.WriteString(
            kClients, client.key,
            client.isResource ? client.entry : targetFolder_ + NamePart(client.entry));
    }

    void Finish() { copies_.Finish(); }

private:
    struct Client : ProfileClient {
        explicit Client(ProfileClient client) : ProfileClient(std::move(client)) {}
        std::unique_ptr<CDepotItem> item{};  // null for an empty source
    };

    // Copies a file into a folder; an empty folder is passed on as it is, and the result is
    // ignored. A profile can name anything that its reader may read: a folder, or files by a
    // pattern, would be more than the file of an entry.
    void CopyIntoFolder(std::size_t index, const std::string& folder) {
        std::unique_ptr<CDepotItem> item = std::move(clients_[index].item);
        if (!item) return;
        CDepotItem target;
        if (!folder.empty()) ResolveItem(session_.Depots(), folder, target);
        const StorePath place = PlaceOf(target);
        if (!stores_.Hold(PlaceOf(*item)) || !stores_.Hold(place)) return;
        if (writesTogether_ && item->depot != nullptr && !place.store->IsLocal()) {
            CopyIntoDirectory(index, *item, target);
            return;
        }
        if (!IsFile(PlaceOf(*item))) return;
        CDepotItems sources;
        sources.Append(std::move(item));
        ListOperation(sources, &target, FO_COPY, kQuietFlags, nullptr, nullptr);
    }

    void CopyIntoDirectory(std::size_t index, const CDepotItem& item, const CDepotItem& target) {
        CopyRequest request;
        if (!PlanCopy({*item.depot, item.path, target.path, target.depot, true}, request)) return;
        request.filesOnly = true;
        const StorePath written = request.to;
        copies_.Make(std::move(request), ahead_->Take(index));
        ahead_->Written(written);
    }

    DepotSession& session_;
    DepotFileContext& file_;
    const std::string targetFolder_;
    const bool writesTogether_;
    OpenStores stores_;
    std::vector<Client> clients_;
    std::optional<ReadAhead> ahead_;
    FileCopies copies_;
};

}  // namespace

void PublishDependentFiles(DepotSession& session, const TransferWatcher& watcher) {
    if (!session.currentFile) return;
    DepotFileContext& file = *session.currentFile;
    const std::int32_t count = ClientCount(file);
    const std::int32_t atOnce = watcher ? 1 : kClientsAtOnce;
    Publishing publishing(session, atOnce > 1);
    for (std::int32_t number = 1; number <= count; ++number) {
        const std::int32_t index = (number - 1) % atOnce;
        if (index == 0) publishing.Begin(number, std::min(number - 1 + atOnce, count));
        publishing.PublishClient(static_cast<std::size_t>(index));
        const TransferProgress progress = {static_cast<std::uint32_t>(number),
                                           static_cast<std::uint32_t>(count), 0};
        if (watcher && !watcher(progress) && number < count) return;
    }
    publishing.Finish();
    if (!file.ReadString(kServer, kConfigurationFile, {}, kEntryBytes).empty()) {
        file.WriteString(kServer, kConfigurationFile, {});
    }
}

}  // namespace depot
