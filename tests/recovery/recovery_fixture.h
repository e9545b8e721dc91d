// A depot in a directory, what is kept of its files, and the way back.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "manager/depot_list.h"
#include "recovery/kept_origins.h"
#include "recovery/restoration.h"
#include "support/box_log.h"
#include "support/kept_world.h"
#include "support/scratch.h"

namespace depot::test {

inline KeptBytes Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

class WayBackTest : public testing::Test {
protected:
    static KeptCopy OnlyCopy() {
        KeptCopies kept = FindKeptCopies();
        EXPECT_THAT(kept.copies, testing::SizeIs(1));
        return kept.copies.empty() ? KeptCopy() : kept.copies.front();
    }
    std::optional<KeptEntry> EntryOf(const KeptCopy& copy) {
        return FindKeptEntry(depots_, copy.origin.value_or(OriginRecord()));
    }

    const BoxLog boxes_;
    const ScratchKey definitions_{HKEY_CURRENT_USER, kDepotsKey};
    KeptWorld world_{definitions_};
    CDepots depots_{kDepotsKey};
};

// A copy on its way back.
class Return {
public:
    Return(CDepots& depots, KeptCopy copy)
        : copy_(std::move(copy)), entry_(FindKeptEntry(depots, copy_.origin.value())) {
        depot_ = DepotOf(depots, entry_.value());
        target_ = MakeKeptTarget(*depot_, entry_->path, entry_->dn);
        EXPECT_THAT(ReadKept(copy_, ours_), IsDone());
        contents_ = target_->Read();
    }

    const TargetContents& Contents() const { return contents_; }
    RestorePlan Plan(RestoreRules rules = {}) const {
        return PlanRestore(*target_, {copy_, ours_}, contents_.bytes, rules);
    }
    std::optional<StoreFailure> Store(const RestorePlan& plan) const {
        return StorePlan(*target_, {copy_, ours_}, contents_.bytes, plan);
    }
    // What became of it; nothing when it is done.
    std::optional<StoreFailure> Store(RestoreRules rules = {}) const {
        const RestorePlan plan = Plan(rules);
        EXPECT_EQ(std::nullopt, plan.obstacle);
        return Store(plan);
    }

private:
    const KeptCopy copy_;
    const std::optional<KeptEntry> entry_;
    std::unique_ptr<CDepot> depot_;
    std::unique_ptr<const KeptTarget> target_;
    KeptBytes ours_;
    TargetContents contents_;
};

}  // namespace depot::test
