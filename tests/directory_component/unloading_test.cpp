// Files of a directory that are still open when the DLL goes.
#include "component/component.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/import_patch.h"
#include "support/results.h"
#include "support/test_folders.h"
#include "support/unseen_host.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";
constexpr ULONGLONG kAtMost = 2000;

// What the client does while the component shows a message box, which is confirmed at once.
std::function<void()> whileShown;
int boxesShown = 0;

int WINAPI ActAndConfirm(HWND, const char*, const char*, UINT) {
    ++boxesShown;
    if (whileShown) whileShown();
    return IDOK;
}

// The boxes of one library.
class BoxesOf {
public:
    explicit BoxesOf(const Library& library)
        : showing_("MessageBoxA", &ActAndConfirm, library.Module()) {
        boxesShown = 0;
        EXPECT_TRUE(showing_.IsInPlace());
    }
    ~BoxesOf() { whileShown = nullptr; }
    BoxesOf(const BoxesOf&) = delete;
    BoxesOf& operator=(const BoxesOf&) = delete;

private:
    const ImportPatch<decltype(&MessageBoxA)> showing_;
};

// A copy of the component that only this test loads, and a directory depot behind a relay.
class DirectoryUnloadingTest : public ComponentTest {
protected:
    DirectoryUnloadingTest() {
        DefineDirectoryDepot(depots_, "Corp", relay_, base_);
        for (const char* name : {"a.kra", "b.kra"}) server_.AddFile(name, base_, kOld);
    }
    ~DirectoryUnloadingTest() override { server_.Disturb(relay_, "not"); }

    // Leaves a session behind that has loaded the file and, where wanted, changed it.
    LONG_PTR Forget(const std::string& name, bool changed) {
        const Com<IDepotIntrApi> api = library_->CreateApi();
        LONG_PTR session = 0;
        EXPECT_THAT(api->DPLoadFile(&session, Text("<Corp>\\" + name)), IsOk());
        if (changed) {
            EXPECT_THAT(api->DPSetProfileString(session, Text("S"), Text("K"), Text("new")),
                        IsOk());
        }
        return session;
    }
    // Leaves a changed file behind whose server has gone.
    void ForgetWithoutAServer() {
        Forget("a.kra", true);
        server_.Disturb(relay_, "close");
    }
    bool IsLive(LONG_PTR session) {
        return library_->CreateApi()->DPSetSelItemPath(session, Text("x")) == S_OK;
    }
    std::string Contents(const std::string& name) {
        return DirectoryTestFolder(server_, base_, {}).Bytes(name);
    }
    // Frees the library without a question. Returns how long that took.
    ULONGLONG Free() {
        const ULONGLONG start = GetTickCount64();
        library_.reset();
        return GetTickCount64() - start;
    }
    DirectoryInfo& Info() {
        if (!info_) info_.emplace(ServerKey("127.0.0.1", relay_));
        return *info_->Access();
    }

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
    const unsigned relay_ = server_.Relay();
    CleanWorkingFiles clean_;
    ScratchFolder place_;
    std::optional<Library> library_{CopyComponent(place_, "qdirsvc.dll")};
    std::optional<DirectoryInfoBlock> info_;
};

TEST_F(DirectoryUnloadingTest, AskedDllStoresTheChangedFilesOfSessionsLeft) {
    Forget("a.kra", true);
    Forget("b.kra", false);
    EXPECT_THAT(WorkingCopies(), SizeIs(2));
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_EQ(kNew, Contents("a.kra"));
    EXPECT_EQ(kOld, Contents("b.kra"));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(DirectoryUnloadingTest, FreedDllKeepsChangedFilesLocallyAndAsksNoServer) {
    const BoxLog boxes;
    Forget("a.kra", true);
    Forget("b.kra", false);
    server_.Mark();
    EXPECT_GT(kAtMost, Free());
    EXPECT_EQ((OperationCounts{}), server_.Counts());
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_EQ("a ", RecoveredFiles().front().substr(RecoveredFolder().size() + 1, 2));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
    EXPECT_EQ(kOld, Contents("a.kra"));
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

TEST_F(DirectoryUnloadingTest, ServerThatNeverAnswersDoesNotHoldTheFreedDll) {
    Forget("a.kra", true);
    server_.Disturb(relay_, "hold");
    EXPECT_GT(kAtMost, Free());
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryUnloadingTest, FreedDllLeavesAFileThatItCannotReadWhereItIs) {
    Forget("a.kra", true);
    ASSERT_THAT(WorkingCopies(), SizeIs(1));
    const std::string path = WorkingCopies().front();
    UniqueHandle other(OwnFile(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr)));
    ASSERT_TRUE(other);
    EXPECT_GT(kAtMost, Free());
    other.reset();
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_EQ(kNew, FileBytes(path));
}

TEST_F(DirectoryUnloadingTest, FreedDllDoesNotTurnPromptingOff) {
    Forget("a.kra", true);
    DefineDirectoryDepot(depots_, "Corp", relay_, base_);
    server_.Disturb(relay_, "close");
    Free();
    EXPECT_EQ(0u, Info().noPrompt);
}

TEST_F(DirectoryUnloadingTest, AskedDllThatCannotAskTheUserDoesNotTurnPromptingOff) {
    // The bind fails, and there is no dialog to ask for other credentials.
    ForgetWithoutAServer();
    const BoxesOf boxes(*library_);
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_EQ(0u, Info().noPrompt);
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_LT(0, boxesShown);
}

TEST_F(DirectoryUnloadingTest, AskedDllThatNoPersonSeesShowsNothingAndKeepsChangedFiles) {
    ForgetWithoutAServer();
    const BoxesOf boxes(*library_);
    const UnseenHost host(library_->Module());
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_EQ(0, boxesShown);
    EXPECT_FALSE(host.Taken().empty());
    EXPECT_EQ(0u, Info().noPrompt);
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

// The write-back shows boxes, in which the client's windows work on.
using QuestionTest = DirectoryUnloadingTest;

TEST_F(QuestionTest, QuestionThatIsBeingAnsweredMakesAnotherOneANo) {
    const BoxesOf boxes(*library_);
    ForgetWithoutAServer();
    HRESULT inside = E_FAIL;
    whileShown = [&] { inside = library_->CanUnloadNow(); };
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_THAT(inside, IsRefused());
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

TEST_F(QuestionTest, ObjectThatIsMadeMeanwhileMakesTheAnswerANo) {
    const BoxesOf boxes(*library_);
    ForgetWithoutAServer();
    Com<IDepotIntrApi> api;
    whileShown = [&] { api = library_->CreateApi(); };
    EXPECT_THAT(library_->CanUnloadNow(), IsRefused());
    whileShown = nullptr;
    api.reset();
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
}

TEST_F(QuestionTest, SessionThatIsMadeMeanwhileIsLeftAliveAndMakesTheAnswerANo) {
    const BoxesOf boxes(*library_);
    ForgetWithoutAServer();
    LONG_PTR session = 0;
    whileShown = [&] {
        if (session == 0) {
            EXPECT_THAT(library_->CreateApi()->DPInitialize(&session), IsOk());
        }
    };
    EXPECT_THAT(library_->CanUnloadNow(), IsRefused());
    whileShown = nullptr;
    EXPECT_TRUE(IsLive(session));
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_FALSE(IsLive(session));
}

TEST_F(QuestionTest, RepeatedQuestionShowsNothingAgain) {
    const BoxesOf boxes(*library_);
    ForgetWithoutAServer();
    EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    const int shown = boxesShown;
    for (int round = 0; round < 1000; ++round) EXPECT_THAT(library_->CanUnloadNow(), IsOk());
    EXPECT_EQ(shown, boxesShown);
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

}  // namespace
}  // namespace depot::test
