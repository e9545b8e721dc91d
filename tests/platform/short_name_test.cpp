#include "platform/short_name.h"

#include <gtest/gtest.h>

#include "support/scratch.h"

namespace depot {
namespace {

class IsShortNameOfAnotherTest : public testing::Test {
protected:
    // The path by its short name of what has a long one.
    std::string ByShortName(const std::string& name) {
        return folder_.At(test::ShortNameOf(folder_.At(name)));
    }

    test::ScratchFolder folder_;
};

TEST_F(IsShortNameOfAnotherTest, PathThatLeadsToAFileOrFolderOfAnotherName) {
    folder_.MakeFile("a long file name.kra", "x");
    folder_.MakeFolder("a long folder name");
    for (const char* name : {"a long file name.kra", "a long folder name"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsShortNameOfAnother(folder_.At(name)));
        const std::string path = ByShortName(name);
        ASSERT_TRUE(test::Exists(path));
        EXPECT_TRUE(IsShortNameOfAnother(path));
    }
}

TEST_F(IsShortNameOfAnotherTest, OwnNameInThatFormIsNone) {
    for (const char* name : {"x~1.kra", "LONGFI~1.KRA", "~"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsShortNameOfAnother(folder_.At(name)));
        folder_.MakeFile(name, "x");
        EXPECT_FALSE(IsShortNameOfAnother(folder_.At(name)));
    }
    EXPECT_FALSE(IsShortNameOfAnother(folder_.At("X~1.KRA")));
    EXPECT_FALSE(IsShortNameOfAnother(""));
    EXPECT_FALSE(IsShortNameOfAnother(folder_.At("none\\x~1.kra")));
}

// A file whose own name the code page cannot hold is another one under any name.
TEST_F(IsShortNameOfAnotherTest, FileThatTheCodePageCannotName) {
    const std::wstring wide =
        std::wstring(folder_.Path().begin(), folder_.Path().end()) + L"\\\x10D0 long \x10D1.kra";
    const HANDLE file = CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file);
    CloseHandle(file);
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(wide.c_str(), &found);
    ASSERT_NE(INVALID_HANDLE_VALUE, search);
    FindClose(search);
    const std::wstring shortName = found.cAlternateFileName;
    ASSERT_FALSE(shortName.empty());
    const std::string path = folder_.At(std::string(shortName.begin(), shortName.end()));
    ASSERT_TRUE(test::Exists(path));
    EXPECT_TRUE(IsShortNameOfAnother(path));
}

}  // namespace
}  // namespace depot
