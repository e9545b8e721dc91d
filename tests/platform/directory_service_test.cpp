#include "platform/directory_service.h"

#include <gtest/gtest.h>

#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "support/program_start.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";
constexpr char kExpectedFolder[] = "DEPOT_TEST_RESOURCE_FOLDER";
constexpr DWORD kChildTimeLimit = 60'000;

std::string OwnProgram() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof(path));
    return path;
}

std::string LibraryBesideOwnProgram() {
    return OwnModuleFolder() + "qdirsvc.dll";
}

std::string SystemFolder() {
    char path[MAX_PATH] = {};
    GetSystemDirectoryA(path, sizeof(path));
    return std::string(path) + "\\";
}

// Runs the program once more, for the test that compares with `expected` only, because a process
// binds the library once. Returns its exit code.
DWORD RunChild(const std::string& program, const std::string& currentFolder,
               const std::string& expected) {
    SetEnvironmentVariableA(kExpectedFolder, expected.c_str());
    const std::wstring folder = WideFromAnsi(currentFolder);
    test::ProgramStart start = {
        .command =
            WideFromAnsi("\"" + program + "\" --gtest_filter=*.LibraryIsBoundOncePerProcess")};
    start.startup.dwFlags = STARTF_USESTDHANDLES;  // the child says nothing
    start.folder = folder.c_str();
    const DWORD code = test::RunProgram(start, kChildTimeLimit);
    SetEnvironmentVariableA(kExpectedFolder, nullptr);
    return code;
}

class DirectoryServiceTest : public testing::Test {
protected:
    test::ScratchKey user_{HKEY_CURRENT_USER, kProductKey};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kProductKey};
};

TEST_F(DirectoryServiceTest, FoldersComeBackAsTheLibraryGivesThem) {
    user_.Text("", "UserDir", "C:\\User");
    user_.Text("", "HomeDir64", "C:\\Home\\");
    EXPECT_EQ("C:\\User", GetStandardFolder(18, 0));
    EXPECT_EQ("C:\\Home\\", GetStandardFolder(1, 3));
    user_.Text("", "UserDir", "C:\\Other");
    EXPECT_EQ("C:\\Other", GetStandardFolder(18, 0));
}

TEST_F(DirectoryServiceTest, UnknownFoldersAreEmpty) {
    EXPECT_EQ("", GetStandardFolder(0, 0));
    EXPECT_EQ("", GetStandardFolder(18, 1));
    EXPECT_EQ("", GetStandardFolder(-1, -1));
}

TEST_F(DirectoryServiceTest, BufferTakes260Characters) {
    const std::string longest = "C:\\" + std::string(256, 'x');
    user_.Text("", "UserDir", longest);
    EXPECT_EQ(longest, GetStandardFolder(18, 0));
    user_.Text("", "UserDir", longest + "x");
    EXPECT_EQ("", GetStandardFolder(18, 0));
}

TEST_F(DirectoryServiceTest, LibraryIsBoundOncePerProcess) {
    char expected[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableA(kExpectedFolder, expected, sizeof(expected));
    const std::string folder = length > 0 ? std::string(expected) : OwnModuleFolder();
    EXPECT_EQ(folder == "none" ? "" : folder, GetStandardFolder(1, 3));
    EXPECT_EQ(folder == "none" ? "" : folder, GetStandardFolder(1, 3));
}

TEST_F(DirectoryServiceTest, LibraryInTheCurrentFolderIsNotUsed) {
    const test::ScratchFolder program;
    const test::ScratchFolder current;
    ASSERT_TRUE(CopyFileA(OwnProgram().c_str(), program.At("lone.exe").c_str(), TRUE));
    ASSERT_TRUE(
        CopyFileA(LibraryBesideOwnProgram().c_str(), current.At("qdirsvc.dll").c_str(), TRUE));
    EXPECT_EQ(0u, RunChild(program.At("lone.exe"), current.Path(), "none"));
    EXPECT_EQ(1u, RunChild(program.At("lone.exe"), current.Path(), "C:\\"))
        << "must be able to fail";
}

TEST_F(DirectoryServiceTest, LibraryInTheOwnFolderComesFirst) {
    const test::ScratchFolder program;
    ASSERT_TRUE(CopyFileA(OwnProgram().c_str(), program.At("lone.exe").c_str(), TRUE));
    ASSERT_TRUE(
        CopyFileA(LibraryBesideOwnProgram().c_str(), program.At("qdirsvc.dll").c_str(), TRUE));
    EXPECT_EQ(0u, RunChild(program.At("lone.exe"), "C:\\", program.Path() + "\\"));
}

TEST_F(DirectoryServiceTest, LibraryInTheSystemFolderServesAsASecondChoice) {
    const test::ScratchFolder program;
    ASSERT_TRUE(CopyFileA(OwnProgram().c_str(), program.At("lone.exe").c_str(), TRUE));
    const std::string library = SystemFolder() + "qdirsvc.dll";
    ASSERT_TRUE(CopyFileA(LibraryBesideOwnProgram().c_str(), library.c_str(), TRUE));
    EXPECT_EQ(0u, RunChild(program.At("lone.exe"), "C:\\", SystemFolder()));
    ::DeleteFileA(library.c_str());
}

TEST_F(DirectoryServiceTest, FileThatIsNoLibraryCountsAsMissing) {
    const test::ScratchFolder program;
    ASSERT_TRUE(CopyFileA(OwnProgram().c_str(), program.At("lone.exe").c_str(), TRUE));
    program.MakeFile("qdirsvc.dll", "no library");
    EXPECT_EQ(0u, RunChild(program.At("lone.exe"), "C:\\", "none"));
}

TEST_F(DirectoryServiceTest, LibraryWithoutTheOrdinalGivesEmptyTexts) {
    const test::ScratchFolder program;
    ASSERT_TRUE(CopyFileA(OwnProgram().c_str(), program.At("lone.exe").c_str(), TRUE));
    // A library of the system that exports few names and no ordinal 34.
    ASSERT_TRUE(CopyFileA((SystemFolder() + "version.dll").c_str(),
                          program.At("qdirsvc.dll").c_str(), TRUE));
    EXPECT_EQ(0u, RunChild(program.At("lone.exe"), "C:\\", "none"));
}

}  // namespace
}  // namespace depot
