#include "fileops/file_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/code_pages.h"

namespace depot {
namespace {

using testing::ElementsAre;

struct RequestCase {
    const char* path;
    const char* filter;
    const char* subPath;
    bool foldersOnly;
    const char* folder;
    const char* expectedFilter;
};

TEST(ListingRequestTest, IsTakenFromPathFilterAndSubfolder) {
    const RequestCase cases[] = {
        // Without a filter the last part of the path is the filter.
        {"<Work>\\Sessions\\*.KRA", "", "", false, "<Work>\\Sessions", "*.kra"},
        {"<Work>\\*.kra", "", "", false, "<Work>\\", "*.kra"},
        {"C:\\*.kra", "", "", false, "C:\\", "*.kra"},
        {"<Work>\\Sessions\\", "", "", false, "<Work>\\Sessions", ""},
        {"<Work>\\", "", "", false, "<Work>\\", ""},
        {"<Work>\\*.kra", "", "sub", false, "<Work>\\sub", "*.kra"},
        // A filter leaves the path alone.
        {"<Work>\\Sessions", ".KRA;.Krv", "", false, "<Work>\\Sessions", ".kra;.krv"},
        {"<Work>\\*.kra", ".kra", "", false, "<Work>\\*.kra", ".kra"},
        {"<Work>", ".kra", "", false, "<Work>", ".kra"},
        {"<Work>\\A", ".*", "B\\C", false, "<Work>\\A\\B\\C", ".*"},
        {"<Work>\\A\\", ".*", "B", false, "<Work>\\A\\B", ".*"},
        // So does the wish for folders alone.
        {"<Work>\\Sessions", "", "", true, "<Work>\\Sessions", ""},
        {"<Work>\\Sessions", ".kra", "", true, "<Work>\\Sessions", ".kra"},
        // Nothing is joined to a folder that is missing.
        {"", ".*", "", false, "", ".*"},
        {"", ".*", "sub", false, "", ".*"},
        {"", "", "", true, "", ""},
    };
    for (const RequestCase& row : cases) {
        SCOPED_TRACE(std::string(row.path) + "|" + row.filter + "|" + row.subPath);
        const ListingRequest request =
            MakeListingRequest(row.path, row.filter, row.subPath, row.foldersOnly);
        EXPECT_EQ(row.folder, request.folder);
        EXPECT_EQ(row.expectedFilter, request.filter);
    }
}

struct FilterCase {
    const char* name;
    const char* filter;
    bool passes;
};

TEST(PassesFilterTest, FindsTheExtensionAnywhereInTheFilter) {
    const FilterCase cases[] = {
        {"a.kra", "*.kra", true},     {"A.KRA", "*.kra", true},      {"a.b.kra", "*.kra", true},
        {"a.kra", ".krv;.kra", true}, {"a.kra", ".krv;.krk", false}, {"a.kr", "*.kra", true},
        {"a.krax", "*.kra", false},   {"a.", "*.kra", true},         {"kra", "*.kra", true},
        {"a.kra", "b*.kra", true},    {"a.kra", "*", false},         {"a.kra", ".krab", true},
        {"a.kra", "", false},         {"a.kra", "kra", false},
    };
    for (const FilterCase& row : cases) {
        SCOPED_TRACE(std::string(row.name) + "|" + row.filter);
        EXPECT_EQ(row.passes, PassesFilter(row.name, row.filter));
    }
}

TEST(PassesFilterTest, OnlyTheExactTextPassesEveryFile) {
    for (const char* name : {"a.kra", "README", "a.b.c", ".hidden", "a."}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(PassesFilter(name, ".*"));
    }
    for (const char* name : {"a.kra", "README", "a.txt"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(PassesFilter(name, "*.*"));
        EXPECT_FALSE(PassesFilter(name, ".*;.krk"));
    }
}

TEST(PassesFilterTest, NameWithoutADotIsItsOwnExtension) {
    EXPECT_TRUE(PassesFilter("README", "readme;.kra"));
    EXPECT_TRUE(PassesFilter("READ", "readme;.kra"));
    EXPECT_FALSE(PassesFilter("README", "*.kra"));
}

// Removes as a client sees it: position by position, while the items behind move down.
std::vector<bool> RemoveOneByOne(const std::vector<bool>& wanted) {
    std::vector<std::size_t> left;
    for (std::size_t index = 0; index < wanted.size(); ++index) left.push_back(index);
    for (std::size_t position = 0; position < wanted.size(); ++position) {
        if (position < left.size() && !wanted[left[position]]) {
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(position));
        }
    }
    std::vector<bool> stays(wanted.size(), false);
    for (const std::size_t index : left) stays[index] = true;
    return stays;
}

TEST(SurvivorsTest, NeighbourOfARemovedOneStays) {
    EXPECT_THAT(SurvivorsOfTypeFilter({false, false, true}), ElementsAre(false, true, true));
    EXPECT_THAT(SurvivorsOfTypeFilter({false, true, false}), ElementsAre(false, true, false));
    EXPECT_THAT(SurvivorsOfTypeFilter({false, false, false, false}),
                ElementsAre(false, true, false, true));
    EXPECT_THAT(SurvivorsOfTypeFilter({true, true}), ElementsAre(true, true));
    EXPECT_THAT(SurvivorsOfTypeFilter({false}), ElementsAre(false));
    EXPECT_THAT(SurvivorsOfTypeFilter({}), ElementsAre());
}

TEST(SurvivorsTest, EveryListOfTenIsLikeRemovingOneByOne) {
    constexpr std::size_t kItems = 10;
    for (unsigned bits = 0; bits < 1U << kItems; ++bits) {
        std::vector<bool> wanted;
        for (std::size_t index = 0; index < kItems; ++index) {
            wanted.push_back((bits >> index & 1U) != 0);
        }
        ASSERT_EQ(RemoveOneByOne(wanted), SurvivorsOfTypeFilter(wanted)) << "bits " << bits;
    }
}

TEST(SurvivorsTest, MillionItemsAreDoneAtOnce) {
    const std::vector<bool> stays = SurvivorsOfTypeFilter(std::vector<bool>(1'000'000, false));
    EXPECT_EQ(500'000, std::count(stays.begin(), stays.end(), true));
}

TEST(ListingRequestTest, SecondBytesSeparateNothing) {
    const test::CodePageScope scope(932);
    const ListingRequest request = MakeListingRequest("<W>\\\x95\\\\\x8F\\.KRA", "", "", false);
    EXPECT_EQ("<W>\\\x95\\", request.folder);
    EXPECT_EQ("\x8F\\.kra", request.filter);
}

TEST(PassesFilterTest, LettersCompareAsCharacters) {
    const test::CodePageScope scope(932);
    EXPECT_FALSE(
        PassesFilter("x.\x83"
                     "A",
                     ".\x83"
                     "a"));
    EXPECT_FALSE(
        PassesFilter("\x83"
                     "a",
                     "\x83\x83"
                     "a"));
    EXPECT_TRUE(PassesFilter("\x95\\.KRA", ".kra"));
}

TEST(PassesFilterTest, AccentedExtensionsPassInAnyCaseUnderUtf8) {
    const test::CodePageScope scope(65001);
    EXPECT_TRUE(PassesFilter("x.\xC3\x84", ".\xC3\xA4"));
}

}  // namespace
}  // namespace depot
