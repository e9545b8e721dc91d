#include "depotbrowser/kept_files.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "depotbrowser/depot_listing.h"
#include "depotbrowser/depot_place.h"
#include "depotbrowser/worker_notices.h"
#include "platform/replace_file.h"
#include "recovery/kept_origins.h"

namespace depot {
namespace {

KeptResult Done() {
    return {KeptOutcome::kDone, {}, {}};
}

KeptResult Failure(const Error& why) {
    if (why.reason == Reason::kChanged) return {KeptOutcome::kChangedNow, {}, {}};
    const std::string notice = TakeLastNotice();
    const std::string reason = ReasonOf(why);
    return {KeptOutcome::kFailed, reason.empty() ? notice : reason, {}};
}

KeptResult Obstacle(RestorePlan&& plan) {
    switch (*plan.obstacle) {
        case RestoreObstacle::kGone:
            return {KeptOutcome::kGone, {}, {}};
        case RestoreObstacle::kConflicts:
            return {KeptOutcome::kConflicts, {}, std::move(plan.conflicts)};
        default:
            return {KeptOutcome::kCannotMerge, {}, {}};
    }
}

// The entry of a copy, in a depot of its own.
class EntryOfCopy {
public:
    EntryOfCopy(DepotSession& session, const KeptCopy& copy) {
        TakeLastNotice();
        if (!copy.origin) return;
        const auto entry = FindKeptEntry(session.Depots(), *copy.origin);
        if (!entry) return;
        depot_ = DepotOf(session.Depots(), *entry);
        target_ = MakeKeptTarget(*depot_, entry->path, entry->dn);
    }

    // Null where no depot has it.
    const KeptTarget* Target() const { return target_.get(); }

private:
    std::unique_ptr<CDepot> depot_;
    std::unique_ptr<const KeptTarget> target_;
};

bool IsShown(const std::vector<ShownDepot>& shown, const CDepots& depots, const CDepot* depot) {
    return std::any_of(shown.begin(), shown.end(),
                       [&](const ShownDepot& one) { return FindDepot(depots, one.ref) == depot; });
}

// A file of the queue receives the next edit of its entry.
bool IsStillThere(const KeptCopy& copy) {
    const std::vector<KeptCopy> now = FindKeptCopies().copies;
    return std::any_of(now.begin(), now.end(), [&](const KeptCopy& other) {
        return other.path == copy.path && other.size == copy.size &&
               CompareFileTime(&other.time, &copy.time) == 0;
    });
}

}  // namespace

bool HasDirectory(const CDepots& depots) {
    return std::any_of(depots.begin(), depots.end(), [](const CDepot* depot) {
        for (std::size_t index = 0; index < depot->paths->Count(); ++index) {
            if (depot->paths->At(index)->IsDirectory()) return true;
        }
        return false;
    });
}

std::vector<KeptFile> FindKeptFiles(DepotSession& session) {
    CDepots& depots = session.Depots();
    const std::vector<ShownDepot> shown = ShownDepots(depots);
    std::vector<KeptFile> files;
    for (KeptCopy& copy : FindKeptCopies().copies) {
        const auto entry = copy.origin ? FindKeptEntry(depots, *copy.origin) : std::nullopt;
        if (!entry || !IsShown(shown, depots, depots.At(entry->depot))) continue;
        files.push_back({std::move(copy), entry->path});
    }
    return files;
}

KeptResult RestoreKept(DepotSession& session, const KeptCopy& copy, RestoreRules rules) {
    const EntryOfCopy entry(session, copy);
    if (entry.Target() == nullptr) return {};
    KeptBytes ours;
    if (const Result read = ReadKept(copy, ours); !read) return Failure(read.Why());
    const TargetContents present = entry.Target()->Read();
    if (!present.result) return Failure(present.result.Why());
    RestorePlan plan = PlanRestore(*entry.Target(), {copy, ours}, present.bytes, rules);
    if (plan.obstacle) return Obstacle(std::move(plan));
    const auto failure = StorePlan(*entry.Target(), {copy, ours}, present.bytes, plan);
    if (!failure) return Done();
    KeptResult result = Failure(failure->why);
    if (failure->step != StoreStep::kWrite) result.outcome = KeptOutcome::kCopyStays;
    return result;
}

KeptResult ExportKept(const KeptCopy& copy, const std::string& path) {
    KeptBytes bytes;
    if (const Result read = ReadKept(copy, bytes); !read) return Failure(read.Why());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (ReplaceLocalFile(path, bytes.data(), length, Flush::kNow)) return Done();
    return Failure({Reason::kRefused, CodeKind::kSystem, GetLastError()});
}

KeptResult DiscardKept(const KeptCopy& copy) {
    KeptBytes bytes;
    if (const Result read = ReadKept(copy, bytes); !read) return Failure(read.Why());
    // Read before it is looked for: what takes its place afterwards has other bytes.
    if (!IsStillThere(copy)) return {KeptOutcome::kChangedNow, {}, {}};
    const Result deleted = DeleteKept(copy, bytes);
    return deleted ? Done() : Failure(deleted.Why());
}

KeptComparison CompareKept(DepotSession& session, const KeptCopy& copy) {
    KeptComparison comparison;
    KeptVersions versions;
    if (const Result read = ReadKept(copy, versions.ours); !read) {
        comparison.reason = ReasonOf(read);
        return comparison;
    }
    const EntryOfCopy entry(session, copy);
    if (copy.origin) versions.base = copy.origin->base;
    if (entry.Target() != nullptr) {
        TargetContents present = entry.Target()->Read();
        if (!present.result) comparison.reason = Failure(present.result.Why()).reason;
        versions.entry = std::move(present.bytes);
    }
    const bool isComparable = versions.base || versions.entry;
    if (!isComparable && !comparison.reason.empty()) return comparison;
    if (const Result compared = DifferentValues(versions, comparison.values); !compared) {
        comparison.reason = ReasonOf(compared);
        return comparison;
    }
    comparison.outcome = KeptOutcome::kDone;
    return comparison;
}

}  // namespace depot
