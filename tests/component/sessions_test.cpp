// Sessions: how they begin and end, and what they leave behind.
#include <set>
#include <vector>

#include "component/component.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot::test {
namespace {

using SessionsTest = ComponentTest;

TEST_F(SessionsTest, HandleLiesBelowTwoGigabytes) {
    std::vector<std::unique_ptr<Session>> sessions;
    std::set<LONG_PTR> handles;
    for (int count = 0; count < 1000; ++count) {
        sessions.push_back(std::make_unique<Session>(*api_));
        EXPECT_GT(*sessions.back(), 0);
        EXPECT_LE(*sessions.back(), 0x7FFFFFFF);
        handles.insert(*sessions.back());
    }
    EXPECT_EQ(1000u, handles.size());
}

TEST_F(SessionsTest, SessionServesEveryObjectOfTheClass) {
    Session session(*api_);
    const Com<IDepotIntrApi> other = CreateApi();
    const std::string file = folder_.MakeFile("a.kra", "[S]\r\nK=1\r\n");
    ASSERT_THAT(other->DPLoadFile(session.Address(), Text(file)), IsOk());
    EXPECT_EQ(L"1", Read(session, L"S", L"K"));
}

TEST_F(SessionsTest, SessionSurvivesTheObjectThatMadeIt) {
    Com<IDepotIntrApi> other = CreateApi();
    LONG_PTR handle = kJunkHandle;
    ASSERT_THAT(other->DPInitialize(&handle), IsOk());
    other.reset();
    EXPECT_THAT(api_->DPSetSelItemPath(handle, Text("x")), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
}

TEST_F(SessionsTest, SessionsAreIndependent) {
    Session first(*api_);
    Session second(*api_);
    ASSERT_THAT(
        api_->DPLoadFile(first.Address(), Text(folder_.MakeFile("1.kra", "[S]\r\nK=1\r\n"))),
        IsOk());
    ASSERT_THAT(
        api_->DPLoadFile(second.Address(), Text(folder_.MakeFile("2.kra", "[S]\r\nK=2\r\n"))),
        IsOk());
    EXPECT_EQ(L"1", Read(first, L"S", L"K"));
    EXPECT_EQ(L"2", Read(second, L"S", L"K"));
}

TEST_F(SessionsTest, NewSessionHasNoCurrentFile) {
    const Session session(*api_);
    OutText value;
    EXPECT_THAT(api_->DPGetProfileString(session, Text("S"), Text("K"), Text("D"), value, 100),
                IsRefused());
    EXPECT_TRUE(value.IsNull());
    ULONG number = 4711;
    EXPECT_THAT(api_->DPGetProfileInt(session, Text("S"), Text("K"), 5, &number), IsRefused());
    EXPECT_EQ(4711u, number);
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("V")), IsRefused());
    EXPECT_THAT(api_->DPFlushFile(session), IsRefused());
}

TEST_F(SessionsTest, LoadingWithHandleZeroMakesAUsableSession) {
    const std::string file = folder_.MakeFile("a.kra", "[S]\r\nK=1\r\n");
    LONG_PTR handle = 0;
    ASSERT_THAT(api_->DPLoadFile(&handle, Text(file)), IsOk());
    EXPECT_GT(handle, 0);
    EXPECT_LE(handle, 0x7FFFFFFF);
    EXPECT_EQ(L"1", Read(handle, L"S", L"K"));
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
}

TEST_F(SessionsTest, LoadingKeepsTheSessionItIsGiven) {
    Session session(*api_);
    LONG_PTR handle = session;
    ASSERT_THAT(api_->DPLoadFile(&handle, Text(folder_.At("a.kra"))), IsOk());
    EXPECT_EQ(session, handle);
}

TEST_F(SessionsTest, RunningSessionDoesNotSeeNewDepots) {
    DefineDepot("Old");
    const Session session(*api_);
    DefineDepot("New");
    OutText path;
    EXPECT_THAT(api_->DPGetPathFromDisplayName(session, Text("<New>\\a.kra"), path), IsRefused());
    EXPECT_TRUE(path.IsNull());
    const Session next(*api_);
    EXPECT_THAT(api_->DPGetPathFromDisplayName(next, Text("<New>\\a.kra"), path), IsOk());
    EXPECT_EQ(L"<New>\\a.kra", path.Value());
}

TEST_F(SessionsTest, ThousandDepotsAreAllReachable) {
    for (int number = 0; number < 1000; ++number) {
        depots_.Text("Depot" + std::to_string(number), "Path1", folder_.Path());
    }
    folder_.MakeFile("a.kra", "");
    const Session session(*api_);
    EXPECT_THAT(api_->DPFileExists(session, Text("<Depot0>\\a.kra")), IsOk());
    EXPECT_THAT(api_->DPFileExists(session, Text("<Depot999>\\a.kra")), IsOk());
}

TEST_F(SessionsTest, UserFolderIsLookedUpForEachSession) {
    product_.Text("", "UserDir", folder_.MakeFolder("Other\\Place\\User"));
    const Session session(*api_);
    OutText path;
    ASSERT_THAT(api_->DPGetPathFromDisplayName(session, Text("<My Depot>\\"), path), IsOk());
    EXPECT_EQ(Wide(folder_.At("Other\\Place\\")), path.Value());
}

// A second copy of the DLL, in a folder without the directory-service library.
class NoUserFolderTest : public ComponentTest {
protected:
    NoUserFolderTest() : lonely_(library_.CreateApi()) {
        EXPECT_NE(Library::Own().Module(), library_.Module());
    }

    // Makes a session for a file without a name.
    LONG_PTR LoadNothing() {
        LONG_PTR handle = 0;
        lonely_->DPLoadFile(&handle, Text());
        return handle;
    }

    const Library library_{CopyComponent(folder_)};
    Com<IDepotIntrApi> lonely_;
};

TEST_F(NoUserFolderTest, InitializingFailsWithHandleZero) {
    for (int count = 0; count < 3; ++count) {
        LONG_PTR handle = kJunkHandle;
        EXPECT_THAT(lonely_->DPInitialize(&handle), IsRefused());
        EXPECT_EQ(0, handle);
    }
}

TEST_F(NoUserFolderTest, FailedInitializingLeavesNoHandlesAndTheDllFreeToGo) {
    const auto fail = [&] {
        LONG_PTR handle = kJunkHandle;
        EXPECT_THAT(lonely_->DPInitialize(&handle), IsRefused());
    };
    for (int round = 0; round < 5; ++round) fail();
    const std::size_t handles = CountOpenHandles();
    const std::size_t blocks = CountHeapBlocks();
    constexpr std::size_t kRounds = 200;
    for (std::size_t round = 0; round < kRounds; ++round) fail();
    EXPECT_EQ(handles, CountOpenHandles());
    // The sessions themselves stay, nothing beyond them.
    EXPECT_LE(CountHeapBlocks(), blocks + kRounds);
    // And they hold nobody up.
    const std::string file = folder_.MakeFile("a.kra", "[S]\r\nK=1\r\n");
    LONG_PTR session = 0;
    ASSERT_THAT(lonely_->DPLoadFile(&session, Text(file)), IsOk());
    EXPECT_THAT(lonely_->DPUnInitialize(session), IsOk());
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    lonely_.reset();
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

// Counts the blocks of address space that a library takes.
class AddressSpaceLog {
public:
    explicit AddressSpaceLog(const Library& library)
        : patch_("VirtualAlloc", &Allocate, library.Module()) {
        genuine_ = patch_.Genuine();
        blocks = 0;
        refuses = false;
    }

    static inline int blocks = 0;
    static inline bool refuses = false;

private:
    static void* WINAPI Allocate(void* address, SIZE_T size, DWORD kind, DWORD protection) {
        void* const block = refuses ? nullptr : genuine_(address, size, kind, protection);
        if (block != nullptr) ++blocks;
        return block;
    }

    static inline decltype(&VirtualAlloc) genuine_ = nullptr;
    const ImportPatch<decltype(&VirtualAlloc)> patch_;
};

TEST_F(NoUserFolderTest, FailedInitializingKeepsTheSessionThatItBuilt) {
    const AddressSpaceLog log(library_);
    const auto blocksOf = [&](const auto& call) {
        log.blocks = 0;
        for (int round = 0; round < 3000; ++round) call();
        return log.blocks;
    };
    // The places of ended sessions are used again, those of failed ones never.
    blocksOf([&] { lonely_->DPUnInitialize(LoadNothing()); });
    EXPECT_EQ(0, blocksOf([&] { lonely_->DPUnInitialize(LoadNothing()); }));
    EXPECT_LT(5, blocksOf([&] {
                  LONG_PTR handle = kJunkHandle;
                  lonely_->DPInitialize(&handle);
              }));
}

TEST_F(NoUserFolderTest, WithoutMemoryThereIsNoSession) {
    const AddressSpaceLog log(library_);
    log.refuses = true;
    LONG_PTR handle = kJunkHandle;
    EXPECT_THAT(lonely_->DPInitialize(&handle), IsRefused());
    EXPECT_EQ(0, handle);
    EXPECT_EQ(0, LoadNothing());
    LONG count = 0;
    handle = kJunkHandle;
    EXPECT_THAT(lonely_->DPFindInit(&handle, Text(), Text(), APP_SKEIN, &count), IsRefused());
    EXPECT_EQ(0, handle);
    log.refuses = false;
    handle = LoadNothing();
    EXPECT_NE(0, handle);
    EXPECT_THAT(lonely_->DPUnInitialize(handle), IsOk());
}

TEST_F(NoUserFolderTest, DirectoryServiceIsNotTakenFromTheCurrentFolder) {
    char before[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(before), before);
    ASSERT_TRUE(SetCurrentDirectoryA(ProgramFolder().c_str()));
    LONG_PTR handle = kJunkHandle;
    EXPECT_THAT(lonely_->DPInitialize(&handle), IsRefused());
    EXPECT_EQ(0, handle);
    SetCurrentDirectoryA(before);
}

TEST_F(NoUserFolderTest, LoadingStillMakesAUsableSession) {
    const std::string file = folder_.MakeFile("a.kra", "[S]\r\nK=1\r\n");
    LONG_PTR handle = 0;
    ASSERT_THAT(lonely_->DPLoadFile(&handle, Text(file)), IsOk());
    ULONG value = 0;
    EXPECT_THAT(lonely_->DPGetProfileInt(handle, Text("S"), Text("K"), 5, &value), IsOk());
    EXPECT_EQ(1u, value);
    EXPECT_THAT(lonely_->DPUnInitialize(handle), IsOk());
}

TEST_F(NoUserFolderTest, ConfiguredDepotsAreStillFound) {
    DefineDepot("A");
    folder_.MakeFile("A\\a.kra", "");
    EXPECT_THAT(lonely_->DPFileExists(0, Text("<A>\\a.kra")), IsOk());
    OutText path;
    EXPECT_THAT(lonely_->DPGetDefaultDPPath(0, path), IsOk());
    EXPECT_EQ(L"<A>\\", path.Value());
}

// Calls that must leave nothing behind.
class LeftoversTest : public ComponentTest {
protected:
    LeftoversTest() {
        DefineDepot("A", "Depot A");
        folder_.MakeFile("A\\a.kra", "[S]\r\nK=1\r\n");
    }
};

TEST_F(LeftoversTest, CountingSeesWhatIsLeftBehind) {
    std::vector<std::unique_ptr<Session>> kept;
    EXPECT_GE(CountLeftovers([&] { kept.push_back(std::make_unique<Session>(*api_)); }), 50u);
}

TEST_F(LeftoversTest, TemporarySessionsLeaveNothing) {
    EXPECT_EQ(
        0u, CountLeftovers([&] {
            OutText path;
            EXPECT_THAT(api_->DPFileExists(0, Text("<A>\\a.kra")), IsOk());
            EXPECT_THAT(api_->DPFileExists(0, Text("<B>\\a.kra")), IsRefused());
            EXPECT_THAT(api_->DPGetDepotDisplayPath(0, Text("<A>\\a.kra"), path), IsOk());
            EXPECT_THAT(api_->DPGetDepotDisplayPath(0, Text("<B>\\a.kra"), path), IsRefused());
            EXPECT_THAT(api_->DPGetPathFromDisplayName(0, Text("<Depot A>\\a.kra"), path), IsOk());
            EXPECT_THAT(api_->DPGetPathFromDisplayName(0, Text("<Depot B>\\a.kra"), path),
                        IsRefused());
            EXPECT_THAT(api_->DPGetDefaultDPPath(0, path), IsOk());
            EXPECT_THAT(api_->DPPathConvertDPtoFS(Text("<A>\\a.kra"), path), IsOk());
            EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(), path), IsRefused());
        }));
}

TEST_F(LeftoversTest, EndedSessionsLeaveNothing) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  Session session(*api_);
                  EXPECT_THAT(api_->DPLoadFile(session.Address(), Text("<A>\\a.kra")), IsOk());
                  EXPECT_THAT(api_->DPLoadFile(session.Address(), Text("<A>\\b.kra")), IsOk());
                  EXPECT_THAT(api_->DPSetSelItemPath(session, Text("<A>\\a long enough path.kra")),
                              IsOk());
                  EXPECT_EQ(L"(default)", Read(session, L"S", L"K"));
                  EXPECT_THAT(api_->DPFlushFile(session), IsOk());
              }));
}

TEST_F(LeftoversTest, ObjectsAndLateBoundCallsLeaveNothing) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  const Com<IDepotIntrApi> api = CreateApi();
                  VARIANT argument = {};
                  V_VT(&argument) = VT_I4;
                  DISPPARAMS parameters = {&argument, nullptr, 1, 0};
                  VARIANT result = {};
                  EXPECT_THAT(api->Invoke(20, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                          &parameters, &result, nullptr, nullptr),
                              IsOk());
                  EXPECT_EQ(VT_BSTR, V_VT(&result));
                  VariantClear(&result);
              }));
}

}  // namespace
}  // namespace depot::test
