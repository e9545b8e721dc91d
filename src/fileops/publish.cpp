#include "fileops/publish.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "fileops/copy.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "fileops/open_stores.h"
#include "fileops/outcome.h"
#include "fileops/profile_clients.h"
#include "fileops/read_ahead.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "platform/not_copied.h"
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

// Whether the copy is one request to its target once the bytes are known.
bool IsOneRequest(const CopyRequest& request) {
    return request.to.store->Window() > 1 && !request.to.path.empty() &&
           !Overlaps(request.from, request.to, request.fate);
}

// Reads a local file.
std::optional<FileBuffer> ReadLocal(const StorePath& from) {
    if (from.path.empty() || !from.store->IsLocal()) return std::nullopt;
    const StoreScope scope(*from.store);
    StoreSource source;
    if (!scope || !from.store->ReadSource(from.path, SourceFate::kStays, source)) {
        return std::nullopt;
    }
    if (source.isFolder || !source.contents.bytes) return std::nullopt;
    return std::move(source.contents);
}

// Makes copies whose results are of no interest to whoever asked for them, as if one after another;
// what they write into a directory is under way together.
class FileCopies : NotCopied {
public:
    // Makes the copy, or notes it for the next Finish, and all that were noted before where it
    // depends on them. `known` is what was read of the source, if anything was. REQUIRES: the
    // stores stay open until Finish.
    void Make(CopyRequest request, std::optional<FileBuffer> known);

    // Makes the copies that were noted.
    void Finish();

private:
    struct Noted {
        std::string path;
        FileBuffer contents;
    };

    bool TouchesNoted(const CopyRequest& request) const;

    Store* target_ = nullptr;  // of all that were noted
    std::vector<Noted> noted_;
    std::uint64_t bytes_ = 0;
};

void FileCopies::Make(CopyRequest request, std::optional<FileBuffer> known) {
    const bool touches = TouchesNoted(request);
    if (touches || request.to.store != target_) Finish();
    // What was read before may be what one of them has just replaced.
    if (touches) known.reset();
    if (IsOneRequest(request)) {
        if (!known) known = ReadLocal(request.from);
        if (known) {
            target_ = request.to.store;
            bytes_ += known->length;
            noted_.push_back({std::move(request.to.path), *std::move(known)});
            if (noted_.size() >= target_->Window() || bytes_ >= kBytesAtOnce) Finish();
            return;
        }
    }
    Finish();
    request.known = known ? &*known : nullptr;
    static_cast<void>(ReportedCopy(request, Copy(request)));
}

bool FileCopies::TouchesNoted(const CopyRequest& request) const {
    return std::any_of(noted_.begin(), noted_.end(), [&](const Noted& noted) {
        // Two stores may be one server by two names.
        const bool isSource = request.from.store->IsSame(noted.path, request.from.path) ||
                              request.from.store->IsInside(noted.path, request.from.path);
        return isSource || request.to.store->IsSame(noted.path, request.to.path);
    });
}

void FileCopies::Finish() {
    std::vector<FileToWrite> writes;
    for (const Noted& noted : noted_) writes.push_back({noted.path, &noted.contents});
    if (!writes.empty()) target_->WriteFiles(writes);
    noted_.clear();
    bytes_ = 0;
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
