// Transfers between the stores while system calls fail: what is moved is never lost, a success is
// complete, and no file stands half-written under its name.
#include "directory_files/directory_world.h"
#include "faults/fault_series.h"
#include "fileops/enumerate.h"
#include "fileops/item_operations.h"
#include "support/directory_transfer.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::Fault;
using test::FaultKind;
using test::FileBytes;
using test::kDone;
using test::kFailed;
using test::RunWithFaults;
using testing::IsEmpty;

// The calls of this program itself fail, so that the layer is there for the operation alone.
class TransferFaultsTest : public test::DirectoryWorldTest {
protected:
    // The result of an operation; one that memory ran out for has failed.
    template <class Operation>
    int Result(const Operation& operation) {
        int result = kFailed;
        try {
            result = operation();
        } catch (const std::bad_alloc&) {
            result = kFailed;
        }
        ForgetConnection();
        return result;
    }

    // A connection that failed for good goes with its object, which the depot makes anew.
    void ForgetConnection() {
        CDepotPath* const location = work_->paths->ActiveLocation();
        location->type = kFolderLocation;
        try {
            work_->DirectoryConnection();
        } catch (const std::bad_alloc&) {
            // The old object is deleted before the new one is made.
        }
        location->type = kDirectoryLocation;
    }

    void ForgetLastRun() {
        test::ForgetServer(server_.Port());
        // A prompt that nobody answered has emptied it.
        work_->paths->ActiveLocation()->password = test::kEditorPassword;
        for (const std::string& folder : TemporaryFolders()) RemoveFolder(folder);
    }
    static void RemoveFolder(const std::string& path) {
        const std::string list = path + '\0';
        SHFILEOPSTRUCTA request = {};
        request.wFunc = FO_DELETE;
        request.pFrom = list.c_str();
        request.fFlags = FOF_NO_UI;
        SHFileOperationA(&request);
    }
    static std::vector<std::string> TemporaryFolders() {
        char folder[MAX_PATH] = {};
        const DWORD length = GetTempPathA(sizeof(folder), folder);
        return test::FilesIn(std::string(folder, length - 1), "Dir*");
    }
    void RemoveTree(const std::string& dn) { world_.Connected().DeleteTree(dn, nullptr); }

    // The two files of a tree of entries, "(missing)" each that is not there.
    std::string TreeAt(const std::string& dn) {
        return Contents("cn=a.kra," + dn) + " " + Contents("cn=b.kra,cn=sub," + dn);
    }
    std::string LocalTreeAt(const std::string& folder) {
        return LocalFile(folder + "\\a.kra") + " " + LocalFile(folder + "\\sub\\b.kra");
    }
    static std::string LocalFile(const std::string& path) {
        return Exists(path) ? FileBytes(path) : "(missing)";
    }
    // Each file of a tree is whole or not there.
    static void ExpectWholeFiles(const std::string& tree) {
        EXPECT_THAT(
            tree, testing::AnyOf(kTree, "1111 (missing)", "(missing) 2222", "(missing) (missing)"));
    }
    // Nothing is left in the temporary folder unless it could not be removed, which needs memory.
    static void ExpectNoTemporaryFolders(const std::optional<Fault>& failing) {
        const bool noMemory = failing == FaultKind::kMemory && failing->onwards;
        if (failing == FaultKind::kFile || noMemory) return;
        EXPECT_THAT(TemporaryFolders(), IsEmpty());
    }

    std::string MakeLocalTree() {
        world_.folder.MakeFolder("tree\\sub");
        Make("tree\\a.kra", "1111");
        Make("tree\\sub\\b.kra", "2222");
        return At("tree");
    }
    void MakeEntries(const std::string& dn) {
        world_.Connected().AddFolderEntry(dn, dn.substr(3, dn.find(',') - 3), nullptr);
        world_.Connected().AddFolderEntry("cn=sub," + dn, "sub", nullptr);
        world_.Connected().AddFileEntry("cn=a.kra," + dn, "a.kra", "1111", 4);
        world_.Connected().AddFileEntry("cn=b.kra,cn=sub," + dn, "b.kra", "2222", 4);
    }

    // `prepare` runs before each move.
    void MoveAFolder(const std::function<void()>& prepare) {
        const std::string from = DN("cn=from");
        const std::string to = DN("cn=to");
        RunWithFaults({
            .prepare =
                [&] {
                    ForgetLastRun();
                    RemoveTree(to);
                    MakeEntries(from);
                },
            .operate =
                [&] {
                    result_ = Result([&] {
                        prepare();
                        return MoveEntry(Directory(), from, to, &error_);
                    });
                },
            .verify =
                [&](std::optional<Fault> failing) {
                    ExpectWholeFiles(TreeAt(to));
                    EXPECT_TRUE(TreeAt(from) == kTree || TreeAt(to) == kTree);
                    if (result_ == kDone) {
                        EXPECT_EQ(kTree, TreeAt(to));
                    }
                    EXPECT_TRUE(failing || result_ == kDone);
                    ExpectNoTemporaryFolders(failing);
                },
        });
    }

    static constexpr char kTree[] = "1111 2222";
    test::FaultLayer layer_{GetModuleHandleA(nullptr)};
    int result_ = kFailed;
};

TEST_F(TransferFaultsTest, UploadOfATreeIsCompleteOrFails) {
    const std::string folder = MakeLocalTree();
    const std::string dn = DN("cn=up");
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                RemoveTree(dn);
            },
        .operate =
            [&] {
                result_ = Result([&] {
                    return Upload(Directory(), folder, dn, ExistingEntries::kRefuse, &error_);
                });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(kTree, LocalTreeAt(folder));
                ExpectWholeFiles(TreeAt(dn));
                if (result_ == kDone) {
                    EXPECT_EQ(kTree, TreeAt(dn));
                }
                EXPECT_TRUE(failing || result_ == kDone);
            },
    });
}

TEST_F(TransferFaultsTest, DownloadOfATreeIsCompleteOrFails) {
    const std::string dn = DN("cn=tree");
    const std::string folder = At("down");
    MakeEntries(dn);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                RemoveFolder(folder);
            },
        .operate =
            [&] { result_ = Result([&] { return Download(Directory(), dn, folder, &error_); }); },
        .verify =
            [&](std::optional<Fault> failing) {
                const std::string tree = LocalTreeAt(folder);
                EXPECT_EQ(kTree, TreeAt(dn));
                // What cannot be written can often not be removed either.
                if (failing != FaultKind::kFile || !failing->onwards) ExpectWholeFiles(tree);
                if (result_ == kDone) {
                    EXPECT_EQ(kTree, tree);
                }
                EXPECT_TRUE(failing || result_ == kDone);
            },
    });
}

TEST_F(TransferFaultsTest, MovedFolderIsCompleteUnderOneOfItsNames) {
    MoveAFolder([] {});
}

TEST_F(TransferFaultsTest, MovedFolderThatIsCopiedIsCompleteUnderOneOfItsNames) {
    MoveAFolder([&] { test::RefuseTreeRenames(Directory()); });
}

TEST_F(TransferFaultsTest, CopyOfATreeIsCompleteOrFails) {
    const std::string from = DN("cn=from");
    const std::string to = DN("cn=to");
    MakeEntries(from);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                RemoveTree(to);
            },
        .operate =
            [&] {
                result_ = Result([&] {
                    return CopyEntry(Directory(), from, Directory(), to, ExistingEntries::kRefuse,
                                     &error_);
                });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(kTree, TreeAt(from));
                ExpectWholeFiles(TreeAt(to));
                if (result_ == kDone) {
                    EXPECT_EQ(kTree, TreeAt(to));
                }
                EXPECT_TRUE(failing || result_ == kDone);
                ExpectNoTemporaryFolders(failing);
            },
    });
}

TEST_F(TransferFaultsTest, FileMovedIntoTheDirectoryIsInOneOfTheStores) {
    const std::string source = At("h\\m.kra");
    const std::string dn = DN("cn=m.kra");
    const CDepotItem item("<Home>\\m.kra", &home_);
    const CDepotItem target("<Work>\\m.kra", work_);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                Make("h\\m.kra", "3333");
                RemoveTree(dn);
            },
        .operate =
            [&] {
                result_ =
                    Result([&] { return ItemOperation(item, &target, FO_MOVE, nullptr, &error_); });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(LocalFile(source) == "3333" || Contents(dn) == "3333");
                EXPECT_THAT(Contents(dn), testing::AnyOf("3333", "(missing)"));
                if (result_ == kDone) {
                    EXPECT_EQ("3333", Contents(dn));
                }
                EXPECT_TRUE(failing || (result_ == kDone && !Exists(source)));
            },
    });
}

TEST_F(TransferFaultsTest, FileMovedOutOfTheDirectoryIsInOneOfTheStores) {
    const std::string target = At("h\\m.kra");
    const std::string dn = DN("cn=m.kra");
    const CDepotItem item("<Work>\\m.kra", work_);
    const CDepotItem place("<Home>\\", &home_);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                DeleteFileA(target.c_str());
                world_.Connected().AddFileEntry(dn, "m.kra", "3333", 4);
            },
        .operate =
            [&] {
                result_ = Result([&] {
                    CDepotItems items;
                    if (!items.Append(item.Clone())) return kFailed;
                    return ListOperation(items, &place, FO_MOVE, kQuietFlags, nullptr, &error_);
                });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(LocalFile(target) == "3333" || Contents(dn) == "3333");
                EXPECT_THAT(LocalFile(target), testing::AnyOf("3333", "(missing)"));
                EXPECT_TRUE(failing || (result_ == kDone && !Holds(dn)));
                ExpectNoTemporaryFolders(failing);
            },
    });
}

TEST_F(TransferFaultsTest, FileIsNotMovedOutOfTheDirectoryOntoAnother) {
    const std::string target = Make("h\\m.kra", "other");
    const std::string dn = DN("cn=m.kra");
    const CDepotItem item("<Work>\\m.kra", work_);
    const CDepotItem place("<Home>\\", &home_);
    world_.Connected().AddFileEntry(dn, "m.kra", "3333", 4);
    RunWithFaults({
        .prepare = [&] { ForgetLastRun(); },
        .operate =
            [&] {
                result_ =
                    Result([&] { return ItemOperation(item, &place, FO_MOVE, nullptr, &error_); });
            },
        .verify =
            [&](std::optional<Fault>) {
                EXPECT_THAT(result_, Fails());
                EXPECT_EQ("other", LocalFile(target));
                EXPECT_EQ("3333", Contents(dn));
            },
    });
}

TEST_F(TransferFaultsTest, FileMovedBetweenFoldersIsInOneOfThem) {
    const std::string source = At("h\\m.kra");
    const std::string target = At("s\\m.kra");
    CDepot& store = world_.Add("Store", "Store", "s");
    const CDepotItem item("<Home>\\m.kra", &home_);
    const CDepotItem place("<Store>\\", &store);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                DeleteFileA(target.c_str());
                Make("h\\m.kra", "3333");
            },
        .operate =
            [&] {
                result_ =
                    Result([&] { return ItemOperation(item, &place, FO_MOVE, nullptr, &error_); });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(LocalFile(source) == "3333" || LocalFile(target) == "3333");
                EXPECT_THAT(LocalFile(target), testing::AnyOf("3333", "(missing)"));
                if (result_ == kDone) {
                    EXPECT_EQ("3333", LocalFile(target));
                }
                EXPECT_TRUE(failing || (result_ == kDone && !Exists(source)));
            },
    });
}

TEST_F(TransferFaultsTest, TreeMovedBetweenFoldersIsInOneOfThem) {
    CDepot& store = world_.Add("Store", "Store", "s");
    const CDepotItem place("<Store>\\", &store);
    RunWithFaults({
        .prepare =
            [&] {
                ForgetLastRun();
                RemoveFolder(At("s\\tree"));
                world_.folder.MakeFolder("h\\tree\\sub");
                Make("h\\tree\\a.kra", "1111");
                Make("h\\tree\\sub\\b.kra", "2222");
            },
        .operate =
            [&] {
                result_ = Result([&] {
                    CDepotItems items;
                    if (!items.Append(std::make_unique<CDepotItem>("<Home>\\tree", &home_)))
                        return kFailed;
                    return ListOperation(items, &place, FO_MOVE, kQuietFlags, nullptr, &error_);
                });
            },
        .verify =
            [&](std::optional<Fault> failing) {
                const std::string target = LocalTreeAt(At("s\\tree"));
                ExpectWholeFiles(target);
                EXPECT_EQ(kTree, result_ == kDone ? target : LocalTreeAt(At("h\\tree")));
                EXPECT_TRUE(failing || (result_ == kDone && !Exists(At("h\\tree"))));
            },
    });
}

}  // namespace
}  // namespace depot
