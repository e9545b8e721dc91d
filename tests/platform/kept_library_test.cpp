#include "platform/kept_library.h"

#include <gtest/gtest.h>

#include "platform/compiler.h"
#include "platform/module_state.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kService[] = "qdirsvc.dll";
constexpr char kPart[] = "depot_test_part.dll";

std::string Original(const char* name) {
    return OwnModuleFolder() + "dependent_service\\" + name;
}

std::string FolderOf(HMODULE service) {
    using FolderLookup = int(__stdcall*)(int, int, char*, unsigned);
    const auto lookup = FunctionCast<FolderLookup>(GetProcAddress(service, MAKEINTRESOURCEA(34)));
    char folder[MAX_PATH] = {};
    if (lookup != nullptr) lookup(18, 0, folder, sizeof(folder));
    return folder;
}

// A copy of the service, which does not load without its part.
class LoadLibraryAloneTest : public testing::Test {
protected:
    LoadLibraryAloneTest() {
        EXPECT_TRUE(CopyFileA(Original(kService).c_str(), path_.c_str(), TRUE));
    }

    static void CopyPart(const std::string& folder) {
        EXPECT_TRUE(CopyFileA(Original(kPart).c_str(), (folder + "\\" + kPart).c_str(), TRUE));
    }

    test::ScratchFolder folder_;
    const std::string path_ = folder_.At(kService);
};

TEST_F(LoadLibraryAloneTest, LibraryInTheSameFolderIsFound) {
    CopyPart(folder_.Path());
    const UniqueModule library = LoadLibraryAlone(path_);
    ASSERT_NE(nullptr, library);
    EXPECT_NE("", FolderOf(library.get()));
}

TEST_F(LoadLibraryAloneTest, LibraryInTheCurrentFolderIsNotUsed) {
    const test::ScratchFolder current;
    CopyPart(current.Path());
    char former[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(former), former);
    SetCurrentDirectoryA(current.Path().c_str());
    EXPECT_EQ(nullptr, LoadLibraryAlone(path_));
    SetCurrentDirectoryA(former);
}

TEST_F(LoadLibraryAloneTest, LibraryInTheProgramsFolderIsNotUsed) {
    const std::string part = OwnModuleFolder() + kPart;
    EXPECT_TRUE(CopyFileA(Original(kPart).c_str(), part.c_str(), FALSE));
    EXPECT_EQ(nullptr, LoadLibraryAlone(path_));
    DeleteFileA(part.c_str());
}

TEST_F(LoadLibraryAloneTest, LibraryOnTheSearchPathIsNotUsed) {
    const test::ScratchFolder other;
    CopyPart(other.Path());
    char former[10'000] = {};
    GetEnvironmentVariableA("PATH", former, sizeof(former));
    SetEnvironmentVariableA("PATH", (other.Path() + ";" + former).c_str());
    EXPECT_EQ(nullptr, LoadLibraryAlone(path_));
    SetEnvironmentVariableA("PATH", former);
}

TEST_F(LoadLibraryAloneTest, SystemShowsNoBoxMeanwhileAndTheThreadKeepsItsErrorMode) {
    CopyPart(folder_.Path());
    const DWORD former = GetThreadErrorMode();
    SetThreadErrorMode(SEM_NOGPFAULTERRORBOX, nullptr);
    const UniqueModule library = LoadLibraryAlone(path_);
    EXPECT_EQ(DWORD{SEM_NOGPFAULTERRORBOX}, GetThreadErrorMode());
    EXPECT_EQ(nullptr, LoadLibraryAlone(folder_.At("missing.dll")));
    EXPECT_EQ(DWORD{SEM_NOGPFAULTERRORBOX}, GetThreadErrorMode());
    SetThreadErrorMode(former, nullptr);
    EXPECT_EQ("C:\\Quietly", FolderOf(library.get()));
}

TEST_F(LoadLibraryAloneTest, PathThatIsNotAFullOneLoadsNothing) {
    CopyPart(folder_.Path());
    char former[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(former), former);
    SetCurrentDirectoryA(folder_.Path().c_str());
    for (const char* path : {"", kService, ".\\qdirsvc.dll", "\\qdirsvc.dll"}) {
        EXPECT_EQ(nullptr, LoadLibraryAlone(path)) << path;
    }
    SetCurrentDirectoryA(former);
}

class KeptLibraryTest : public testing::Test {
protected:
    KeptLibraryTest() {
        for (const char* name : {"one.dll", "two.dll"}) {
            EXPECT_TRUE(
                CopyFileA((OwnModuleFolder() + kService).c_str(), folder_.At(name).c_str(), TRUE));
        }
    }
    UniqueModule Load(const char* name) { return LoadLibraryAlone(folder_.At(name)); }
    static bool IsLoaded(const char* name) { return GetModuleHandleA(name) != nullptr; }

    test::ScratchFolder folder_;
    KeptLibrary kept_;
};

TEST_F(KeptLibraryTest, LibraryStaysLoadedUntilItIsGivenBack) {
    EXPECT_EQ(nullptr, kept_.Get());
    const HMODULE library = kept_.Keep(Load("one.dll"));
    EXPECT_EQ(GetModuleHandleA("one.dll"), library);
    EXPECT_EQ(library, kept_.Get());
    kept_.Free();
    EXPECT_EQ(nullptr, kept_.Get());
    EXPECT_FALSE(IsLoaded("one.dll"));
    kept_.Free();
}

TEST_F(KeptLibraryTest, FirstLibraryIsKeptAndALaterOneFreed) {
    const HMODULE first = kept_.Keep(Load("one.dll"));
    EXPECT_EQ(first, kept_.Keep(Load("one.dll")));
    EXPECT_EQ(first, kept_.Keep(Load("two.dll")));
    EXPECT_FALSE(IsLoaded("two.dll"));
    kept_.Free();
    EXPECT_FALSE(IsLoaded("one.dll"));
}

TEST_F(KeptLibraryTest, LibraryThatDidNotLoadIsNotKept) {
    EXPECT_EQ(nullptr, kept_.Keep(Load("none.dll")));
    EXPECT_NE(nullptr, kept_.Keep(Load("one.dll")));
    kept_.Free();
}

}  // namespace
}  // namespace depot
