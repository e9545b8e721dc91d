#include "depotbrowser/depot_drops.h"

#include <optional>
#include <utility>

#include "depotbrowser/depot_listing.h"
#include "depotbrowser/name_rules.h"
#include "depotbrowser/worker_notices.h"
#include "fileops/any_transfer.h"
#include "fileops/copy.h"
#include "manager/display_path.h"
#include "platform/file_names.h"
#include "platform/paths.h"

namespace depot {
namespace {

void Fail(DroppedItem& item, const Result& result) {
    item.obstacle = DropObstacle::kFailed;
    item.reason = ReasonOf(result);
    const std::string notice = TakeLastNotice();
    if (item.reason.empty()) item.reason = notice;
}

// An item on its way: where it is and where it is to be.
class DropWay {
public:
    DropWay(DepotSession& session, const DropOrder& order, std::string folder)
        : depots_(session.Depots()), order_(order), folder_(std::move(folder)) {}

    void Examine(DroppedItem& item) {
        item.name = NamePart(RemoveTrailingBackslash(item.source));
        if (!IsValidName(item.name)) {
            if (item.name.empty()) item.name = item.source;
            item.obstacle = DropObstacle::kBadName;
            return;
        }
        ItemKind kind = ItemKind::kMissing, there = ItemKind::kMissing;
        Result looked = FindPlace(depots_, item.source, from_);
        if (looked) looked = LookAt(from_, kind);
        if (!looked) return Fail(item, looked);
        kind = KindBy(from_, kind);
        item.isFolder = kind == ItemKind::kFolder;
        if (kind == ItemKind::kFile && !order_.pattern.empty() &&
            !MatchesPattern(item.name, order_.pattern)) {
            item.obstacle = DropObstacle::kOtherType;
            return;
        }
        looked = PlaceInFolder(depots_, from_, folder_, to_);
        if (looked && LeadsIntoItself(item)) return;
        if (looked) looked = LookAt(to_, there);
        if (!looked) return Fail(item, looked);
        there = KindBy(to_, there);
        if (there == ItemKind::kMissing) return;
        const bool areFiles = kind == ItemKind::kFile && there == ItemKind::kFile;
        item.obstacle = areFiles ? DropObstacle::kFileExists : DropObstacle::kExists;
    }

    void Put(DroppedItem& item, const TransferWatcher& watcher) {
        Result put = FindPlace(depots_, item.source, from_);
        if (put) put = PlaceInFolder(depots_, from_, folder_, to_);
        TransferWish wish;
        wish.mayExist = item.obstacle == DropObstacle::kFileExists;
        wish.looksBeforeRemoving = true;
        wish.watcher = watcher;
        if (put) {
            put = order_.moves ? MoveAnywhere(from_, to_, wish) : CopyAnywhere(from_, to_, wish);
        }
        item.obstacle = DropObstacle::kNone;
        if (!put) Fail(item, put);
    }

private:
    bool LeadsIntoItself(DroppedItem& item) const {
        const StorePath from = from_.Stored(), to = to_.Stored();
        const SourceFate fate = order_.moves ? SourceFate::kGoes : SourceFate::kStays;
        if (from.store != to.store || !Overlaps(from, to, fate)) return false;
        const bool isThere = from.store->IsSame(from.path, to.path);
        item.obstacle = isThere ? DropObstacle::kExists : DropObstacle::kInside;
        return true;
    }

    CDepots& depots_;
    const DropOrder& order_;
    const std::string folder_;  // the display path of the target, to which names are appended
    AnyPlace from_, to_;
};

// Returns the display path of the target; nothing when its depot is gone.
std::optional<std::string> TargetPath(DepotSession& session, const DropOrder& order) {
    TakeLastNotice();
    CDepot* const depot = FindDepot(session.Depots(), order.target.depot);
    if (depot == nullptr) return std::nullopt;
    return BuildDisplayPath(*depot, order.target.relative, PathForm::kDisplay, DepotName::kKey);
}

}  // namespace

DropExamination ExamineDrop(DepotSession& session, const DropOrder& order) {
    DropExamination examination;
    const auto folder = TargetPath(session, order);
    if (!folder) return examination;
    FileNameSet names;
    for (const std::string& source : order.sources) {
        DroppedItem item;
        item.source = source;
        DropWay(session, order, *folder).Examine(item);
        // Of two items of one name the second would take the place of the first.
        const bool isFirst = names.Insert(item.name);
        const bool fits =
            item.obstacle == DropObstacle::kNone || item.obstacle == DropObstacle::kFileExists;
        if (fits && !isFirst) item.obstacle = DropObstacle::kExists;
        examination.items.push_back(std::move(item));
    }
    examination.succeeded = true;
    return examination;
}

DropOutcome PutDropped(DepotSession& session, const DropOrder& order,
                       const std::vector<DroppedItem>& items, const StopSign& stop) {
    DropOutcome outcome;
    const auto folder = TargetPath(session, order);
    if (!folder) return outcome;
    const TransferWatcher watcher = [&stop](const TransferProgress&) { return !*stop; };
    for (DroppedItem item : items) {
        if (*stop) break;
        DropWay(session, order, *folder).Put(item, watcher);
        outcome.items.push_back(std::move(item));
    }
    outcome.succeeded = true;
    return outcome;
}

}  // namespace depot
