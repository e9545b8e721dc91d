#include "depotbrowser/browse_fixture.h"

#include "com/automation.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/wide_text.h"

namespace depot::test {

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

void BrowseTest::SpeakTheLanguage() const {
    const std::wstring folder = WideFromAnsi(OwnModuleFolder());
    EXPECT_EQ(S_OK, dialog_->put_ResourceFolder(NewWideBstr(folder).get()));
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
