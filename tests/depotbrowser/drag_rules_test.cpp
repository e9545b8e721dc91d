// Where dragged entries may be put, when a drag scrolls, and what a desktop hands over.
#include "depotbrowser/drag_rules.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "depotbrowser/dropped_files.h"
#include "support/code_pages.h"

namespace depot {
namespace {

TEST(DragRulesTest, EntriesFitAnywhereButInTheirFolderAndBelowThemselves) {
    const struct {
        const char* folder;
        const char* from;
        bool fits;
    } rows[] = {
        {"", "Sub\\", true},
        {"Other\\", "Sub\\", true},
        {"Sub\\Inner\\", "Sub\\", true},
        {"Sub\\", "Sub\\", false},
        {"SUB\\", "Sub\\", false},
        {"", "", false},
        {"Sub\\Dragged\\", "Sub\\", false},
        {"Sub\\dragged\\Deep\\", "Sub\\", false},
        {"Sub\\Dragged too\\", "Sub\\", true},
        {"Dragged\\", "Sub\\", true},
        {"Dragged\\", "", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.folder) + " from " + row.from);
        EXPECT_EQ(row.fits, CanTakeEntries(row.folder, row.from, {"Dragged"}));
    }
}

TEST(DragRulesTest, NamesAreComparedByCharacters) {
    const test::CodePageScope japanese(932);
    // Two characters whose second bytes are a letter in capitals and a small one.
    EXPECT_TRUE(CanTakeEntries("\x83\x61\\", "", {"\x83\x41"}));
    EXPECT_FALSE(CanTakeEntries("\x83\x41\\", "", {"\x83\x41"}));
    EXPECT_FALSE(CanTakeEntries("\x95\x5C\\b\\", "", {"\x95\x5C"}));
}

TEST(DragRulesTest, DragScrollsAtTheEdgesAlone) {
    const struct {
        int position, lines;
    } rows[] = {{-1, 0}, {0, -1}, {9, -1}, {10, 0}, {89, 0}, {90, 1}, {99, 1}, {100, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.position);
        EXPECT_EQ(row.lines, ScrollStep(row.position, 100, 10));
    }
    EXPECT_EQ(0, ScrollStep(3, 20, 10));
    EXPECT_EQ(0, ScrollStep(0, 0, 10));
}

constexpr std::size_t kHeader = 20;

std::vector<std::byte> Block(std::uint32_t first, std::uint32_t wide, const std::string& list) {
    std::vector<std::byte> block(kHeader + list.size());
    std::memcpy(block.data(), &first, sizeof(first));
    std::memcpy(block.data() + kHeader - sizeof(wide), &wide, sizeof(wide));
    if (!list.empty()) std::memcpy(block.data() + kHeader, list.data(), list.size());
    return block;
}

std::string Units(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

using namespace std::string_literals;

TEST(DroppedFilesTest, PathsAreReadInEitherKindOfLetters) {
    const auto wide = ParseDroppedPaths(Block(kHeader, 1, Units(u"C:\\a.kra\0\u8868.kra\0\0"s)));
    EXPECT_EQ((std::vector<std::u16string>{u"C:\\a.kra", u"\u8868.kra"}), wide.wide);
    EXPECT_TRUE(wide.narrow.empty());
    const auto narrow = ParseDroppedPaths(Block(kHeader, 0, "C:\\a.kra\0\x95\x5C.kra\0\0"s));
    EXPECT_EQ((std::vector<std::string>{"C:\\a.kra", "\x95\x5C.kra"}), narrow.narrow);
    EXPECT_TRUE(narrow.wide.empty());
}

TEST(DroppedFilesTest, PathThatTheBlockCutsOffIsLeftOut) {
    const std::u16string whole = u"C:\\a.kra\0C:\\b.kra\0\0"s;
    for (std::size_t bytes = 0; bytes < Units(whole).size(); ++bytes) {
        SCOPED_TRACE(bytes);
        const auto paths = ParseDroppedPaths(Block(kHeader, 1, Units(whole).substr(0, bytes)));
        const std::size_t expected = bytes >= 36 ? 2u : bytes >= 18 ? 1u : 0u;
        EXPECT_EQ(expected, paths.wide.size());
        if (expected > 0) {
            EXPECT_EQ(u"C:\\a.kra", paths.wide.front());
        }
    }
}

TEST(DroppedFilesTest, ListThatBeginsOutsideTheBlockIsEmpty) {
    for (const std::uint32_t first : {0u, 19u, 41u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(first);
        EXPECT_TRUE(ParseDroppedPaths(Block(first, 1, Units(u"C:\\a.kra\0\0"s))).IsEmpty());
    }
    for (std::size_t size = 0; size < kHeader; ++size) {
        EXPECT_TRUE(ParseDroppedPaths(std::vector<std::byte>(size, std::byte(20))).IsEmpty());
    }
    EXPECT_TRUE(ParseDroppedPaths(Block(kHeader, 1, {})).IsEmpty());
}

}  // namespace
}  // namespace depot
