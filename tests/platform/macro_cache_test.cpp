#include "platform/macro_cache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "support/code_pages.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/mapped_memory.h"

namespace depot {
namespace {

constexpr char kName[] = "DepotTests - Macro cache";

bool BlockExists(const std::string& name) {
    return UniqueHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str())) != nullptr;
}

bool IsAllZero(const MacroValues& values) {
    const std::string bytes(reinterpret_cast<const char*>(&values), sizeof(values));
    return bytes == std::string(sizeof(values), '\0');
}

std::string Filled(MacroSlot& slot, const std::string& text) {
    std::memset(slot, 'j', sizeof(slot));
    FillSlot(slot, text);
    return std::string(slot, sizeof(slot));
}

TEST(MacroSlotTest, TextIsCutToTheSlotAndTheRestIsZero) {
    MacroSlot slot;
    EXPECT_EQ("ab" + std::string(518, '\0'), Filled(slot, "ab"));
    EXPECT_EQ(std::string(520, '\0'), Filled(slot, ""));
    const std::string fit(519, 'x');
    EXPECT_EQ(fit + '\0', Filled(slot, fit));
    EXPECT_EQ(fit, SlotText(slot));
    EXPECT_EQ(fit + '\0', Filled(slot, fit + "y"));
    EXPECT_EQ(fit + '\0', Filled(slot, std::string(100000, 'x')));
}

TEST(MacroSlotTest, CutHalvesNoCharacter) {
    MacroSlot slot;
    const test::CodePageScope scope(65001);
    const std::string nearly(517, 'x');
    EXPECT_EQ(nearly + std::string(3, '\0'), Filled(slot, nearly + "\xE8\xA1\xA8"));
}

TEST(MacroSlotTest, TextWithoutNulEndsWithTheSlot) {
    MacroSlot slot;
    std::memset(slot, 'j', sizeof(slot));
    EXPECT_EQ(std::string(520, 'j'), SlotText(slot));
    slot[2] = '\0';
    EXPECT_EQ("jj", SlotText(slot));
}

TEST(MacroSlotTest, SlotThatHoldsTheTextIsNotWritten) {
    MacroSlot slot;
    Filled(slot, "C:\\Users\\a");
    slot[sizeof(slot) - 1] = 'j';  // behind the text's end, where only a writer comes
    FillSlot(slot, "C:\\Users\\a");
    EXPECT_EQ('j', slot[sizeof(slot) - 1]);
    FillSlot(slot, "C:\\Users\\b");
    EXPECT_EQ('\0', slot[sizeof(slot) - 1]);
}

TEST(MacroSlotTest, SlotWhoseTextLacksItsNulIsFilledAnew) {
    MacroSlot slot;
    Filled(slot, std::string(519, 'x'));
    slot[sizeof(slot) - 1] = 'j';
    EXPECT_EQ(std::string(519, 'x') + 'j', std::string(slot, sizeof(slot)));
    FillSlot(slot, std::string(600, 'x'));
    EXPECT_EQ('\0', slot[sizeof(slot) - 1]);
}

TEST(MacroSlotTest, ChangedSlotIsEmptyAtNoMoment) {
    MacroSlot slot;
    Filled(slot, "C:\\Users\\a");
    std::atomic<bool> ended = false;
    std::thread writer([&] {
        for (int round = 0; round < 2'000'000; ++round) {
            FillSlot(slot, round % 2 == 0 ? "D:\\Profiles\\of\\b" : "C:\\Users\\a");
        }
        ended = true;
    });
    std::size_t empty = 0;
    while (!ended) empty += *static_cast<volatile const char*>(slot) == '\0' ? 1 : 0;
    writer.join();
    EXPECT_EQ(0u, empty);
}

TEST(MacroCacheHolderTest, PrivateHolderNeverCreatesABlock) {
    const std::size_t handles = test::CountOpenHandles();
    const MacroCacheHolder holder(0, kName);
    ASSERT_NE(nullptr, holder.Data());
    EXPECT_TRUE(IsAllZero(*holder.Data()));
    EXPECT_EQ(handles, test::CountOpenHandles());
    EXPECT_FALSE(BlockExists(kName));
}

TEST(MacroCacheHolderTest, PrivateHoldersValuesLieInsideIt) {
    const MacroCacheHolder holder(0, "");
    const auto* const start = reinterpret_cast<const char*>(&holder);
    const auto* const values = reinterpret_cast<const char*>(holder.Data());
    EXPECT_GE(values, start);
    EXPECT_LE(values + sizeof(MacroValues), start + sizeof(holder));
}

TEST(MacroCacheHolderTest, SharedHoldersOfOneNameSeeOneAnother) {
    const MacroCacheHolder first(1, kName);
    EXPECT_TRUE(IsAllZero(*first.Data()));
    FillSlot(first.Data()->transferUserName, "upload");
    const MacroCacheHolder second(2, kName);
    EXPECT_STREQ("upload", second.Data()->transferUserName);
    EXPECT_NE(first.Data(), second.Data());
}

TEST(MacroCacheHolderTest, SharedHolderWithoutANameUsesTheProcesssGenericBlock) {
    const std::string name = ProcessBlockName("Quillon - Generic - Replacers - ");
    EXPECT_FALSE(BlockExists(name));
    {
        const MacroCacheHolder holder(1, "");
        EXPECT_TRUE(BlockExists(name));
    }
    EXPECT_FALSE(BlockExists(name));
}

TEST(MacroCacheHolderTest, HolderWithoutABlockKeepsItsOwnValues) {
    const MacroCacheHolder first(1, "with\\backslash");
    const MacroCacheHolder second(1, "with\\backslash");
    ASSERT_NE(nullptr, first.Data());
    EXPECT_TRUE(IsAllZero(*first.Data()));
    FillSlot(first.Data()->userFolder, "mine");
    EXPECT_STREQ("", second.Data()->userFolder);
}

void* WINAPI MapNothing(HANDLE, DWORD, DWORD, DWORD, SIZE_T) {
    return nullptr;
}

TEST(MacroCacheHolderTest, HolderWhoseBlockCannotBeMappedKeepsItsOwnValues) {
    const test::ImportPatch<decltype(&MapViewOfFile)> mapping("MapViewOfFile", &MapNothing);
    const MacroCacheHolder holder(1, kName);
    ASSERT_NE(nullptr, holder.Data());
    EXPECT_TRUE(IsAllZero(*holder.Data()));
    FillSlot(holder.Data()->transferUserName, "mine");
}

TEST(MacroCacheHolderTest, CopyBesideChangesOfAnotherHolderIsWhole) {
    const std::string shortText = "C:\\a";
    const std::string longText(500, 'x');
    MacroCacheHolder writing(1, kName);
    const MacroCacheHolder reading(1, kName);
    const auto store = [&](const std::string& text) {
        writing.Change([&](MacroValues& values) { FillSlot(values.userFolder, text); });
    };
    store(shortText);
    std::atomic<bool> ended = false;
    std::thread writer([&] {
        for (int round = 0; round < 500'000; ++round) store(round % 2 == 0 ? longText : shortText);
        ended = true;
    });
    std::size_t mixed = 0;
    while (!ended) {
        const std::string text = SlotText(reading.Copy().userFolder);
        if (text != shortText && text != longText) ++mixed;
    }
    writer.join();
    EXPECT_EQ(0u, mixed);
}

TEST(MacroCacheHolderTest, BlockIsUnmappedAndClosedWithItsHolder) {
    const std::size_t handles = test::CountOpenHandles();
    const void* view = nullptr;
    {
        const MacroCacheHolder holder(1, kName);
        view = holder.Data();
        ASSERT_TRUE(test::IsMapped(view));
    }
    EXPECT_FALSE(test::IsMapped(view));
    EXPECT_EQ(handles, test::CountOpenHandles());
    EXPECT_FALSE(BlockExists(kName));
}

}  // namespace
}  // namespace depot
