// The interface's methods on depots of either kind.
#pragma once

#include <string>

#include "component/api2.h"
#include "component/progress_object.h"
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
    // An attribute of a directory is never empty.
    std::string Empty() const { return InDirectory() ? " " : ""; }
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
        return ComponentTest::Read(Client(), section, key);
    }
    // Makes the profile "Sub\\p.kra" with these lines and loads it.
    void LoadProfile(int count, const std::string& clients) {
        // What was published before is stored first.
        session_.reset();
        store_.MakeFile("Sub\\p.kra", "[Skein]\r\nCount=" + std::to_string(count) +
                                          "\r\n[Clients]\r\n" + clients +
                                          "[Server]\r\nConfiguration File=s.cfg\r\nOther=1\r\n");
        Load(Path("Sub\\p.kra"));
    }
    void Publish(int count, const std::string& clients) {
        LoadProfile(count, clients);
        EXPECT_THAT(api_->DPPublishSkesDepFiles(Client()), IsOk());
    }
    std::wstring Entry(const wchar_t* key) { return Value(L"Clients", key); }

    HRESULT Rename(const std::string& from, const std::string& to) {
        return api_->DPRenameFile(Client(), Text(from), Text(to));
    }
    void ExpectNotRenamed(const std::string& from, const std::string& to) {
        SCOPED_TRACE(from + " to " + to);
        const StoreContents before = store_.Contents();
        EXPECT_THAT(Rename(from, to), IsRefused());
        EXPECT_EQ(before, store_.Contents());
    }
    HRESULT Delete(const std::string& path) { return api_->DPDeleteFile(Client(), Text(path)); }
    // Makes a numbered copy and returns its path.
    std::wstring MakeCopy(const std::string& source, HRESULT expected = S_OK) {
        OutText copy;
        EXPECT_EQ(expected, api_->DPMakeCopyFromSrcFile(Client(), Text(source), copy));
        return copy.Value();
    }
    HRESULT CopyOut(const std::string& source, const std::string& target,
                    VARIANT_BOOL failIfExists = VARIANT_FALSE) {
        return api_->DPCopyFileToLocalFS(Client(), Text(source), Text(target), failIfExists);
    }

    // The methods of the second interface. Each that refuses has no answer.
    bool IsThere(const std::string& path, LONG_PTR session) {
        OutBool answer;
        EXPECT_THAT(api2_->Exists(session, Bstr(path), answer), IsOk());
        return answer.IsTrue();
    }
    bool IsThere(const std::string& path) { return IsThere(path, Client()); }
    std::wstring Read(const std::string& path) {
        OutText text;
        const HRESULT result = api2_->ReadText(Client(), Bstr(path), text);
        EXPECT_EQ(result == S_OK, !text.IsNull());
        return text.Value();
    }
    HRESULT Write(const std::string& path, std::wstring_view text,
                  TEXT_ENCODING encoding = TEXT_AS_IT_IS) {
        return Done([&](OutBool& done) {
            return api2_->WriteText(Client(), Bstr(path), Bstr(text), encoding, done);
        });
    }
    HRESULT Copy(const std::string& from, const std::string& to,
                 VARIANT_BOOL mayExist = VARIANT_FALSE, VARIANT progress = LeftOutArgument()) {
        return Done([&](OutBool& done) {
            return api2_->Copy(Client(), Bstr(from), Bstr(to), mayExist, progress, done);
        });
    }
    HRESULT Move(const std::string& from, const std::string& to,
                 VARIANT_BOOL mayExist = VARIANT_FALSE, VARIANT progress = LeftOutArgument()) {
        return Done([&](OutBool& done) {
            return api2_->Move(Client(), Bstr(from), Bstr(to), mayExist, progress, done);
        });
    }
    HRESULT MakeFolder(const std::string& path, VARIANT_BOOL mayExist = VARIANT_FALSE) {
        return Done(
            [&](OutBool& done) { return api2_->MakeFolder(Client(), Bstr(path), mayExist, done); });
    }
    std::vector<std::wstring> Find(const std::string& folder, const std::string& extensions = {},
                                   FIND_WHAT what = FIND_FILES) {
        VARIANT paths;
        V_VT(&paths) = VT_BSTR;  // junk that a method has to replace
        EXPECT_THAT(api2_->Find(Client(), Bstr(folder), Bstr(extensions), what, &paths), IsOk());
        return TextsOf(paths);
    }
    DWORD LastCode() { return static_cast<DWORD>(LastErrorOf(*api2_, Client()).code); }

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    LocalTestFolder work_{folder_.At("Work"), "<Work>\\"};
    DirectoryTestFolder corp_{server_, base_, "<Corp>\\"};
    TestFolder& store_ = InDirectory() ? static_cast<TestFolder&>(corp_) : work_;
    TestFolder& other_ = InDirectory() ? static_cast<TestFolder&>(work_) : corp_;
    const Com<IDepotIntrApi2> api2_ = Api2Of(*api_);
    std::optional<Session> session_;

private:
    template <class Method>
    static HRESULT Done(const Method& method) {
        OutBool done;
        const HRESULT result = method(done);
        EXPECT_EQ(result == S_OK, done.IsTrue());
        return result;
    }
};

}  // namespace depot::test
