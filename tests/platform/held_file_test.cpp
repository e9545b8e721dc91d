#include "platform/held_file.h"

#include <gtest/gtest.h>

#include "platform/private_file.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string Text(const std::optional<std::vector<std::uint8_t>>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(none)";
}

class HeldFileTest : public testing::Test {
protected:
    test::ScratchFolder folder_;
    const std::string path_ = folder_.MakeFile("a.kra", "bytes");
};

TEST_F(HeldFileTest, MissingFileIsReportedByItsError) {
    const HeldFile file(folder_.At("none"));
    EXPECT_FALSE(file);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, file.Error());
}

TEST_F(HeldFileTest, FileThatAnyoneHasOpenIsNotHeld) {
    const UniqueHandle reader = OwnFile(CreateFileA(path_.c_str(), GENERIC_READ, kShareAll, nullptr,
                                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(reader);
    const HeldFile file(path_);
    EXPECT_FALSE(file);
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, file.Error());
}

TEST_F(HeldFileTest, HeldFileIsOpenNowhereElse) {
    const HeldFile file(path_);
    ASSERT_TRUE(file);
    EXPECT_FALSE(OwnFile(CreateFileA(path_.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr)));
    EXPECT_FALSE(HeldFile(path_));
    EXPECT_TRUE(file.IsPlainFile());
    EXPECT_TRUE(file.IsOwnedByUser());
}

TEST_F(HeldFileTest, ReadGivesAllBytesUpToTheLimit) {
    const HeldFile file(path_);
    EXPECT_EQ("bytes", Text(file.Read(5)));
    EXPECT_EQ("bytes", Text(file.Read(100)));
    EXPECT_EQ("(none)", Text(file.Read(4)));
    EXPECT_EQ("", Text(HeldFile(folder_.MakeFile("empty", "")).Read(0)));
}

TEST_F(HeldFileTest, WriteReplacesBytesInTheMidst) {
    const std::uint8_t bytes[] = {'Y', 'T'};
    EXPECT_TRUE(HeldFile(path_).Write(1, bytes));
    EXPECT_EQ("bYTes", test::FileBytes(path_));
}

TEST_F(HeldFileTest, DeletedFileIsGoneWithItsHolder) {
    {
        const HeldFile file(path_);
        EXPECT_TRUE(file.Delete());
    }
    EXPECT_FALSE(test::Exists(path_));
}

TEST_F(HeldFileTest, FileVanishesOnlyWhileThatIsWanted) {
    for (const bool vanishes : {false, true}) {
        const HANDLE handle = CreateFileA(path_.c_str(), GENERIC_READ | DELETE, 0, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        const UniqueHandle file = OwnFile(handle);
        ASSERT_TRUE(file);
        EXPECT_TRUE(VanishesWhenClosed(handle, true));
        EXPECT_TRUE(VanishesWhenClosed(handle, vanishes));
    }
    EXPECT_FALSE(test::Exists(path_));
}

TEST_F(HeldFileTest, FolderIsNoPlainFile) {
    const HeldFile folder(folder_.MakeFolder("folder"));
    EXPECT_FALSE(folder && folder.IsPlainFile());
}

TEST(PrivateFileTest, NewFileBelongsToTheUserAndReplacesNone) {
    const test::ScratchFolder folder;
    const std::string path = folder.At("private");
    {
        const UniqueHandle file = CreatePrivateFile(path, GENERIC_READ | GENERIC_WRITE, 0);
        ASSERT_TRUE(file);
        EXPECT_TRUE(IsOwnedByUser(file.get()));
    }
    EXPECT_FALSE(CreatePrivateFile(path, GENERIC_WRITE, 0));
    EXPECT_TRUE(test::Exists(path));
}

TEST(PrivateFileTest, FileWithoutAKnownOwnerIsNotTheUsers) {
    EXPECT_FALSE(IsOwnedByUser(nullptr));
}

}  // namespace
}  // namespace depot
