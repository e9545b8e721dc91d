// A kept copy that is saved from the dialog onto a disk without room.
#include "support/kept_world.h"
// The sockets come first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/kept_user.h"
#include "platform/wide_text.h"
#include "support/import_patch.h"

namespace depot::test {
namespace {

constexpr char kFullFolder[] = "full";
std::atomic<int> refusedWrites = 0;

bool IsOnFullDisk(HANDLE file) {
    char path[1024] = {};
    const DWORD length = GetFinalPathNameByHandleA(file, path, sizeof(path), 0);
    return length != 0 && length < sizeof(path) &&
           std::string(path).find(std::string("\\") + kFullFolder + "\\") != std::string::npos;
}

// There is room for the first three bytes.
BOOL WINAPI WriteToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* written,
                            OVERLAPPED* overlapped) {
    if (!IsOnFullDisk(file)) return WriteFile(file, bytes, size, written, overlapped);
    ++refusedWrites;
    WriteFile(file, bytes, size < 3 ? size : 3, written, overlapped);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

std::wstring WordsFor(DWORD code) {
    wchar_t text[512] = {};
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                       text, static_cast<DWORD>(std::size(text)), nullptr);
    const std::wstring words(text, length);
    return words.substr(0, words.find_first_of(L".\r\n"));
}

class KeptDiskTest : public BrowseTest {
protected:
    KeptDiskTest() {
        refusedWrites = 0;
        folder_.MakeFolder(kFullFolder);
    }

    std::string InFullFolder(const std::string& name) const {
        return folder_.At(std::string(kFullFolder) + "\\" + name);
    }

    // Has the user save the copy there and returns what the window says of it.
    std::wstring SaveACopy(const std::string& target, bool replaces) {
        std::wstring message;
        Show([&](const OpenBrowser& browser) {
            const OpenKept kept = OpenKeptFrom(browser);
            ASSERT_NE(nullptr, kept.Window());
            kept.Use(CONTROL_KEPT_EXPORT);
            EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() != kept.Window(); }));
            kept.Type(WideFromAnsi(target));
            kept.Press(VK_RETURN);
            if (replaces) AnswerQuestion(L"already exists", IDYES);
            kept.WaitForMessage(L"Nothing could be done with");
            message = kept.Text(CONTROL_KEPT_MESSAGE);
            kept.Close();
            EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == browser.Window(); }));
            browser.Press(VK_ESCAPE);
        });
        return message;
    }

    // Names of what lies in the folder, also of temporary files.
    std::vector<std::string> Left() const { return FilesIn(folder_.At(kFullFolder), "*"); }

    KeptWorld world_{depots_};
    const ImportPatch<decltype(&WriteToFullDisk)> patch_{"WriteFile", &WriteToFullDisk,
                                                         library_.Module()};
};

TEST_F(KeptDiskTest, FullDiskIsReportedInWordsAndLeavesNoPartOfTheCopy) {
    ASSERT_TRUE(patch_.IsInPlace());
    const std::string path = world_.Keep();
    const std::wstring message = SaveACopy(InFullFolder("saved.kre"), false);
    EXPECT_LT(0, refusedWrites);
    EXPECT_NE(std::wstring::npos, message.find(WordsFor(ERROR_DISK_FULL))) << AnsiFromWide(message);
    EXPECT_THAT(Left(), testing::IsEmpty());
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptDiskTest, FullDiskLeavesTheFileThatWasToBeReplaced) {
    ASSERT_TRUE(patch_.IsInPlace());
    const std::string path = world_.Keep();
    const std::string target = folder_.MakeFile(std::string(kFullFolder) + "\\saved.kre", "before");
    SaveACopy(target, true);
    EXPECT_LT(0, refusedWrites);
    EXPECT_EQ("before", FileBytes(target));
    EXPECT_THAT(Left(), testing::SizeIs(1));
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

}  // namespace
}  // namespace depot::test
