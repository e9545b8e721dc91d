// What the shell is asked to do: operations, flags, paths and windows.
#include "directory_pairs/pairs_fixture.h"
#include "fileops/publish.h"
#include "platform/error_text.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ShellCall {
    UINT operation = 0;
    FILEOP_FLAGS flags = 0;
    HWND window = nullptr;
    std::vector<std::string> sources;
    std::string target;
};

// How the shell answers; by default as it really does.
struct ShellAnswer {
    bool isGenuine = true;
    int result = 0;
    BOOL aborted = FALSE;
    DWORD lastError = 0;
    bool refusesDeletions = false;
    bool keepsLastError = false;
};

std::vector<ShellCall> calls;
ShellAnswer answer;
int(WINAPI* genuineShell)(SHFILEOPSTRUCTA*) = nullptr;

int WINAPI RecordShell(SHFILEOPSTRUCTA* request) {
    ShellCall call{request->wFunc, request->fFlags, request->hwnd, {}, {}};
    for (const char* path = request->pFrom; *path != '\0'; path += call.sources.back().size() + 1) {
        call.sources.emplace_back(path);
    }
    if (request->pTo != nullptr) {
        call.target = request->pTo;
        // The list of targets ends, too.
        EXPECT_EQ('\0', request->pTo[call.target.size() + 1]);
    }
    calls.push_back(call);
    if (answer.refusesDeletions && request->wFunc == FO_DELETE) return ERROR_ACCESS_DENIED;
    if (answer.isGenuine) return genuineShell(request);
    request->fAnyOperationsAborted = answer.aborted;
    if (!answer.keepsLastError) SetLastError(answer.lastError);
    return answer.result;
}

class ShellCallsTest : public PairWorldTest {
protected:
    ShellCallsTest() {
        calls.clear();
        answer = {};
        genuineShell = patch_.Genuine();
        EXPECT_TRUE(patch_.IsInPlace());
    }
    std::string Storage(const std::string& name) { return folder_.At(name); }
    // What a failure says without a path, or of one.
    static std::string Message(DWORD error, const char* path) {
        std::string text;
        FormatErrorText(error, path, "Quillon", &text, nullptr);
        return text;
    }
    int List(UINT operation, const std::vector<std::string>& sources, const std::string& target) {
        CDepotItems items;
        for (const std::string& source : sources) items.Append(Item(source).Clone());
        const CDepotItem to = Item(target);
        return ListOperation(items, target.empty() ? nullptr : &to, operation, 0x0614, window_,
                             &error_);
    }

    const HWND window_ = GetDesktopWindow();
    const ImportPatch<int(WINAPI*)(SHFILEOPSTRUCTA*)> patch_{"SHFileOperationA", &RecordShell};
};

TEST_F(ShellCallsTest, RenamingIsAQuietRename) {
    folder_.MakeFile("from\\a.kra", "1");
    EXPECT_THAT(MoveFile(world_.home, "<Home>\\from\\a.kra", "<Home>\\from\\b.kra", window_,
                         nullptr, &error_),
                IsDone());
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(UINT{FO_RENAME}, calls[0].operation);
    EXPECT_EQ(0x0210, calls[0].flags);
    EXPECT_EQ(window_, calls[0].window);
    EXPECT_THAT(calls[0].sources, ElementsAre(Storage("from\\a.kra")));
    EXPECT_EQ(Storage("from\\b.kra"), calls[0].target);
}

TEST_F(ShellCallsTest, MovingIntoADepotIsAQuietMove) {
    folder_.MakeFile("from\\a.kra", "1");
    EXPECT_THAT(MoveFile(world_.home, "<Home>\\from\\a.kra", "<Home>\\to\\b.kra", nullptr,
                         &world_.home, &error_),
                IsDone());
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(UINT{FO_MOVE}, calls[0].operation);
    EXPECT_EQ(0x0210, calls[0].flags);
    EXPECT_EQ(nullptr, calls[0].window);
}

TEST_F(ShellCallsTest, AnyResultButZeroAndAnythingAbortedIsAFailureWithTheSystemsText) {
    folder_.MakeFile("from\\a.kra", "1");
    const auto rename = [&] {
        error_ = "junk";
        return MoveFile(world_.home, "<Home>\\from\\a.kra", "<Home>\\from\\b.kra", nullptr, nullptr,
                        &error_);
    };
    const auto list = [&] {
        error_ = "junk";
        return List(FO_COPY, {"<Home>\\from\\a.kra"}, "<Home>\\to\\");
    };
    for (const ShellAnswer& failure : {ShellAnswer{false, 5, FALSE, ERROR_ACCESS_DENIED},
                                       ShellAnswer{false, -1, FALSE, ERROR_ACCESS_DENIED},
                                       ShellAnswer{false, 0, TRUE, ERROR_ACCESS_DENIED}}) {
        answer = failure;
        EXPECT_THAT(rename(), Fails());
        EXPECT_EQ(Message(ERROR_ACCESS_DENIED, Storage("from\\b.kra").c_str()), error_);
        EXPECT_THAT(list(), Fails());
        EXPECT_EQ(Message(ERROR_ACCESS_DENIED, nullptr), error_);
    }
    answer = {false, 5, FALSE, 0};
    EXPECT_THAT(rename(), Fails());
    EXPECT_EQ("junk", error_);
    EXPECT_THAT(list(), Fails());
    EXPECT_EQ("junk", error_);
    answer = {false, 0, FALSE, ERROR_ACCESS_DENIED};
    EXPECT_THAT(rename(), IsDone());
    EXPECT_THAT(list(), IsDone());
    EXPECT_EQ("junk", error_);
}

TEST_F(ShellCallsTest, FailureReportsNothingThatIsNotItsOwn) {
    const std::string plain = plain_.At("from\\a.kra"), target = plain_.At("from\\none\\b.kra");
    plain_.MakeFile("from\\a.kra", "1");
    world_.Directory().SetLastError(LDAP_INSUFFICIENT_RIGHTS);
    answer = {false, 5, FALSE, ERROR_ACCESS_DENIED};
    EXPECT_THAT(MoveFile(world_.work, plain, target, nullptr, nullptr, &error_), Fails());
    EXPECT_EQ(Message(ERROR_ACCESS_DENIED, target.c_str()), error_);
    // A shell that says nothing leaves what was there before.
    answer.keepsLastError = true;
    for (CDepot* const depot : {&world_.work, &world_.home}) {
        error_ = "junk";
        SetLastError(ERROR_WRITE_PROTECT);
        EXPECT_THAT(MoveFile(*depot, plain, target, nullptr, nullptr, &error_), Fails());
        EXPECT_EQ("junk", error_);
    }
    SetLastError(ERROR_WRITE_PROTECT);
    EXPECT_THAT(List(FO_COPY, {"<Home>\\from\\none.kra"}, "<Home>\\to\\"), Fails());
    EXPECT_EQ("junk", error_);
    EXPECT_THAT(MoveFile(world_.work, plain, "bare.kra", nullptr, nullptr, &error_), Fails());
    EXPECT_NE("junk", error_);
}

TEST_F(ShellCallsTest, MixedListIsOneCopyOfAllAndOneDeletionOfATemporaryFolder) {
    folder_.MakeFile("from\\a.kra", "1");
    folder_.MakeFile("from\\b.kra", "2");
    directory_.MakeFile("from\\c.kra", "3");
    EXPECT_THAT(List(FO_COPY, {"<Home>\\from\\a.kra", "<Work>\\from\\c.kra", "<Home>\\from\\b.kra"},
                     "<Home>\\to\\"),
                IsDone());
    ASSERT_EQ(2u, calls.size());
    EXPECT_EQ(UINT{FO_COPY}, calls[0].operation);
    EXPECT_EQ(0x0614, calls[0].flags);
    EXPECT_EQ(window_, calls[0].window);
    EXPECT_EQ(Storage("to\\"), calls[0].target);
    ASSERT_EQ(3u, calls[0].sources.size());
    EXPECT_EQ(Storage("from\\a.kra"), calls[0].sources[0]);
    EXPECT_EQ(Storage("from\\b.kra"), calls[0].sources[2]);
    EXPECT_EQ(UINT{FO_DELETE}, calls[1].operation);
    EXPECT_EQ(FOF_NOCONFIRMATION, calls[1].flags);
    EXPECT_EQ(window_, calls[1].window);
    EXPECT_EQ("", calls[1].target);
    ASSERT_EQ(1u, calls[1].sources.size());
    EXPECT_EQ(calls[1].sources[0] + "\\c.kra", calls[0].sources[1]);
    EXPECT_FALSE(Exists(calls[1].sources[0]));
}

TEST_F(ShellCallsTest, AllTemporaryFoldersAreDeletedAtOnceAlsoAfterAFailure) {
    directory_.MakeFile("from\\a.kra", "1");
    directory_.MakeFile("from\\b.kra", "2");
    for (const UINT operation : {FO_COPY, FO_MOVE, FO_DELETE}) {
        calls.clear();
        answer = {false, 5, FALSE, 0};
        EXPECT_THAT(List(operation, {"<Work>\\from\\a.kra", "<Work>\\from\\b.kra"}, "<Home>\\to\\"),
                    Fails());
        ASSERT_EQ(2u, calls.size());
        EXPECT_EQ(operation, calls[0].operation);
        EXPECT_EQ(UINT{FO_DELETE}, calls[1].operation);
        EXPECT_EQ(FOF_NOCONFIRMATION, calls[1].flags);
        EXPECT_EQ(2u, calls[1].sources.size());
        EXPECT_EQ("1", directory_.Bytes("from\\a.kra"));
        EXPECT_EQ("2", directory_.Bytes("from\\b.kra"));
    }
}

TEST_F(ShellCallsTest, TemporaryFolderThatStaysChangesNothingElse) {
    directory_.MakeFile("from\\a.kra", "1");
    directory_.MakeFile("from\\b.kra", "2");
    answer.refusesDeletions = true;
    EXPECT_THAT(List(FO_COPY, {"<Work>\\from\\a.kra"}, "<Home>\\to\\"), IsDone());
    EXPECT_THAT(List(FO_MOVE, {"<Work>\\from\\b.kra"}, "<Home>\\to\\"), IsDone());
    EXPECT_EQ("junk", error_);
    EXPECT_EQ((StoreContents{{"a.kra", "1"}, {"b.kra", "2"}}), folder_.Contents("to"));
    EXPECT_FALSE(directory_.Holds("from\\b.kra"));
    answer = {};
    const std::vector<ShellCall> refused = calls;
    for (const ShellCall& call : refused) {
        if (call.operation != FO_DELETE) continue;
        EXPECT_TRUE(RemoveFoldersQuietly(call.sources, nullptr));
    }
}

TEST_F(ShellCallsTest, EntriesStayWhenTheShellCallsAMoveDoneAndLeavesTheirCopies) {
    directory_.MakeFile("from\\a.kra", "1");
    answer = {false, 0, FALSE, 0};
    EXPECT_THAT(List(FO_MOVE, {"<Work>\\from\\a.kra"}, "<Home>\\to\\"), Fails());
    EXPECT_EQ("1", directory_.Bytes("from\\a.kra"));
}

TEST_F(ShellCallsTest, ListIntoADirectoryNeverCallsTheShell) {
    folder_.MakeFile("from\\a.kra", "1");
    directory_.MakeFile("from\\b.kra", "2");
    for (const UINT operation : {FO_COPY, FO_RENAME}) {
        List(operation, {"<Home>\\from\\a.kra", "<Work>\\from\\b.kra"}, "<Work>\\to\\");
    }
    EXPECT_THAT(List(FO_MOVE, {"<Work>\\from\\b.kra"}, "<Work>\\to\\moved\\"), IsDone());
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ShellCallsTest, MovedSourceIsDeletedByTheShellWithItsWindow) {
    folder_.MakeFile("from\\a.kra", "1");
    const CDepotItem target = Item("<Work>\\to\\a.kra");
    EXPECT_THAT(ItemOperation(Item("<Home>\\from\\a.kra"), &target, FO_MOVE, window_, &error_),
                IsDone());
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(UINT{FO_DELETE}, calls[0].operation);
    EXPECT_EQ(FOF_NOCONFIRMATION, calls[0].flags);
    EXPECT_EQ(window_, calls[0].window);
    EXPECT_EQ("", calls[0].target);
    EXPECT_THAT(calls[0].sources, ElementsAre(Storage("from\\a.kra")));
}

TEST_F(ShellCallsTest, MoveCountsAsDoneWhenTheShellCannotDeleteTheSource) {
    folder_.MakeFile("from\\a.kra", "1");
    answer = {false, 5, FALSE, ERROR_ACCESS_DENIED};
    EXPECT_THAT(OnItem(FO_MOVE, "<Home>\\from\\a.kra", "<Work>\\to\\a.kra"), IsDone());
    EXPECT_EQ("1", directory_.Bytes("to\\a.kra"));
    EXPECT_EQ("1", folder_.Bytes("from\\a.kra"));
    EXPECT_EQ("junk", error_);
}

TEST_F(ShellCallsTest, FilesOfOneNameAreNotMovedTogetherWhenTheShellMayNotAsk) {
    const std::vector<std::string> sources = {"<Home>\\from\\a.kra", "<Home>\\from\\other\\A.kra",
                                              "<Home>\\from\\dir"};
    folder_.MakeFile("from\\a.kra", "1");
    folder_.MakeFile("from\\other\\A.kra", "2");
    folder_.MakeFile("from\\dir\\b.kra", "3");
    const StoreContents before = folder_.Contents();
    EXPECT_THAT(OnList(FO_MOVE, sources, "<Home>\\to"), Fails());
    EXPECT_EQ(Message(ERROR_ALREADY_EXISTS, nullptr), error_);
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(before, folder_.Contents());
}

TEST_F(ShellCallsTest, FilesOfOneNameReachAShellThatReplacesNothingUnasked) {
    CDepotItems items;
    items.Append(Item("<Home>\\from\\a.kra").Clone());
    items.Append(Item("<Home>\\from\\other\\A.kra").Clone());
    const CDepotItem to = Item("<Home>\\to");
    answer = {false, 0, FALSE, 0};
    for (const auto& [operation, flags] : {std::pair<UINT, FILEOP_FLAGS>(FO_COPY, kQuietFlags),
                                           {FO_DELETE, kQuietFlags},
                                           {FO_MOVE, 0},
                                           {FO_MOVE, FOF_NOCONFIRMATION | FOF_RENAMEONCOLLISION}}) {
        calls.clear();
        const CDepotItem* const target = operation == FO_DELETE ? nullptr : &to;
        EXPECT_THAT(ListOperation(items, target, operation, flags, nullptr, &error_), IsDone());
        ASSERT_EQ(1u, calls.size());
        EXPECT_EQ(2u, calls[0].sources.size());
    }
}

TEST_F(ShellCallsTest, NothingThatHasNoPlaceReachesTheShell) {
    folder_.MakeFile("from\\a.kra", "1");
    const CDepotItem nowhere;
    CDepotItems items;
    EXPECT_THAT(ListOperation(items, &nowhere, FO_COPY, kQuietFlags, nullptr, &error_), IsDone());
    items.Append(Item("<Home>\\from\\a.kra").Clone());
    EXPECT_THAT(ListOperation(items, &nowhere, FO_COPY, kQuietFlags, nullptr, &error_), Fails());
    EXPECT_THAT(MoveFile(world_.home, "<Home>\\from\\a.kra", "", nullptr, nullptr, &error_),
                Fails());
    EXPECT_THAT(List(FO_COPY, {"<Home>\\from\\a.kra"},
                     "<Home>\\" + std::string(261 - Storage("").size(), 'x')),
                Fails());
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ShellCallsTest, PublishingIsAQuietCopyForEachFile) {
    const ScratchKey product(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\Wharfside");
    const ScratchKey depots(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots");
    product.Text("", "UserDir", world_.folder.MakeFolder("Farrow\\User"));
    depots.Text("Home", "Path1", folder_.At(""));
    plain_.MakeFile("c.cfg", "1");
    folder_.MakeFile("p.kra", "[Skein]\r\nCount=2\r\n[Clients]\r\nC1=" + plain_.Path("c.cfg") +
                                  "\r\nC2=u:d.cfg\r\n");
    DepotSession session;
    session.LoadFile("<Home>\\p.kra");
    PublishDependentFiles(session);
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(UINT{FO_COPY}, calls[0].operation);
    EXPECT_EQ(0x0210, calls[0].flags);
    EXPECT_EQ(nullptr, calls[0].window);
    EXPECT_THAT(calls[0].sources, ElementsAre(plain_.Path("c.cfg")));
    EXPECT_EQ(folder_.At(""), calls[0].target);
}

}  // namespace
}  // namespace depot::test
