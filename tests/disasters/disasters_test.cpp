// Long work on both stores while everything fails that can fail: whatever a client was told to be
// done is there afterwards, and no file is cut.
#include <cstdlib>
#include <iostream>

#include "disasters/disaster_world.h"
#include "disasters/file_holder.h"
#include "faults/fault_layer.h"
#include "platform/text.h"
#include "support/box_log.h"

namespace depot::test {
namespace {

unsigned NumberFrom(const char* variable, unsigned standard) {
    const char* const text = std::getenv(variable);
    return text != nullptr ? static_cast<unsigned>(std::atoi(text)) : standard;
}

}  // namespace

void DisastersTest::Run(const std::function<void()>& disturb, const std::function<void()>& calm) {
    const unsigned first = NumberFrom("DEPOTINTR_SEED", 1);
    const unsigned seeds = NumberFrom("DEPOTINTR_SEEDS", 3);
    const unsigned rounds = NumberFrom("DEPOTINTR_ROUNDS", 60);
    for (unsigned seed = first; seed < first + seeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Begin(seed);
        for (unsigned round = 0; round < rounds && !HasFailure(); ++round) {
            SCOPED_TRACE("round " + std::to_string(round));
            disturb();
            DoOne();
            calm();
            relay_.Disturb({});
            ExpectNothingLost();
        }
        if (HasFailure()) return;
    }
}

void DisastersTest::DisturbLine() {
    const unsigned number = 1 + Below(8);
    const unsigned how = Below(6);
    Note(Concatenate({"line: ", NumberText(how), " at ", NumberText(number)}));
    switch (how) {
        case 0:
            return relay_.Disturb({.dropBeforeRequest = static_cast<int>(number)});
        case 1:
            return relay_.Disturb({.dropAfterRequest = static_cast<int>(number)});
        case 2:
            return relay_.Disturb({.dropAfterBytesToServer = 1 + Below(3000)});
        case 3:
            return relay_.Disturb({.dropAfterBytesToClient = 1 + Below(3000)});
        default:
            break;
    }
    const unsigned code = 1 + Below(80);
    const bool isAll = Below(4) == 0;
    Note(Concatenate({"refusal: ", NumberText(code), isAll ? " for all" : ""}));
    relay_.Disturb({.refusal = [=](const RelayedRequest& request) {
        return isAll || request.number == static_cast<int>(number) ? static_cast<int>(code) : 0;
    }});
}

TEST_F(DisastersTest, WhatWasAcknowledgedIsThereWhateverCallsFail) {
    FaultLayer layer(Library::Own().Module());
    // Before it can throw without memory, the C++ runtime makes itself a lock, for which it needs
    // memory.
    for (int number = 1; number <= 12; ++number) {
        FaultLayer::Fail(FaultKind::kMemory, number, 2);
        List();
        FaultLayer::Stop();
    }
    Run(
        [&] {
            FaultLayer::TakeBoxes();
            if (Below(3) == 0) return DisturbLine();
            if (Below(3) == 0) return;
            const FaultKind kind = kFaultKinds[Below(std::size(kFaultKinds))];
            const int number = 1 + static_cast<int>(Below(2u << Below(8)));
            constexpr int kCounts[] = {1, 3, 1 << 20};
            const int count = kCounts[Below(3)];
            Note(Concatenate({"calls: ", NameOf(kind), " from ", std::to_string(number), ", ",
                              std::to_string(count)}));
            FaultLayer::Fail(kind, number, count);
        },
        [] { FaultLayer::Stop(); });
    FaultLayer::CloseLastingServerBlocks();
}

TEST_F(DisastersTest, WhatWasAcknowledgedIsThereWhoeverHoldsTheFiles) {
    const BoxLog boxes;
    char temporary[MAX_PATH] = {};
    const DWORD length = GetTempPathA(sizeof(temporary), temporary);
    FileHolder holder({folder_.Path(), std::string(temporary, length - 1)},
                      NumberFrom("DEPOTINTR_HOLD", 60), NumberFrom("DEPOTINTR_SEED", 1));
    rest_ = [&] { return holder.Rest(); };
    Run(
        [&] {
            if (Below(4) == 0) DisturbLine();
        },
        [] {});
    std::cout << holder.Count() << " files held\n";
    EXPECT_GT(holder.Count(), 0);
}

}  // namespace depot::test
