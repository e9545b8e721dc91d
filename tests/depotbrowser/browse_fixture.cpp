#include "depotbrowser/browse_fixture.h"

#include "platform/paths.h"

namespace depot::test {
namespace {

constexpr int kQuestionText = 0xFFFF;

HWND FindQuestion(const std::wstring& part) {
    for (HWND box = nullptr; (box = FindWindowExW(nullptr, box, L"#32770", nullptr)) != nullptr;) {
        DWORD process = 0;
        GetWindowThreadProcessId(box, &process);
        if (process != GetCurrentProcessId() || GetDlgItem(box, kQuestionText) == nullptr) continue;
        if (OpenDialog(box).Text(kQuestionText).find(part) != std::wstring::npos) return box;
    }
    return nullptr;
}

}  // namespace

void AnswerQuestion(const std::wstring& part, int button) {
    HWND box = nullptr;
    EXPECT_TRUE(Eventually([&] { return (box = FindQuestion(part)) != nullptr; }))
        << "no question with " << testing::PrintToString(part);
    if (box != nullptr) PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    EXPECT_TRUE(Eventually([&] { return FindQuestion(part) == nullptr; }));
}

BrowseTest::BrowseTest() {
    DefineDepot("Work", "Work profiles", 1);
    DefineDepot("Team", "Team profiles", 2);
}

std::string BrowseTest::DefineDepot(const std::string& key, const std::string& name,
                                    DWORD order) const {
    const std::string path = folder_.MakeFolder(key);
    depots_.Text(key, "DisplayName.eng", name);
    depots_.Text(key, "Path1", path);
    depots_.Dword(key, "Type1", 0);
    depots_.Dword(key, "OrderIndex", order);
    return path;
}

void BrowseTest::MakeFileIn(const std::string& depot, const std::string& name,
                            const std::string& bytes) const {
    const std::string path = depot + "\\" + name;
    folder_.MakeFolder(ParentFolderKeepSlash(path));
    folder_.MakeFile(path, bytes);
}

LONG BrowseTest::Show(const Script& script) {
    const DialogUser user(IsBrowser,
                          [&](const OpenDialog& dialog) { script(OpenBrowser(dialog)); });
    LONG result = kJunk;
    EXPECT_EQ(S_OK, dialog_->ShowModal(&result));
    return result;
}

std::wstring BrowseTest::ChosenPath() const {
    Bstr path;
    EXPECT_EQ(S_OK, dialog_->get_ChosenPath(path.Receive()));
    return path.Text();
}

Names BrowseTest::ChosenPaths() const {
    SAFEARRAY* array = nullptr;
    EXPECT_EQ(S_OK, dialog_->get_ChosenPaths(&array));
    Names paths;
    LONG last = -1;
    SafeArrayGetUBound(array, 1, &last);
    for (LONG index = 0; index <= last; ++index) {
        Bstr path;
        SafeArrayGetElement(array, &index, path.Receive());
        paths.push_back(path.Text());
    }
    SafeArrayDestroy(array);
    return paths;
}

}  // namespace depot::test
