#include "recovery/restoration.h"

#include <utility>

namespace depot {
namespace {

RestorePlan Stopped(RestoreObstacle obstacle) {
    RestorePlan plan;
    plan.obstacle = obstacle;
    return plan;
}

RestorePlan Storing(const KeptBytes& bytes) {
    RestorePlan plan;
    plan.bytes = bytes;
    return plan;
}

RestorePlan PlanMerge(ReadCopy ours, const KeptBytes& present, RestoreRules rules) {
    const auto& origin = ours.copy.origin;
    const bool hasBase = origin && (origin->base || origin->isNew);
    if (!hasBase) return Stopped(RestoreObstacle::kNoBase);
    auto merge =
        MergeKept({origin->base.value_or(KeptBytes()), present, ours.bytes},
                  rules.replaces ? MergeWinner::kOurs : MergeWinner::kTheirs, rules.characters);
    if (!merge) return Stopped(RestoreObstacle::kNoProfile);
    if (!merge->conflicts.empty() && !rules.replaces) {
        RestorePlan plan = Stopped(RestoreObstacle::kConflicts);
        plan.conflicts = std::move(merge->conflicts);
        return plan;
    }
    RestorePlan plan = Storing({merge->bytes.begin(), merge->bytes.end()});
    plan.isMerged = true;
    plan.isStoredAlready = plan.bytes == present;
    return plan;
}

}  // namespace

RestorePlan PlanRestore(const KeptTarget& target, ReadCopy ours,
                        const std::optional<KeptBytes>& present, RestoreRules rules) {
    if (!present) {
        const bool mayBeMade = rules.makes || (ours.copy.origin && ours.copy.origin->isNew);
        return mayBeMade ? Storing(ours.bytes) : Stopped(RestoreObstacle::kGone);
    }
    if (target.IsHeldAs(ours.bytes, present)) {
        RestorePlan plan = Storing(ours.bytes);
        plan.isStoredAlready = true;
        return plan;
    }
    if (ours.copy.IsMadeFrom(*present)) return Storing(ours.bytes);
    if (rules.merges) return PlanMerge(ours, *present, rules);
    return rules.replaces ? Storing(ours.bytes) : Stopped(RestoreObstacle::kChanged);
}

std::optional<StoreFailure> StorePlan(const KeptTarget& target, ReadCopy ours,
                                      const std::optional<KeptBytes>& present,
                                      const RestorePlan& plan) {
    if (!plan.isStoredAlready) {
        const Result written = target.Write(plan.bytes, present);
        if (!written) return StoreFailure{StoreStep::kWrite, written.Why()};
        const TargetContents now = target.Read();
        if (!now.result) return StoreFailure{StoreStep::kReadBack, now.result.Why(), now.failed};
        if (!target.IsHeldAs(plan.bytes, now.bytes)) {
            return StoreFailure{StoreStep::kCompare, Error(Reason::kChanged)};
        }
    }
    const Result deleted = DeleteKept(ours.copy, ours.bytes);
    if (!deleted) return StoreFailure{StoreStep::kDelete, deleted.Why()};
    return std::nullopt;
}

}  // namespace depot
