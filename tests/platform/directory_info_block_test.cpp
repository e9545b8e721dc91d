#include "platform/directory_info_block.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/directory_client.h"
#include "support/child_process.h"
#include "support/leak_counts.h"
#include "support/mapped_memory.h"
#include "support/results.h"

namespace depot {
namespace {

using test::IsCode;

constexpr char kPrefix[] = "Quillon - Depot - LDAP Info - ";
constexpr std::size_t kBlockBytes = 528;

bool BlockExists(const std::string& key) {
    return UniqueHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, (kPrefix + key).c_str())) != nullptr;
}

std::uint32_t NumberAt(const char* bytes) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

// Reads the block by its name and its offsets alone; the exit code is 0 when it holds what the test
// has stored.
int ReadInfo(const test::Arguments& arguments) {
    const UniqueHandle handle(
        OpenFileMappingA(FILE_MAP_READ, FALSE, (kPrefix + arguments[0]).c_str()));
    if (!handle) return 1;
    const UniqueView view(MapViewOfFile(handle.get(), FILE_MAP_READ, 0, 0, kBlockBytes));
    if (!view) return 2;
    const char* const bytes = static_cast<const char*>(view.get());
    if (std::strcmp(bytes, "ann") != 0) return 3;
    if (std::strcmp(bytes + 260, "secret") != 0) return 4;
    if (NumberAt(bytes + 520) != 49) return 5;
    return NumberAt(bytes + 524) == 1 ? 0 : 6;
}
const test::RoleRegistration readInfo("read-info", ReadInfo);

TEST(DirectoryInfoBlockTest, NothingIsOpenBeforeTheFirstAccess) {
    const std::size_t handles = test::CountOpenHandles();
    const DirectoryInfoBlock block("server-a");
    EXPECT_EQ(handles, test::CountOpenHandles());
    EXPECT_FALSE(BlockExists("server-a"));
}

TEST(DirectoryInfoBlockTest, FirstAccessGivesAnEmptyBlock) {
    DirectoryInfoBlock block("server-b");
    const DirectoryInfo* const info = block.Access();
    ASSERT_NE(nullptr, info);
    EXPECT_STREQ("", info->userName);
    EXPECT_STREQ("", info->password);
    EXPECT_THAT(info->lastError, IsCode(LDAP_SUCCESS));
    EXPECT_EQ(0u, info->noPrompt);
}

TEST(DirectoryInfoBlockTest, LaterAccessSeesWhatAnEarlierOneStored) {
    DirectoryInfoBlock block("server-c");
    DirectoryInfoBlock other("server-c");
    DirectoryInfoBlock elsewhere("server-C");
    block.Access()->lastError = 81;
    EXPECT_THAT(block.Access()->lastError, IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(other.Access()->lastError, IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(elsewhere.Access()->lastError, IsCode(LDAP_SUCCESS));
}

TEST(DirectoryInfoBlockTest, EachAccessAddsOneHandleAndOnlyTheLastIsClosed) {
    static_cast<void>(DirectoryInfoBlock("server-d").Access());
    const std::size_t handles = test::CountOpenHandles();
    {
        DirectoryInfoBlock block("server-d");
        for (std::size_t count = 1; count <= 5; ++count) {
            ASSERT_NE(nullptr, block.Access());
            EXPECT_EQ(handles + count, test::CountOpenHandles());
        }
    }
    EXPECT_EQ(handles + 4, test::CountOpenHandles());
    EXPECT_TRUE(BlockExists("server-d"));
}

TEST(DirectoryInfoBlockTest, EachAccessAddsOneViewAndOnlyTheLastIsUnmapped) {
    std::vector<const DirectoryInfo*> views;
    {
        DirectoryInfoBlock block("server-h");
        for (int count = 0; count < 5; ++count) views.push_back(block.Access());
        for (const DirectoryInfo* view : views) EXPECT_TRUE(test::IsMapped(view));
    }
    EXPECT_FALSE(test::IsMapped(views.back()));
    views.pop_back();
    for (const DirectoryInfo* view : views) EXPECT_TRUE(test::IsMapped(view));
    EXPECT_EQ(4u, views.size());
}

TEST(DirectoryInfoBlockTest, BlockThatWasAccessedOnceIsReleasedWithItsHolder) {
    static_cast<void>(DirectoryInfoBlock("server-e").Access());
    EXPECT_FALSE(BlockExists("server-e"));
}

TEST(DirectoryInfoBlockTest, BlockThatCannotBeOpenedIsNull) {
    DirectoryInfoBlock block("with\\backslash");
    const std::size_t handles = test::CountOpenHandles();
    EXPECT_EQ(nullptr, block.Access());
    EXPECT_EQ(nullptr, block.Access());
    EXPECT_EQ(handles, test::CountOpenHandles());
}

TEST(DirectoryInfoBlockTest, EarlierResultStaysReadableAfterLaterAccesses) {
    DirectoryInfoBlock block("server-f");
    const DirectoryInfo* const early = block.Access();
    block.Access()->lastError = 32;
    EXPECT_THAT(early->lastError, IsCode(LDAP_NO_SUCH_OBJECT));
}

TEST(DirectoryInfoBlockTest, AnotherProcessFindsTheFieldsAtTheirOffsets) {
    DirectoryInfoBlock block("server-g");
    DirectoryInfo* const info = block.Access();
    ASSERT_NE(nullptr, info);
    std::strcpy(info->userName, "ann");
    std::strcpy(info->password, "secret");
    info->lastError = 49;
    info->noPrompt = 1;
    EXPECT_EQ(0, test::ChildProcess("read-info", {"server-g"}).ExitCode());
}

}  // namespace
}  // namespace depot
