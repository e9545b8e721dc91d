// Texts and values put together at random from pieces of macros. Each round is the same in each
// run; the sanitizers of the native build see what an expectation would miss.
#include <gtest/gtest.h>

#include "macros/fake_macro_system.h"
#include "macros/macro_table.h"
#include "support/random_text.h"

namespace depot {
namespace {

constexpr int kRounds = 3000;

// Every macro, parts of macros and what stands around them.
std::vector<std::string> Pieces() {
    std::vector<std::string> pieces = {"$",       "$$",       "%",    "%COMPANY%",
                                       "\\",      "C:",       "x",    "$X64",
                                       "APPDIR$", "$NOSUCH$", "\xE9", "Program Files"};
    for (const MacroStep& step : MacroTable()) pieces.emplace_back(step.macro);
    return pieces;
}

class RandomTextsTest : public testing::Test {
protected:
    std::string Text(std::size_t maxPieces) { return random_.Pieces(maxPieces, pieces_); }

    void FillAtRandom(test::FakeMacroSystem& system) {
        for (std::string& slot : system.slots) slot = Text(4).substr(0, 519);
        system.Store(Hive::kCurrentUser, "Software\\Quillon\\Farrow\\13.00\\Wharfside", "HomeDir64",
                     Text(4).substr(0, 260));
        system.Store(Hive::kLocalMachine, "Software\\Quillon\\Farrow\\7.00\\Wharfside", "UserDir",
                     Text(4).substr(0, 260));
        system.company = Text(3);
        system.soundFolder = Text(3);
        system.foldersCanBeCreated = random_.Below(2) == 0;
        system.hasShortForms = random_.Below(2) == 0;
    }

    const std::vector<std::string> pieces_ = Pieces();
    test::RandomTexts random_{20240229};
};

TEST_F(RandomTextsTest, ExpansionEndsWithinTheBoundAndTwiceAlike) {
    for (int round = 0; round < kRounds; ++round) {
        test::FakeMacroSystem system;
        FillAtRandom(system);
        const std::string text = Text(12);
        std::string once = text;
        ExpandMacros({system}, once);
        std::string again = text;
        ExpandMacros({system}, again);
        ASSERT_EQ(once, again) << text;
        ASSERT_LE(once.size(), kMaxExpandedBytes) << text;
    }
}

TEST_F(RandomTextsTest, TextWithoutDollarsAndPercentsComesBackUnchanged) {
    for (int round = 0; round < kRounds; ++round) {
        std::string text = Text(12);
        std::erase_if(text, [](char c) { return c == '$' || c == '%'; });
        std::string expanded = text;
        test::FakeMacroSystem system;
        ExpandMacros({system}, expanded);
        ASSERT_EQ(text, expanded);
        ASSERT_EQ(0, system.systemCalls + system.slotReads) << text;
    }
}

}  // namespace
}  // namespace depot
