// The macro cache of a list of depots.
#include <gtest/gtest.h>

#include <cstring>

#include "macros/replacer_cache.h"
#include "model/depots.h"
#include "model/localization.h"
#include "platform/own_objects.h"
#include "support/leak_counts.h"
#include "support/mapped_memory.h"

namespace depot {
namespace {

std::string German() {
    return "deu";
}

std::string NoLanguage() {
    return {};
}

// Makes the user interface speak German, for the test only.
class DepotsReplacersTest : public testing::Test {
protected:
    DepotsReplacersTest() { InstallLocalization({.languageCode = German}); }
    ~DepotsReplacersTest() override { InstallLocalization({}); }
};

// The event as another process of the user makes it.
UniqueHandle MakeEvent(BOOL signalled) {
    OwnObjectRights rights;
    return UniqueHandle(CreateEventA(rights.Get(), FALSE, signalled, kReplacerEventName));
}

bool BlockExists() {
    return UniqueHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, ReplacerBlockName().c_str())) !=
           nullptr;
}

TEST_F(DepotsReplacersTest, CacheIsMadeOnFirstUseAndReleasedWithTheList) {
    {
        CDepots depots;
        EXPECT_EQ(nullptr, depots.replacerCache);
        EXPECT_TRUE(depots.ownsReplacerCache);
        EXPECT_FALSE(BlockExists());
        MacroCacheHolder* const cache = depots.GetReplacers();
        ASSERT_NE(nullptr, cache);
        EXPECT_EQ(cache, depots.replacerCache.get());
        EXPECT_EQ(cache, depots.GetReplacers());
        EXPECT_TRUE(BlockExists());
    }
    EXPECT_FALSE(BlockExists());
}

TEST_F(DepotsReplacersTest, EveryHandleAndTheViewAreReleasedWithTheList) {
    const std::size_t handles = test::CountOpenHandles();
    const void* view = nullptr;
    {
        CDepots depots;
        for (int i = 0; i < 10; ++i) view = depots.GetReplacers()->Data();
        EXPECT_EQ(handles + 1, test::CountOpenHandles());
        ASSERT_TRUE(test::IsMapped(view));
    }
    EXPECT_FALSE(test::IsMapped(view));
    EXPECT_EQ(handles, test::CountOpenHandles());
}

TEST_F(DepotsReplacersTest, EventIsSignalledOnEveryCall) {
    const UniqueHandle event = MakeEvent(TRUE);
    CDepots depots;
    for (int i = 0; i < 3; ++i) {
        const ULONGLONG start = GetTickCount64();
        depots.GetReplacers();
        EXPECT_LT(GetTickCount64() - start, kReplacerWaitMilliseconds);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event.get(), 0));
        SetEvent(event.get());
    }
}

TEST_F(DepotsReplacersTest, EventIsTakenAlsoWhenTheCacheExists) {
    CDepots depots;
    depots.GetReplacers();
    const UniqueHandle event = MakeEvent(FALSE);
    const ULONGLONG start = GetTickCount64();
    depots.GetReplacers();
    EXPECT_GE(GetTickCount64() - start + 50, kReplacerWaitMilliseconds);
}

TEST_F(DepotsReplacersTest, SecondListOfTheProcessSharesTheFirstOnesValues) {
    CDepots first;
    first.userDirOverride = "C:\\first";
    CDepots second;
    second.userDirOverride = "C:\\second";
    MacroValues* const values = first.GetReplacers()->Data();
    FillSlot(values->transferUserName, "upload");
    EXPECT_STREQ("C:\\first", second.GetReplacers()->Data()->userFolder);
    EXPECT_STREQ("upload", second.GetReplacers()->Data()->transferUserName);
}

TEST_F(DepotsReplacersTest, ListWithoutAUserFolderFillsTheOrganizationAlone) {
    CDepots depots;
    EXPECT_STREQ("", depots.GetReplacers()->Data()->userFolder);
    EXPECT_STREQ("Quillon", depots.GetReplacers()->Data()->organization);
}

TEST_F(DepotsReplacersTest, LanguageOfTheUserFillsAnEmptySlotOnly) {
    CDepots first;
    EXPECT_STREQ("deu", first.GetReplacers()->Data()->languageCode);
    FillSlot(first.GetReplacers()->Data()->languageCode, "jpn");
    CDepots second;
    EXPECT_STREQ("jpn", second.GetReplacers()->Data()->languageCode);
    FillSlot(second.GetReplacers()->Data()->languageCode, "");
    InstallLocalization({.languageCode = NoLanguage});
    CDepots third;
    EXPECT_STREQ("", third.GetReplacers()->Data()->languageCode);
}

TEST_F(DepotsReplacersTest, BorrowedCacheStaysItsLenders) {
    MacroCacheHolder lender(1, ReplacerBlockName());
    {
        CDepots depots;
        depots.replacerCache.reset(&lender);
        depots.ownsReplacerCache = false;
        EXPECT_EQ(&lender, depots.GetReplacers());
    }
    EXPECT_TRUE(BlockExists());
}

TEST_F(DepotsReplacersTest, UserFolderComesFromTheOverrideThenFromTheCache) {
    CDepots other;
    FillSlot(other.GetReplacers()->Data()->userFolder, "C:\\cached");
    CDepots depots;
    EXPECT_EQ("", depots.GetUserDir(false));
    EXPECT_EQ("C:\\cached", depots.GetUserDir(true));
    depots.userDirOverride = "C:\\override";
    EXPECT_EQ("C:\\override", depots.GetUserDir(false));
    EXPECT_EQ("C:\\override", depots.GetUserDir(true));
}

TEST_F(DepotsReplacersTest, UserFolderWithoutOverrideAndCacheIsEmpty) {
    CDepots depots;
    EXPECT_EQ("", depots.GetUserDir(true));
    EXPECT_EQ("", depots.GetUserDir(false));
}

}  // namespace
}  // namespace depot
