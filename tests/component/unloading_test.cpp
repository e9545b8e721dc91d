// The end of the DLL in a process that lives on.
#include "component/component.h"
#include "component/scripted_dialog.h"
#include "support/box_log.h"
#include "support/results.h"

namespace depot::test {
namespace {

// A session that its client forgets.
LONG_PTR Forget(const Library& library) {
    LONG_PTR session = 0;
    EXPECT_THAT(library.CreateApi()->DPInitialize(&session), IsOk());
    return session;
}

bool IsLive(const Library& library, LONG_PTR session) {
    return library.CreateApi()->DPSetSelItemPath(session, Text("x")) == S_OK;
}

// A copy of the component that only this test loads.
class UnloadingTest : public ComponentTest {
protected:
    ScratchFolder place_;
    const std::string copy_ = CopyComponent(place_, "qdirsvc.dll");
};

TEST_F(UnloadingTest, SessionsLeftAreEndedBeforeTheDllReportsThatItCanUnload) {
    const Library library(copy_);
    const LONG_PTR session = Forget(library);
    EXPECT_TRUE(IsLive(library, session));
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
    EXPECT_FALSE(IsLive(library, session));
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
}

TEST_F(UnloadingTest, SessionsStayAsLongAsTheDllCannotGo) {
    const Library library(copy_);
    const Com<IDepotIntrApi> api = library.CreateApi();
    const LONG_PTR session = Forget(library);
    EXPECT_THAT(library.CanUnloadNow(), IsRefused());
    EXPECT_TRUE(IsLive(library, session));
}

TEST_F(UnloadingTest, CallAtWorkKeepsTheDllWithoutAnObject) {
    ScriptedDialogs dialogs;
    dialogs.result = 0;
    const Library library(copy_);
    Com<IDepotIntrApi> api = library.CreateApi();
    LONG_PTR session = 0;
    ASSERT_THAT(api->DPInitialize(&session), IsOk());
    HRESULT meanwhile = E_FAIL;
    dialogs.whileShown = [&] {
        api.reset();
        meanwhile = library.CanUnloadNow();
    };
    OutText path;
    IDepotIntrApi* const caller = api.get();
    EXPECT_THAT(
        caller->DPBrowse(session, APP_SKEIN, PROMPT_OPEN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, path),
        IsRefused());
    EXPECT_THAT(meanwhile, IsRefused());
    EXPECT_TRUE(IsLive(library, session));
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
}

TEST_F(UnloadingTest, DllWorksOnAfterItReportedThatItCanUnload) {
    const Library library(copy_);
    Forget(library);
    ASSERT_THAT(library.CanUnloadNow(), IsOk());
    const LONG_PTR session = Forget(library);
    EXPECT_TRUE(IsLive(library, session));
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
}

// The libraries that the component loads, and that are nobody else's in this program.
class RoundsTest : public ComponentTest {
protected:
    RoundsTest() {
        depots_.Text("Gone", "Path1", "dc=test");
        depots_.Dword("Gone", "Type1", 1);
        depots_.Text("Gone", "Host1", "127.0.0.1");
        depots_.Dword("Gone", "Port1", 1);
        depots_.Text("Gone", "Authentication1", "Anonymous");
    }

    // Uses what the component loads: its directory service and the system's directory client.
    void UseLibraries(const Library& library) {
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR session = 0;
        EXPECT_THAT(api->DPInitialize(&session), IsOk());
        EXPECT_THAT(api->DPFileExists(session, Text("<Gone>\\a.kra")), IsRefused());
        EXPECT_TRUE(IsLoaded("wldap32.dll"));
        EXPECT_TRUE(IsLoaded(place_.At("qdirsvc.dll")));
    }
    void ExpectNoneIsLeft() {
        EXPECT_FALSE(IsLoaded("wldap32.dll"));
        EXPECT_FALSE(IsLoaded(place_.At("qdirsvc.dll")));
        EXPECT_FALSE(IsLoaded(copy_));
    }
    static bool IsLoaded(const std::string& path) {
        return GetModuleHandleA(path.c_str()) != nullptr;
    }

    ScratchFolder place_;
    const std::string copy_ = CopyComponent(place_, "qdirsvc.dll");
    BoxLog boxes_;
};

TEST_F(RoundsTest, LoadAndFreeLeaveNoLibrary) {
    ASSERT_FALSE(IsLoaded("wldap32.dll"));
    for (int round = 0; round < 5; ++round) {
        UseLibraries(Library(copy_));
        ExpectNoneIsLeft();
    }
}

TEST_F(RoundsTest, LoadQuestionAndFreeLeaveNoLibrary) {
    ASSERT_FALSE(IsLoaded("wldap32.dll"));
    for (int round = 0; round < 5; ++round) {
        {
            const Library library(copy_);
            UseLibraries(library);
            EXPECT_THAT(library.CanUnloadNow(), IsOk());
        }
        ExpectNoneIsLeft();
    }
}

// The product's own library is not alone.
TEST_F(ComponentTest, DirectoryServiceThatNeedsALibraryOfItsFolderServes) {
    ScratchFolder place;
    const std::string part = "depot_test_part.dll";
    const std::string copy = CopyComponent(place, "dependent_service\\qdirsvc.dll");
    ASSERT_TRUE(CopyFileA((ProgramFolder() + "dependent_service\\" + part).c_str(),
                          place.At(part).c_str(), TRUE));
    const Library library(copy);
    LONG_PTR session = 0;
    EXPECT_THAT(library.CreateApi()->DPInitialize(&session), IsOk());
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
}

}  // namespace
}  // namespace depot::test
