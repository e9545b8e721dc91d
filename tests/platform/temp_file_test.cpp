#include "platform/temp_file.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "support/scratch.h"

namespace depot {
namespace {

// Sends temporary files into a folder while it lives.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::string& path) {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            char value[MAX_PATH] = {};
            GetEnvironmentVariableA(kNames[i], value, sizeof(value));
            old_[i] = value;
            SetEnvironmentVariableA(kNames[i], path.c_str());
        }
    }
    ~TemporaryFolder() {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            SetEnvironmentVariableA(kNames[i], old_[i].c_str());
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

private:
    static constexpr std::array<const char*, 2> kNames = {"TMP", "TEMP"};
    std::array<std::string, 2> old_;
};

// Returns a folder below `parent` whose path has exactly that many characters.
std::string MakeFolderOfLength(const test::ScratchFolder& parent, std::size_t length) {
    std::string name;
    while (parent.At(name).size() < length) {
        const std::size_t left = length - parent.At(name).size();
        name.append(std::min<std::size_t>(left, 40), 'f');
        // Enough must be left for a backslash and one more letter.
        if (left > 42) name += "\\";
    }
    return parent.MakeFolder(name);
}

// Whether a file's rights give the group of all users anything.
bool IsOpenToEveryone(const std::string& path) {
    DWORD size = 0;
    GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    EXPECT_TRUE(
        GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size));
    BOOL present = FALSE, defaulted = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.data(), &present, &list, &defaulted));
    if (!present || list == nullptr) return true;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        EXPECT_TRUE(GetAce(list, index, &entry));
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        if (IsWellKnownSid(&allowed->SidStart, WinWorldSid) && allowed->Mask != 0) return true;
    }
    return false;
}

TEST(TempFileNameTest, NewFileIsForItsUserAlone) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    ASSERT_TRUE(IsOpenToEveryone(folder.MakeFile("other", "x")));
    const std::string name = MakeTempFileName();
    EXPECT_FALSE(IsOpenToEveryone(name));
    EXPECT_TRUE(WriteLocalFile(name, "of its user", 11));
    EXPECT_EQ("of its user", test::FileBytes(name));
    EXPECT_TRUE(DeleteFileA(name.c_str()));
}

TEST(TempFileNameTest, NewEmptyFileStandsInTheTemporaryFolder) {
    const test::ScratchFolder folder;
    const TemporaryFolder temporary(folder.Path());
    const std::string first = MakeTempFileName();
    const std::string second = MakeTempFileName();
    EXPECT_NE(first, second);
    EXPECT_TRUE(EqualsNoCase(folder.Path(), ParentFolder(first))) << first;
    EXPECT_TRUE(StartsWithNoCase(NamePart(first), "lda")) << first;
    EXPECT_EQ("", test::FileBytes(first));
    EXPECT_EQ("", test::FileBytes(second));
}

TEST(TempFileNameTest, MissingTemporaryFolderGivesNothing) {
    const TemporaryFolder temporary("C:\\no such folder");
    EXPECT_EQ("", MakeTempFileName());
}

TEST(DeleteContainingFolderTest, FolderGoesWithAllThatIsInIt) {
    const test::ScratchFolder folder;
    const std::string file = folder.MakeFile("keep.txt", "x");
    folder.MakeFolder("doomed\\below");
    folder.MakeFile("doomed\\below\\other.txt", "x");
    const std::string named = folder.MakeFile("doomed\\a.txt", "x");
    EXPECT_EQ(1, DeleteContainingFolder(named));
    EXPECT_FALSE(test::Exists(folder.At("doomed")));
    EXPECT_TRUE(test::Exists(file));
}

TEST(DeleteContainingFolderTest, NamedFileNeedNotExist) {
    const test::ScratchFolder folder;
    folder.MakeFolder("doomed");
    EXPECT_EQ(1, DeleteContainingFolder(folder.At("doomed\\nothing")));
    EXPECT_FALSE(test::Exists(folder.At("doomed")));
}

TEST(DeleteContainingFolderTest, TrailingBackslashMeansTheFolderAbove) {
    const test::ScratchFolder folder;
    folder.MakeFolder("above\\below");
    EXPECT_EQ(1, DeleteContainingFolder(folder.At("above\\below\\")));
    EXPECT_FALSE(test::Exists(folder.At("above")));
    EXPECT_TRUE(test::Exists(folder.Path()));
}

TEST(DeleteContainingFolderTest, MissingFolderFails) {
    const test::ScratchFolder folder;
    EXPECT_EQ(0, DeleteContainingFolder(folder.At("missing\\a.txt")));
}

TEST(DeleteContainingFolderTest, EmptyPathDeletesNothing) {
    EXPECT_EQ(0, DeleteContainingFolder(""));
    EXPECT_EQ(0, DeleteContainingFolder("\\"));
}

TEST(DeleteContainingFolderTest, FolderOfTheGreatestLengthGoesAndALongerPathIsRefused) {
    const test::ScratchFolder parent;
    const std::string fit = MakeFolderOfLength(parent, 260);
    ASSERT_EQ(260u, fit.size());
    // Cut to 260 characters, the longer path would name the other folder.
    EXPECT_EQ(0, DeleteContainingFolder(fit + "f\\a.txt"));
    EXPECT_TRUE(test::Exists(fit));
    EXPECT_EQ(1, DeleteContainingFolder(fit + "\\a.txt"));
    EXPECT_FALSE(test::Exists(fit));
}

}  // namespace
}  // namespace depot
