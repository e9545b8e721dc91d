// Names of many characters in a directory, in whatever ANSI code page the process runs in.
#include <algorithm>

#include "directory_component/stores_fixture.h"
#include "platform/system_code_page.h"
#include "support/page_names.h"

namespace depot::test {
namespace {

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

// A depot "Corp" in a folder entry whose name has the characters of the code page.
class DirectoryCharactersTest : public ComponentTest {
protected:
    DirectoryCharactersTest() {
        InstallSystemCodePage();
        DefineDepot("Work");
        depots_.Dword("Work", "DefaultDepot", 1);
        server_.AddFolder(Utf8FromWide(names_.folder), parent_);
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
        corp_.emplace(server_, base_, "<Corp>\\");
    }

    void Make(const std::wstring& name) { corp_->MakeFile(Narrowed(name), kOld); }
    std::string Bytes(const std::wstring& name) { return corp_->Bytes(Narrowed(name)); }
    // Made behind the component's back, under a name that the code page may not have.
    void MakeEntry(const std::wstring& name) {
        server_.AddFile(Utf8FromWide(name), Utf8FromWide(WideFromAnsi(base_)), kOld);
    }

    Session& Client() {
        if (!session_) session_.emplace(*api_);
        return *session_;
    }
    std::vector<std::wstring> List() {
        LONG_PTR handle = 0;
        LONG count = 0;
        EXPECT_EQ(S_OK,
                  api_->DPFindInit(&handle, Text(L"<Corp>\\"), Text(L".kra"), APP_SKEIN, &count));
        std::vector<std::wstring> paths;
        for (LONG index = 0; index < count; ++index) {
            OutText path;
            EXPECT_EQ(S_OK, api_->DPFindNext(handle, index, path));
            paths.push_back(path.Value());
        }
        EXPECT_EQ(S_OK, api_->DPUnInitialize(handle));
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    DirectoryServer& server_ = SharedServer();
    const PageNames names_ = NamesOfThisPage();
    const std::string parent_ = NewFolder();
    const std::string base_ = "cn=" + Narrowed(names_.folder) + "," + parent_;
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    std::optional<DirectoryStore> corp_;
    std::optional<Session> session_;
};

TEST_F(DirectoryCharactersTest, ListingShowsEveryFileUnderItsName) {
    std::vector<std::wstring> expected;
    for (const std::wstring& name : names_.files) {
        MakeEntry(name);
        expected.push_back(L"<Corp>\\" + name);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, List());
}

TEST_F(DirectoryCharactersTest, ValuesCopiesRenameAndDeletionMeetTheFileOfThatNameOnly) {
    for (const std::wstring& name : names_.files) MakeEntry(name);
    for (const std::wstring& name : names_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::wstring path = L"<Corp>\\" + name;
        EXPECT_EQ(S_OK, api_->DPFileExists(Client(), Text(path)));
        ASSERT_EQ(S_OK, api_->DPLoadFile(Client().Address(), Text(path)));
        EXPECT_EQ(L"old", Read(Client(), L"S", L"K"));
        EXPECT_EQ(S_OK, api_->DPSetProfileString(Client(), Text("S"), Text("K"), Text("new")));
        EXPECT_EQ(S_OK, api_->DPFlushFile(Client()));
        EXPECT_EQ(kNew, Bytes(name));
        OutText copy;
        EXPECT_EQ(S_OK, api_->DPMakeCopyFromSrcFile(Client(), Text(path), copy));
        EXPECT_EQ(S_OK, api_->DPDeleteFile(Client(), Text(copy.Value())));
        EXPECT_EQ(S_OK, api_->DPRenameFile(Client(), Text(path), Text(L"<Corp>\\y" + name)));
        EXPECT_EQ(kMissing, Bytes(name));
        EXPECT_EQ(kNew, Bytes(L"y" + name));
        EXPECT_EQ(S_OK, api_->DPDeleteFile(Client(), Text(L"<Corp>\\y" + name)));
    }
    EXPECT_EQ(std::vector<std::wstring>(), List());
}

TEST_F(DirectoryCharactersTest, EntriesThatCannotBeNamedAreLeftOutAndRefused) {
    Make(L"A.kra");
    for (const std::wstring& name : names_.refused) {
        // No server takes the one; the other is A to a server.
        if (name[0] != 0xD83D && name[0] != 0xFF21) MakeEntry(name);
        EXPECT_EQ(S_FALSE, api_->DPDeleteFile(Client(), Text(L"<Corp>\\" + name)));
    }
    EXPECT_EQ(std::vector<std::wstring>{L"<Corp>\\A.kra"}, List());
    EXPECT_EQ(kOld, Bytes(L"A.kra"));
}

TEST_F(DirectoryCharactersTest, PublishedFilesArriveUnderTheirNames) {
    std::string profile =
        "[Skein]\r\nCount=" + std::to_string(names_.files.size()) + "\r\n[Clients]\r\n";
    const std::wstring source = Wide(folder_.Path()) + L"\\" + names_.folder;
    CreateDirectoryW(source.c_str(), nullptr);
    int number = 0;
    for (const std::wstring& name : names_.files) {
        MakeWideFile(source + L"\\" + name, kOld);
        profile += "C" + std::to_string(++number) + "=" + Narrowed(source + L"\\" + name) + "\r\n";
    }
    corp_->MakeFile("p.kra", profile);
    ASSERT_EQ(S_OK, api_->DPLoadFile(Client().Address(), Text(L"<Corp>\\p.kra")));
    EXPECT_EQ(S_OK, api_->DPPublishSkesDepFiles(Client()));
    for (const std::wstring& name : names_.files) EXPECT_EQ(kOld, Bytes(name)) << Narrowed(name);
}

}  // namespace
}  // namespace depot::test
