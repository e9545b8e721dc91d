// The interface's methods on depots of either kind.
#pragma once

#include <string>

#include "component/component.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/results.h"
#include "support/test_folders.h"
#include "support/working_files.h"

namespace depot::test {

enum class DepotKind { kFolder, kDirectory };

inline std::string DepotKindName(const testing::TestParamInfo<DepotKind>& kind) {
    return kind.param == DepotKind::kFolder ? "Folder" : "Directory";
}

// A session with the depots "Work" in a folder and "Corp" in a directory; "Work" is the default
// one. The depot under test is one of them.
class StoresTest : public ComponentTest, public testing::WithParamInterface<DepotKind> {
protected:
    StoresTest() {
        DefineDepot("Work");
        depots_.Dword("Work", "DefaultDepot", 1);
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
        store_.MakeFolder("Sub");
    }

    bool InDirectory() const { return GetParam() == DepotKind::kDirectory; }
    std::string Path(const std::string& name) const { return store_.Path(name); }
    std::wstring WidePath(const std::string& name) const { return Wide(Path(name)); }

    // Both begin when the depots are defined.
    Session& Client() {
        if (!session_) session_.emplace(*api_);
        return *session_;
    }
    void Load(const std::string& path) {
        ASSERT_THAT(api_->DPLoadFile(Client().Address(), Text(path)), IsOk());
    }
    std::wstring Value(const wchar_t* section, const wchar_t* key) {
        return Read(Client(), section, key);
    }
    HRESULT Rename(const std::string& from, const std::string& to) {
        return api_->DPRenameFile(Client(), Text(from), Text(to));
    }
    HRESULT Delete(const std::string& path) { return api_->DPDeleteFile(Client(), Text(path)); }

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    LocalTestFolder work_{folder_.At("Work"), "<Work>\\"};
    DirectoryTestFolder corp_{server_, base_, "<Corp>\\"};
    TestFolder& store_ = InDirectory() ? static_cast<TestFolder&>(corp_) : work_;
    std::optional<Session> session_;
};

}  // namespace depot::test
