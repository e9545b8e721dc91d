#include "macros/replacer_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/failing_memory.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/others_object.h"

namespace depot {
namespace {

constexpr std::size_t kBlockBytes = 3640;
constexpr char kReady[] = "DepotTests - ready";
constexpr char kEnd[] = "DepotTests - end";

// Far longer than what the lock guards takes, far shorter than the time after which waiting ends.
constexpr DWORD kShort = 300;

bool Exists(const std::string& name) {
    return UniqueHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str())) != nullptr;
}

UniqueHandle OpenReplacerEvent() {
    return UniqueHandle(OpenEventA(EVENT_ALL_ACCESS, FALSE, kReplacerEventName));
}

ULONGLONG Elapsed(ULONGLONG start) {
    return GetTickCount64() - start;
}

// Takes the lock, says so and holds it until it is told to end.
int HoldLock(const test::Arguments& /*arguments*/) {
    const test::Signal ready(kReady);
    const test::Signal end(kEnd);
    const ReplacerLock lock;
    ready.Set();
    return end.Wait() ? 0 : 1;
}
const test::RoleRegistration holdLock("hold-lock", HoldLock);

// Opens this process's cache under the lock; the exit code is 0 when it is this process's own.
int OpenOwnCache(const test::Arguments& arguments) {
    std::unique_ptr<MacroCacheHolder> cache;
    {
        const ReplacerLock lock;
        cache = OpenReplacerCache(arguments[0], "eng");
    }
    return SlotText(cache->Data()->userFolder) == arguments[0] ? 0 : 1;
}
const test::RoleRegistration openOwnCache("open-own-cache", OpenOwnCache);

// Reads another process's block by its name and its offsets; the exit code tells which field is
// not what the test has stored.
int ReadCache(const test::Arguments& arguments) {
    const std::string name = "Quillon - Depot - Replacers - " + arguments[0];
    const UniqueHandle handle(OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str()));
    if (!handle) return -1;
    const UniqueView view(MapViewOfFile(handle.get(), FILE_MAP_READ, 0, 0, kBlockBytes));
    if (!view) return -2;
    constexpr struct {
        std::size_t offset;
        const char* text;
    } kFields[] = {{0, ""},    {520, ""},     {1040, "Quillon"}, {1560, "C:\\Users\\a"},
                   {2080, ""}, {2600, "deu"}, {3120, ""}};
    const char* const bytes = static_cast<const char*>(view.get());
    for (const auto& field : kFields) {
        if (std::strcmp(bytes + field.offset, field.text) != 0) {
            return static_cast<int>(field.offset) + 1;
        }
    }
    return 0;
}
const test::RoleRegistration readCache("read-cache", ReadCache);

TEST(ReplacerCacheTest, FirstOpeningFillsOrganizationUserFolderAndLanguage) {
    const auto cache = OpenReplacerCache("C:\\Users\\a", "deu");
    const MacroValues& values = *cache->Data();
    EXPECT_STREQ("Quillon", values.organization);
    EXPECT_STREQ("C:\\Users\\a", values.userFolder);
    EXPECT_STREQ("deu", values.languageCode);
    EXPECT_STREQ("", values.applicationFolder);
    EXPECT_STREQ("", values.applicationFolderX86);
    EXPECT_STREQ("", values.profileFolder);
    EXPECT_STREQ("", values.transferUserName);
}

TEST(ReplacerCacheTest, EmptyUserFolderStaysEmptyBesideTheOrganization) {
    const auto cache = OpenReplacerCache("", "");
    EXPECT_STREQ("Quillon", cache->Data()->organization);
    EXPECT_STREQ("", cache->Data()->userFolder);
    EXPECT_STREQ("", cache->Data()->languageCode);
}

TEST(ReplacerCacheTest, SecondOpeningWritesNothing) {
    const auto first = OpenReplacerCache("C:\\first", "deu");
    FillSlot(first->Data()->organization, "Other");
    const auto second = OpenReplacerCache("C:\\second", "fra");
    EXPECT_STREQ("C:\\first", second->Data()->userFolder);
    EXPECT_STREQ("Other", second->Data()->organization);
    EXPECT_STREQ("deu", second->Data()->languageCode);
}

TEST(ReplacerCacheTest, ValuesOfOtherModulesStay) {
    const MacroCacheHolder other(1, ReplacerBlockName());
    FillSlot(other.Data()->applicationFolder, "C:\\app");
    FillSlot(other.Data()->languageCode, "jpn");
    FillSlot(other.Data()->transferUserName, "upload");
    const auto cache = OpenReplacerCache("C:\\Users\\a", "deu");
    EXPECT_STREQ("C:\\app", cache->Data()->applicationFolder);
    EXPECT_STREQ("jpn", cache->Data()->languageCode);
    EXPECT_STREQ("upload", cache->Data()->transferUserName);
    EXPECT_STREQ("C:\\Users\\a", other.Data()->userFolder);
}

TEST(ReplacerCacheTest, FillingReplacesWhatStoodInTheOrganization) {
    const MacroCacheHolder other(1, ReplacerBlockName());
    FillSlot(other.Data()->organization, "A much longer organization");
    const auto cache = OpenReplacerCache("", "");
    EXPECT_EQ("Quillon" + std::string(513, '\0'), std::string(cache->Data()->organization, 520));
}

TEST(ReplacerCacheTest, OpeningBesideAChangeOfTheUserFolderKeepsTheHostsOrganization) {
    MacroCacheHolder host(1, ReplacerBlockName());
    host.Change([](MacroValues& values) {
        FillSlot(values.organization, "The host's");
        FillSlot(values.userFolder, "C:\\Users\\a");
    });
    std::atomic<bool> ended = false;
    std::thread changes([&] {
        for (int round = 0; !ended; ++round) {
            host.Change([&](MacroValues& values) {
                FillSlot(values.userFolder, round % 2 == 0 ? "D:\\b" : "C:\\Users\\a");
            });
        }
    });
    for (int round = 0; round < 5'000; ++round) OpenReplacerCache("C:\\other", "deu");
    ended = true;
    changes.join();
    EXPECT_EQ("The host's", SlotText(host.Data()->organization));
}

TEST(ReplacerCacheTest, UserFolderIsCutTo519Bytes) {
    const auto cache = OpenReplacerCache(std::string(600, 'u'), "deu");
    EXPECT_EQ(std::string(519, 'u'), SlotText(cache->Data()->userFolder));
    EXPECT_STREQ("", cache->Data()->profileFolder);
}

TEST(ReplacerCacheTest, WithoutABlockThePrivateOneIsFilledTheSameWay) {
    // The name is taken by another kind of object: no block can have it.
    const UniqueHandle taken(CreateEventA(nullptr, FALSE, FALSE, ReplacerBlockName().c_str()));
    ASSERT_NE(nullptr, taken);
    const auto cache = OpenReplacerCache("C:\\Users\\a", "deu");
    EXPECT_EQ("Quillon", SlotText(cache->Data()->organization));
    EXPECT_EQ("C:\\Users\\a", SlotText(cache->Data()->userFolder));
    EXPECT_EQ("deu", SlotText(cache->Data()->languageCode));
}

TEST(ReplacerCacheTest, OpeningWithoutMemoryThrowsAndLeavesNoBlock) {
    test::ExpectEachFailureThrows([] { OpenReplacerCache("C:\\Users\\a", "deu"); });
    EXPECT_FALSE(Exists(ReplacerBlockName()));
}

TEST(ReplacerCacheTest, BlockCarriesTheProcessIdInItsName) {
    EXPECT_EQ(ProcessBlockName("Quillon - Depot - Replacers - "), ReplacerBlockName());
    EXPECT_FALSE(Exists(ReplacerBlockName()));
    {
        const auto cache = OpenReplacerCache("", "");
        EXPECT_TRUE(Exists(ReplacerBlockName()));
    }
    EXPECT_FALSE(Exists(ReplacerBlockName()));
}

TEST(ReplacerCacheTest, AnotherProcessFindsTheSlotsAtTheirOffsets) {
    const auto cache = OpenReplacerCache("C:\\Users\\a", "deu");
    const std::string id = ProcessBlockName("");
    EXPECT_EQ(0, test::ChildProcess("read-cache", {id}).ExitCode());
}

TEST(ReplacerCacheTest, AnotherProcessHasItsOwnBlock) {
    const auto cache = OpenReplacerCache("C:\\Users\\a", "deu");
    EXPECT_EQ(0, test::ChildProcess("open-own-cache", {"C:\\Users\\b"}).ExitCode());
    EXPECT_STREQ("C:\\Users\\a", cache->Data()->userFolder);
}

TEST(ReplacerLockTest, FirstHolderCreatesTheEventUnsignalledAndClosesItAtTheEnd) {
    const std::size_t handles = test::CountOpenHandles();
    {
        const ReplacerLock lock;
        const UniqueHandle event = OpenReplacerEvent();
        ASSERT_TRUE(event);
        EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event.get(), 0));
    }
    EXPECT_FALSE(OpenReplacerEvent());
    EXPECT_EQ(handles, test::CountOpenHandles());
}

using CreateNamedEvent = decltype(&CreateEventA);

// How an event was last asked for.
struct AskedEvent {
    SECURITY_ATTRIBUTES* security;
    BOOL manualReset;
    BOOL signalled;
    std::string name;
};
AskedEvent askedEvent;
CreateNamedEvent createEvent = nullptr;

HANDLE WINAPI NoteEvent(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL signalled,
                        const char* name) {
    askedEvent = {security, manualReset, signalled, name};
    return createEvent(security, manualReset, signalled, name);
}

TEST(ReplacerLockTest, EventIsAskedForWithRightsOfItsOwnAndAutomaticReset) {
    const test::ImportPatch<CreateNamedEvent> creating("CreateEventA", &NoteEvent);
    ASSERT_TRUE(creating.IsInPlace());
    createEvent = creating.Genuine();
    { const ReplacerLock lock; }
    EXPECT_NE(nullptr, askedEvent.security);
    EXPECT_FALSE(askedEvent.manualReset);
    EXPECT_FALSE(askedEvent.signalled);
    EXPECT_EQ("Quillon - Depot - Replacers", askedEvent.name);
}

using Wait = decltype(&WaitForSingleObject);
Wait wait = nullptr;
int waits = 0;

DWORD WINAPI CountWait(HANDLE /*handle*/, DWORD /*milliseconds*/) {
    ++waits;
    return WAIT_OBJECT_0;
}

TEST(ReplacerLockTest, ReleaseSignalsTheEventForExactlyOne) {
    auto lock = std::make_unique<ReplacerLock>();
    const UniqueHandle event = OpenReplacerEvent();
    ASSERT_TRUE(event);
    lock.reset();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event.get(), 0));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event.get(), 0));
}

TEST(ReplacerLockTest, AnotherProcessWaitsUntilTheHolderIsDone) {
    auto lock = std::make_unique<ReplacerLock>();
    const test::ChildProcess waiter("open-own-cache", {"C:\\Users\\b"});
    EXPECT_EQ(test::ChildProcess::kStillRunning, waiter.ExitCode(kShort));
    lock.reset();
    EXPECT_EQ(0, waiter.ExitCode());
}

TEST(ReplacerLockTest, ThisProcessWaitsForAnotherOne) {
    const test::Signal ready(kReady);
    const test::Signal end(kEnd);
    const test::ChildProcess holder("hold-lock");
    ASSERT_TRUE(ready.Wait());
    const UniqueHandle event = OpenReplacerEvent();
    ASSERT_TRUE(event);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event.get(), kShort));
    end.Set();
    const ULONGLONG start = GetTickCount64();
    { const ReplacerLock lock; }
    EXPECT_LT(Elapsed(start), kReplacerWaitMilliseconds);
    EXPECT_EQ(0, holder.ExitCode());
}

TEST(ReplacerLockTest, HolderThatWasKilledAloneBlocksNoOther) {
    const test::Signal ready(kReady);
    const test::ChildProcess holder("hold-lock");
    ASSERT_TRUE(ready.Wait());
    holder.Kill();
    const ULONGLONG start = GetTickCount64();
    { const ReplacerLock lock; }
    EXPECT_LT(Elapsed(start), kReplacerWaitMilliseconds);
}

TEST(ReplacerLockTest, WaitForAKilledHolderEndsAndTheNextFindsTheLockFree) {
    const test::Signal ready(kReady);
    const test::ChildProcess holder("hold-lock");
    ASSERT_TRUE(ready.Wait());
    // Another waiter's handle keeps the event alive, unsignalled, after its holder has gone.
    const UniqueHandle event = OpenReplacerEvent();
    ASSERT_TRUE(event);
    holder.Kill();
    ULONGLONG start = GetTickCount64();
    { const ReplacerLock lock; }
    EXPECT_GE(Elapsed(start) + 50, kReplacerWaitMilliseconds);
    EXPECT_LT(Elapsed(start), 4 * kReplacerWaitMilliseconds);
    start = GetTickCount64();
    { const ReplacerLock lock; }
    EXPECT_LT(Elapsed(start), kReplacerWaitMilliseconds);
}

TEST(ReplacerLockTest, NameOfAnotherKindLeavesTheCallersUnlocked) {
    const UniqueHandle mutex(CreateMutexA(nullptr, FALSE, kReplacerEventName));
    const ULONGLONG start = GetTickCount64();
    { const ReplacerLock lock; }
    EXPECT_LT(Elapsed(start), kReplacerWaitMilliseconds);
}

TEST(ReplacerLockTest, EventOfSomebodyElseIsNeitherWaitedForNorSignalled) {
    const test::ImportPatch<Wait> waiting("WaitForSingleObject", &CountWait);
    ASSERT_TRUE(waiting.IsInPlace());
    wait = waiting.Genuine();
    waits = 0;
    for (const char* rights : {test::kOfSomebodyElse, test::kForNobodyHere}) {
        const UniqueHandle event = test::OthersEvent(kReplacerEventName, rights);
        ASSERT_TRUE(event);
        { const ReplacerLock lock; }
        EXPECT_EQ(0, waits);
        EXPECT_EQ(WAIT_TIMEOUT, wait(event.get(), 0));
    }
    const ReplacerLock first;
    { const ReplacerLock own; }
    EXPECT_EQ(1, waits);
}

TEST(ReplacerCacheTest, RandomContentsGiveBoundedTexts) {
    // Another seed comes with --gtest_shuffle --gtest_random_seed.
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    for (int round = 0; round < 200; ++round) {
        const auto other = OpenReplacerCache("C:\\Users\\a", "deu");
        auto* const bytes = reinterpret_cast<unsigned char*>(other->Data());
        std::generate_n(bytes, kBlockBytes, [&] {
            return static_cast<unsigned char>(round % 2 == 0 ? 1 + random() % 255 : random());
        });
        const auto cache = OpenReplacerCache("C:\\Users\\b", "fra");
        EXPECT_LE(SlotText(cache->Copy().applicationFolder).size(), kMacroSlotBytes);
        EXPECT_LE(SlotText(cache->Copy().transferUserName).size(), kMacroSlotBytes);
    }
}

TEST(ReplacerLockTest, ManyProcessesStartingAtOnceAllGetTheirOwnCache) {
    constexpr int kProcesses = 12;
    auto lock = std::make_unique<ReplacerLock>();
    std::vector<std::unique_ptr<test::ChildProcess>> processes;
    for (int i = 0; i < kProcesses; ++i) {
        processes.push_back(std::make_unique<test::ChildProcess>(
            "open-own-cache", test::Arguments{"C:\\Users\\" + std::to_string(i)}));
    }
    lock.reset();
    for (const auto& process : processes) EXPECT_EQ(0, process->ExitCode());
    EXPECT_FALSE(OpenReplacerEvent());
}

}  // namespace
}  // namespace depot
