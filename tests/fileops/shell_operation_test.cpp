#include "fileops/shell_operation.h"

#include <gtest/gtest.h>

#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;

TEST(ShellPathListTest, EachPathEndsInANulAndTheListInAnother) {
    using namespace std::string_literals;
    EXPECT_EQ("a\0b\0\0"s, ShellPathList({"a", "b"}, 10));
    EXPECT_EQ("\0"s, ShellPathList({}, 10));
}

TEST(ShellPathListTest, PathFitsWithItsNulAndNotWithOneByteMore) {
    for (const std::size_t limit : {kShellListPathBytes, kShellSinglePathBytes}) {
        SCOPED_TRACE(limit);
        EXPECT_EQ(limit + 1, ShellPathList({std::string(limit - 1, 'x')}, limit).size());
        EXPECT_EQ("", ShellPathList({std::string(limit, 'x')}, limit));
        EXPECT_EQ("", ShellPathList({"a", std::string(limit, 'x')}, limit));
    }
}

TEST(ShellPathListTest, PatternSpoilsTheList) {
    for (const char* pattern : {"C:\\x\\*", "C:\\x\\a?.kra"}) {
        EXPECT_EQ("", ShellPathList({"C:\\x\\a", pattern}, 100));
    }
}

TEST(ShellPathListTest, EmptyPathSpoilsTheList) {
    EXPECT_EQ("", ShellPathList({"a", "", "b"}, 10));
}

class RunShellOperationTest : public testing::Test {
protected:
    const test::ScratchFolder folder_;
    const test::BoxLog boxes_;
};

TEST_F(RunShellOperationTest, CopiesSeveralFilesIntoAFolder) {
    const std::string a = folder_.MakeFile("a", "1"), b = folder_.MakeFile("b", "2");
    const std::string target = folder_.MakeFolder("to");
    EXPECT_TRUE(RunShellOperation({FO_COPY, {a, b}, &target, kQuietFlags, nullptr}));
    EXPECT_EQ("1", FileBytes(folder_.At("to\\a")));
    EXPECT_EQ("2", FileBytes(folder_.At("to\\b")));
    EXPECT_TRUE(Exists(a));
}

TEST_F(RunShellOperationTest, DeletesFilesAndFolders) {
    const std::string a = folder_.MakeFile("a", "1"), sub = folder_.MakeFolder("sub");
    folder_.MakeFile("sub\\b", "2");
    EXPECT_TRUE(RunShellOperation({FO_DELETE, {a, sub}, nullptr, FOF_NOCONFIRMATION, nullptr}));
    EXPECT_FALSE(Exists(a));
    EXPECT_FALSE(Exists(sub));
}

TEST_F(RunShellOperationTest, OnlyADeletionNeedsNoTarget) {
    const std::string file = folder_.MakeFile("a.kra", "1");
    for (const UINT operation : {UINT{FO_COPY}, UINT{FO_MOVE}, UINT{FO_RENAME}}) {
        EXPECT_FALSE(RunShellOperation({operation, {file}, nullptr, kQuietFlags, nullptr}));
        EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
    }
    EXPECT_TRUE(test::Exists(file));
}

TEST_F(RunShellOperationTest, MissingSourceFails) {
    const std::string target = folder_.At("b");
    EXPECT_FALSE(
        RunShellOperation({FO_RENAME, {folder_.At("none")}, &target, kQuietFlags, nullptr}));
}

TEST_F(RunShellOperationTest, FolderIsNotMovedOntoAFileOfItsName) {
    const std::string tree = folder_.MakeFolder("tree");
    folder_.MakeFile("tree\\a.kra", "1");
    const std::string into = folder_.MakeFolder("to");
    const std::string file = folder_.MakeFile("to\\tree", "2");
    const std::string other = folder_.MakeFile("other.kra", "3");
    struct {
        UINT operation;
        std::string target;
    } const moves[] = {{FO_MOVE, into}, {FO_MOVE, into + "\\"}, {FO_MOVE, file}, {FO_RENAME, file}};
    for (const auto& move : moves) {
        SCOPED_TRACE(move.target);
        // The other one stays as well: nothing of a list is begun.
        std::vector<std::string> sources = {tree};
        if (move.operation == FO_MOVE && move.target != file) sources = {other, tree};
        EXPECT_FALSE(
            RunShellOperation({move.operation, sources, &move.target, kQuietFlags, nullptr}));
        EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
        EXPECT_EQ("1", FileBytes(folder_.At("tree\\a.kra")));
        EXPECT_EQ("2", FileBytes(file));
        EXPECT_TRUE(Exists(other));
    }
}

TEST_F(RunShellOperationTest, FolderMovesBesideAFileAndIntoAFolder) {
    const std::string tree = folder_.MakeFolder("tree"), into = folder_.MakeFolder("to");
    folder_.MakeFile("tree\\a.kra", "1");
    folder_.MakeFile("to\\tree.kra", "2");
    EXPECT_TRUE(RunShellOperation({FO_MOVE, {tree}, &into, kQuietFlags, nullptr}));
    EXPECT_EQ("1", FileBytes(folder_.At("to\\tree\\a.kra")));
}

TEST_F(RunShellOperationTest, NothingMovesIntoTheCurrentFolderOrOutOfIt) {
    const std::string file = folder_.MakeFile("a.kra", "1");
    const std::string now = folder_.MakeFolder("now");
    const std::string there = folder_.MakeFile("now\\there.kra", "2");
    const std::string target = folder_.At("b.kra");
    const test::CurrentFolder current(now);
    for (const std::string relative : {"x.kra", ".\\x.kra", "..\\x.kra", "\\depot-test-x.kra"}) {
        for (const UINT operation : {UINT{FO_COPY}, UINT{FO_MOVE}, UINT{FO_RENAME}}) {
            SCOPED_TRACE(relative + " " + std::to_string(operation));
            EXPECT_FALSE(RunShellOperation({operation, {file}, &relative, kQuietFlags, nullptr}));
            EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
        }
    }
    EXPECT_FALSE(RunShellOperation({FO_MOVE, {"there.kra"}, &target, kQuietFlags, nullptr}));
    EXPECT_FALSE(
        RunShellOperation({FO_DELETE, {file, "there.kra"}, nullptr, kQuietFlags, nullptr}));
    EXPECT_EQ("1", FileBytes(file));
    EXPECT_EQ("2", FileBytes(there));
}

TEST_F(RunShellOperationTest, EmptyTargetTouchesNothingInTheCurrentFolder) {
    const std::string a = folder_.MakeFile("only-here.kra", "1"), empty;
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(RunShellOperation({FO_COPY, {a}, &empty, kQuietFlags, nullptr}));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
    EXPECT_FALSE(Exists("only-here.kra"));
    EXPECT_FALSE(RunShellOperation({FO_DELETE, {}, nullptr, FOF_NOCONFIRMATION, nullptr}));
    EXPECT_FALSE(RunShellOperation({FO_DELETE, {a, ""}, nullptr, FOF_NOCONFIRMATION, nullptr}));
    EXPECT_TRUE(Exists(a));
}

}  // namespace
}  // namespace depot
