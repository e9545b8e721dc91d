#include "platform/file_search.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/page_names.h"
#include "support/scratch.h"

namespace depot {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FileSearchTest : public testing::Test {
protected:
    std::vector<std::string> Names(FileSearch& search) {
        std::vector<std::string> names;
        WIN32_FIND_DATAA found = {};
        while (search.Next(found)) names.emplace_back(found.cFileName);
        return names;
    }

    const test::ScratchFolder folder_;
    const std::wstring wide_ = WideFromAnsi(folder_.Path()) + L"\\";
};

TEST_F(FileSearchTest, FindsWhatMatchesWithItsData) {
    folder_.MakeFile("a.kra", "123");
    folder_.MakeFile("b.txt", "");
    FileSearch search(folder_.At("*.kra"));
    WIN32_FIND_DATAA found = {};
    ASSERT_TRUE(search.Next(found));
    EXPECT_STREQ("a.kra", found.cFileName);
    EXPECT_EQ(3u, found.nFileSizeLow);
    EXPECT_NE(0u, found.ftLastWriteTime.dwHighDateTime);
    EXPECT_FALSE(search.IsComplete());
    EXPECT_FALSE(search.Next(found));
    EXPECT_TRUE(search.IsComplete());
}

TEST_F(FileSearchTest, NameOfTheCodePageIsHandedOutExactlyAndAnyOtherCounted) {
    for (const wchar_t* name : {L"A.kra", L"\x0100.kra", L"\xE4.kra", L"\xFF21.kra", L"\x8868"}) {
        test::MakeWideFile(wide_ + name, "x");
    }
    FileSearch search(folder_.At("*"));
    EXPECT_THAT(Names(search), UnorderedElementsAre(".", "..", "A.kra", "\xE4.kra"));
    EXPECT_EQ(3u, search.UnsafeNames());
    EXPECT_TRUE(search.IsComplete());
}

TEST_F(FileSearchTest, NothingIsFoundWhereThereIsNothing) {
    FileSearch search(folder_.At("missing\\*"));
    EXPECT_THAT(Names(search), IsEmpty());
    EXPECT_FALSE(search.IsComplete());
    EXPECT_EQ(0u, search.UnsafeNames());
}

}  // namespace
}  // namespace depot
