// The sample that lets a person choose, answered by a person of another process.
#include <atomic>
#include <thread>

#include "depotbrowser/browse_ids.h"
#include "scripts/script_fixture.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot::test {
namespace {

enum class Answer { kAllFiles, kCancel };

// Waits for the browse dialog of a script, and for both files in its list, and answers it.
class Person {
public:
    explicit Person(Answer answer) : answer_(answer), thread_([this] { Watch(); }) {}
    ~Person() {
        ending_ = true;
        thread_.join();
    }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

private:
    static BOOL CALLBACK Examine(HWND window, LPARAM found) {
        if (!IsWindowVisible(window) || !GetDlgItem(window, CONTROL_NAME)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    // From window to next window some systems do not come past one that closes meanwhile.
    static HWND FindDialog() {
        HWND window = nullptr;
        EnumWindows(Examine, reinterpret_cast<LPARAM>(&window));
        return window;
    }

    // The list takes the address of what is to be selected from its own process only.
    static void SelectAll(HWND list) {
        DWORD id = 0;
        GetWindowThreadProcessId(list, &id);
        const UniqueHandle process(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_WRITE, FALSE, id));
        LVITEMW item = {};
        item.state = item.stateMask = LVIS_SELECTED;
        void* const there = VirtualAllocEx(process.get(), nullptr, sizeof(item),
                                           MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        EXPECT_TRUE(WriteProcessMemory(process.get(), there, &item, sizeof(item), nullptr));
        SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                     reinterpret_cast<LPARAM>(there));
        VirtualFreeEx(process.get(), there, 0, MEM_RELEASE);
    }

    void Watch() const {
        constexpr DWORD kPause = 20;
        constexpr LRESULT kFiles = 2;
        for (; !ending_; Sleep(kPause)) {
            const HWND dialog = FindDialog();
            const HWND list = dialog ? GetDlgItem(dialog, CONTROL_LIST) : nullptr;
            if (list == nullptr || SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) != kFiles) continue;
            if (answer_ == Answer::kAllFiles) SelectAll(list);
            SendMessageW(dialog, WM_COMMAND, answer_ == Answer::kAllFiles ? IDOK : IDCANCEL, 0);
        }
    }

    const Answer answer_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

class BrowseSampleTest : public ScriptTest {
protected:
    BrowseSampleTest() {
        RegisterLibrary("DepotBrowser.dll");
        folder_.MakeFile("Work\\one.kre", "");
        folder_.MakeFile("Work\\two.kre", "");
        DeleteFileA(folder_.At("Work\\Sessions\\office.kre").c_str());
        RemoveDirectoryA(folder_.At("Work\\Sessions").c_str());
    }
};

TEST_F(BrowseSampleTest, EveryChosenFileIsPrinted) {
    const Person person(Answer::kAllFiles);
    EXPECT_EQ((Lines{"<Work>\\one.kre", "<Work>\\two.kre"}), Run("browse.vbs"));
}

TEST_F(BrowseSampleTest, CancelledDialogIsReported) {
    const Person person(Answer::kCancel);
    EXPECT_EQ((Lines{"Nothing was chosen."}), Run("browse.vbs"));
}

}  // namespace
}  // namespace depot::test
