#include "platform/shared_block.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/child_process.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/mapped_memory.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

constexpr char kName[] = "DepotTests - Shared block";
constexpr std::uint32_t kSize = 528;
constexpr char kJunk[] = "junk";

bool BlockExists(const std::string& name) {
    return UniqueHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str())) != nullptr;
}

char* Bytes(const SharedBlockLink& link) {
    return static_cast<char*>(link.view.get());
}

// Opens the block into a link that holds another one, so that an output left alone would show.
int Open(SharedBlockLink& link, const char* name, std::uint32_t size = kSize) {
    OpenSharedBlock("DepotTests - Other block", 16, link.handle, link.view);
    return OpenSharedBlock(name, size, link.handle, link.view);
}

void ExpectNothingOpened(const char* name, std::uint32_t size) {
    SharedBlockLink link;
    EXPECT_THAT(Open(link, name, size), Fails());
    EXPECT_EQ(nullptr, link.handle);
    EXPECT_EQ(nullptr, link.view);
}

// Opens the block and holds it until it is told to end; the exit code is what opening it returned.
int HoldBlock(const test::Arguments& arguments) {
    const test::Signal go(arguments[0] + " go");
    const test::Signal end(arguments[0] + " end");
    const UniqueHandle opened(CreateSemaphoreA(nullptr, 0, 100, (arguments[0] + " n").c_str()));
    if (!go.Wait()) return -1;
    SharedBlockLink link;
    const int result = OpenSharedBlock(arguments[0].c_str(), kSize, link.handle, link.view);
    ReleaseSemaphore(opened.get(), 1, nullptr);
    return link.view && end.Wait() ? result : -2;
}
const test::RoleRegistration holdBlock("hold-block", HoldBlock);

// Adds one to the number at the beginning of the block; the exit code is what it was before.
int CountUp(const test::Arguments& arguments) {
    SharedBlockLink link;
    if (OpenSharedBlock(arguments[0].c_str(), kSize, link.handle, link.view) != 0) return -1;
    return (*Bytes(link))++;
}
const test::RoleRegistration countUp("count-up", CountUp);

TEST(SharedBlockTest, NewBlockIsZeroFilledEveryTime) {
    for (int round = 0; round < 2; ++round) {
        SharedBlockLink link;
        ASSERT_THAT(Open(link, kName), IsDone());
        ASSERT_NE(nullptr, link.handle);
        ASSERT_NE(nullptr, link.view);
        EXPECT_EQ(std::string(kSize, '\0'), std::string(Bytes(link), kSize));
        std::memset(link.view.get(), 'j', kSize);
    }
}

TEST(SharedBlockTest, ExistingBlockKeepsItsContents) {
    SharedBlockLink first;
    SharedBlockLink second;
    ASSERT_THAT(Open(first, kName), IsDone());
    std::strcpy(Bytes(first), kJunk);
    EXPECT_THAT(Open(second, kName), Fails());
    ASSERT_NE(nullptr, second.view);
    EXPECT_STREQ(kJunk, Bytes(second));
    Bytes(second)[0] = 'J';
    EXPECT_STREQ("Junk", Bytes(first));
}

TEST(SharedBlockTest, UnnamedBlockIsTheProcesssOwn) {
    const std::string name = ProcessBlockName("Quillon - File Mapping - ");
    for (const char* unnamed : {static_cast<const char*>(nullptr), ""}) {
        SharedBlockLink link;
        EXPECT_FALSE(BlockExists(name));
        EXPECT_THAT(Open(link, unnamed), IsDone());
        EXPECT_TRUE(BlockExists(name));
    }
}

TEST(SharedBlockTest, ProcessIdStandsInEightDecimalDigits) {
    EXPECT_EQ("Block - 0x00001234", ProcessBlockName("Block - ", 1234));
    EXPECT_EQ("0x00000000", ProcessBlockName("", 0));
    EXPECT_EQ("0x99999999", ProcessBlockName("", 99999999));
    EXPECT_EQ("0x123456789", ProcessBlockName("", 123456789));
    EXPECT_EQ(ProcessBlockName("x", GetCurrentProcessId()), ProcessBlockName("x"));
}

TEST(SharedBlockTest, BlockThatCannotBeHadGivesNulls) {
    ExpectNothingOpened("with\\backslash", kSize);
    ExpectNothingOpened(std::string(300, 'x').c_str(), kSize);
    ExpectNothingOpened(kName, 0);
    const test::Signal otherKind("DepotTests - An event");
    ExpectNothingOpened("DepotTests - An event", kSize);
}

TEST(SharedBlockTest, ExistingBlockThatIsTooSmallGivesNoView) {
    SharedBlockLink small;
    SharedBlockLink large;
    ASSERT_THAT(Open(small, kName, 16), IsDone());
    EXPECT_THAT(Open(large, kName, 0x10000), Fails());
    EXPECT_NE(nullptr, large.handle);
    EXPECT_EQ(nullptr, large.view);
}

TEST(SharedBlockTest, ClosingEndsTheBlockAndMayBeRepeated) {
    SharedBlockLink link;
    ASSERT_THAT(Open(link, kName), IsDone());
    link.key = "key";
    for (int round = 0; round < 2; ++round) {
        CloseSharedBlock(link);
        EXPECT_EQ(nullptr, link.handle);
        EXPECT_EQ(nullptr, link.view);
        EXPECT_EQ("", link.key);
        EXPECT_FALSE(BlockExists(kName));
    }
}

TEST(SharedBlockTest, ClosingUnmapsTheViewAndReleasesTheHandle) {
    const std::size_t handles = test::CountOpenHandles();
    SharedBlockLink link;
    ASSERT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), IsDone());
    const void* const view = link.view.get();
    ASSERT_TRUE(test::IsMapped(view));
    EXPECT_EQ(handles + 1, test::CountOpenHandles());
    CloseSharedBlock(link);
    EXPECT_FALSE(test::IsMapped(view));
    EXPECT_EQ(handles, test::CountOpenHandles());
}

TEST(SharedBlockTest, OpeningReleasesWhatTheOutputsHeld) {
    SharedBlockLink link;
    ASSERT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), IsDone());
    const void* const old = link.view.get();
    EXPECT_THAT(OpenSharedBlock("with\\backslash", kSize, link.handle, link.view), Fails());
    EXPECT_FALSE(test::IsMapped(old));
    EXPECT_FALSE(BlockExists(kName));
}

using CreateMapping = decltype(&CreateFileMappingA);
using MapView = decltype(&MapViewOfFile);

// How the mapping was last asked for, and the view.
struct AskedMapping {
    HANDLE file;
    SECURITY_ATTRIBUTES* security;
    DWORD protection;
    DWORD highSize;
    DWORD lowSize;
    DWORD viewAccess;
    ULONGLONG viewOffset;
    SIZE_T viewSize;
};
AskedMapping asked;
CreateMapping createMapping = nullptr;
MapView mapView = nullptr;

HANDLE WINAPI NoteMapping(HANDLE file, SECURITY_ATTRIBUTES* security, DWORD protection,
                          DWORD highSize, DWORD lowSize, const char* name) {
    asked.file = file;
    asked.security = security;
    asked.protection = protection;
    asked.highSize = highSize;
    asked.lowSize = lowSize;
    return createMapping(file, security, protection, highSize, lowSize, name);
}

void* WINAPI NoteView(HANDLE mapping, DWORD access, DWORD high, DWORD low, SIZE_T size) {
    asked.viewAccess = access;
    asked.viewOffset = ULONGLONG{high} << 32 | low;
    asked.viewSize = size;
    return mapView(mapping, access, high, low, size);
}

void* WINAPI MapNothing(HANDLE, DWORD, DWORD, DWORD, SIZE_T) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

TEST(SharedBlockTest, BlocksLieInThePagingFileWithRightsOfTheirOwn) {
    const test::ImportPatch<CreateMapping> creating("CreateFileMappingA", &NoteMapping);
    const test::ImportPatch<MapView> mapping("MapViewOfFile", &NoteView);
    createMapping = creating.Genuine();
    mapView = mapping.Genuine();
    SharedBlockLink link;
    ASSERT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), IsDone());
    EXPECT_EQ(INVALID_HANDLE_VALUE, asked.file);
    EXPECT_NE(nullptr, asked.security);
    EXPECT_EQ(DWORD{PAGE_READWRITE}, asked.protection);
    EXPECT_EQ(0u, asked.highSize);
    EXPECT_EQ(kSize, asked.lowSize);
    EXPECT_EQ(DWORD{FILE_MAP_WRITE}, asked.viewAccess);
    EXPECT_EQ(0u, asked.viewOffset);
    EXPECT_EQ(kSize, asked.viewSize);
}

TEST(SharedBlockTest, NewBlockThatCannotBeMappedIsStillNew) {
    const test::ImportPatch<MapView> mapping("MapViewOfFile", &MapNothing);
    SharedBlockLink link;
    EXPECT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), IsDone());
    EXPECT_NE(nullptr, link.handle);
    EXPECT_EQ(nullptr, link.view);
}

TEST(SharedBlockTest, AnotherProcessReadsAndWritesTheSameBlock) {
    SharedBlockLink link;
    ASSERT_THAT(Open(link, kName), IsDone());
    *Bytes(link) = 41;
    EXPECT_EQ(41, test::ChildProcess("count-up", {kName}).ExitCode());
    EXPECT_EQ(42, *Bytes(link));
}

TEST(SharedBlockTest, BlockEndsWithTheLastProcessThatHoldsIt) {
    const test::Signal go(std::string(kName) + " go");
    go.Set();
    const UniqueHandle opened(
        CreateSemaphoreA(nullptr, 0, 100, (std::string(kName) + " n").c_str()));
    const test::ChildProcess holder("hold-block", {kName});
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(opened.get(), test::ChildProcess::kPatience));
    EXPECT_TRUE(BlockExists(kName));
    holder.Kill();
    EXPECT_FALSE(BlockExists(kName));
}

TEST(SharedBlockTest, OnlyOneOfManyProcessesCreatesTheBlock) {
    constexpr int kProcesses = 12;
    const std::string name = "DepotTests - Race";
    const test::Signal go(name + " go");
    const test::Signal end(name + " end");
    const UniqueHandle opened(CreateSemaphoreA(nullptr, 0, 100, (name + " n").c_str()));
    std::vector<std::unique_ptr<test::ChildProcess>> processes;
    for (int i = 0; i < kProcesses; ++i) {
        processes.push_back(
            std::make_unique<test::ChildProcess>("hold-block", test::Arguments{name}));
    }
    go.Set();
    for (int i = 0; i < kProcesses; ++i) {
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(opened.get(), test::ChildProcess::kPatience));
    }
    end.Set();
    int creators = 0;
    for (const auto& process : processes) {
        const int code = process->ExitCode();
        EXPECT_TRUE(code == 0 || code == 1) << code;
        creators += code == 1 ? 1 : 0;
    }
    EXPECT_EQ(1, creators);
}

}  // namespace
}  // namespace depot
