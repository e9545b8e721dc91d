#include "platform/same_file.h"

#include <gtest/gtest.h>

#include "support/import_patch.h"
#include "support/scratch.h"

namespace depot {
namespace {

class SameFileTest : public testing::Test {
protected:
    SameFileTest() {
        folder_.MakeFolder("a\\b\\c");
        folder_.MakeFolder("ab");
        folder_.MakeFile("a\\f", "x");
        folder_.MakeFile("g", "x");
    }
    std::string At(const std::string& name) const { return folder_.At(name); }

    test::ScratchFolder folder_;
};

TEST_F(SameFileTest, OnePlaceIsTheSameUnderEverySpelling) {
    for (const char* path : {"a", "A", "a\\", "a\\b\\..", ".\\a", "ab\\..\\a"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(IsSameFile(At(path), At("a")));
    }
    EXPECT_TRUE(IsSameFile(At("a\\F"), At("A\\f")));
}

TEST_F(SameFileTest, TwoPlacesOrNoneAreNotTheSame) {
    EXPECT_FALSE(IsSameFile(At("a"), At("ab")));
    EXPECT_FALSE(IsSameFile(At("a\\f"), At("g")));
    EXPECT_FALSE(IsSameFile(At("none"), At("none")));
    EXPECT_FALSE(IsSameFile(At("a"), At("none")));
    EXPECT_FALSE(IsSameFile("", ""));
}

TEST_F(SameFileTest, FileThatIsOpenElsewhereIsStillRecognised) {
    const HANDLE open = CreateFileA(At("g").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, open);
    EXPECT_TRUE(IsSameFile(At("g"), At("G")));
    CloseHandle(open);
}

TEST_F(SameFileTest, FolderHoldsWhatLiesBelowItAtAnyDepth) {
    for (const char* path : {"a\\f", "a\\new", "a\\b", "a\\b\\c\\", "A\\B\\none\\at\\all",
                             "a\\b\\c\\x", "ab\\..\\a\\new"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(IsInsideFolder(At(path), At("a")));
    }
    char drive[] = "?:\\";
    drive[0] = folder_.Path()[0];
    EXPECT_TRUE(IsInsideFolder(At("a"), drive));
}

TEST_F(SameFileTest, FolderHoldsNeitherItselfNorItsNeighbours) {
    for (const char* path : {"a", "a\\", "ab", "ab\\x", "g", "none", "a\\..\\ab\\x"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(IsInsideFolder(At(path), At("a")));
    }
    EXPECT_FALSE(IsInsideFolder(At("none\\x"), At("none")));
    EXPECT_FALSE(IsInsideFolder("", At("a")));
    EXPECT_FALSE(IsInsideFolder(At("a"), ""));
}

// The half of every file's number on a volume that shows no identities.
DWORD shownHalf = 0;
BOOL(WINAPI* genuineFacts)(HANDLE, BY_HANDLE_FILE_INFORMATION*) = nullptr;

BOOL WINAPI ShowNoIdentity(HANDLE file, BY_HANDLE_FILE_INFORMATION* facts) {
    if (!genuineFacts(file, facts)) return FALSE;
    facts->nFileIndexHigh = facts->nFileIndexLow = shownHalf;
    return TRUE;
}

TEST_F(SameFileTest, PlacesWhoseIdentityIsUnknownAreDistinguishedByTheirPaths) {
    const test::ImportPatch<BOOL(WINAPI*)(HANDLE, BY_HANDLE_FILE_INFORMATION*)> facts(
        "GetFileInformationByHandle", &ShowNoIdentity);
    genuineFacts = facts.Genuine();
    ASSERT_TRUE(facts.IsInPlace());
    for (const DWORD half : {0ul, ~0ul}) {
        SCOPED_TRACE(half);
        shownHalf = half;
        EXPECT_FALSE(IsSameFile(At("a\\f"), At("g")));
        EXPECT_FALSE(IsSameFile(At("none"), At("none")));
        EXPECT_FALSE(IsInsideFolder(At("ab\\x"), At("a")));
        EXPECT_TRUE(IsSameFile(At("a\\f"), At("ab\\..\\A\\F")));
        EXPECT_TRUE(IsSameFile(At("a\\"), At("a")));
        EXPECT_TRUE(IsInsideFolder(At("ab\\..\\A\\b\\x"), At("a")));
    }
}

}  // namespace
}  // namespace depot
