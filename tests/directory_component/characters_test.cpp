// Names of many characters in a directory, in whatever ANSI code page the process runs in.
#include "component/characters_fixture.h"
#include "directory_component/stores_fixture.h"
#include "platform/system_code_page.h"
#include "support/offline_files.h"
#include "support/results.h"

namespace depot::test {
namespace {

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

    void Make(const std::wstring& name) { corp_->MakeFile(Narrowed(name), kOldProfile); }
    std::string Bytes(const std::wstring& name) { return corp_->Bytes(Narrowed(name)); }
    // Made behind the component's back, under a name that the code page may not have.
    void MakeEntry(const std::wstring& name) {
        server_.AddFile(Utf8FromWide(name), Utf8FromWide(WideFromAnsi(base_)), kOldProfile);
    }

    const PageNames names_ = NamesOfThisPage();
    const BoxLog boxes_;
    DirectoryServer& server_ = SharedServer();
    const std::string parent_ = NewFolder();
    const std::string base_ = "cn=" + Narrowed(names_.folder) + "," + parent_;
    const CleanWorkingFiles clean_;
    LateSession client_{*api_};
    std::optional<DirectoryTestFolder> corp_;
};

TEST_F(DirectoryCharactersTest, ListingShowsEveryFileUnderItsName) {
    for (const std::wstring& name : names_.files) MakeEntry(name);
    EXPECT_EQ(PathsIn(L"<Corp>\\", names_.files), List(*api_, L"<Corp>\\"));
}

TEST_F(DirectoryCharactersTest, ValuesCopiesRenameAndDeletionMeetTheFileOfThatNameOnly) {
    for (const std::wstring& name : names_.files) MakeEntry(name);
    for (const std::wstring& name : names_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::wstring path = L"<Corp>\\" + name;
        EXPECT_THAT(api_->DPFileExists(client_(), Text(path)), IsOk());
        ASSERT_THAT(api_->DPLoadFile(client_().Address(), Text(path)), IsOk());
        EXPECT_EQ(L"old", Read(client_(), L"S", L"K"));
        EXPECT_THAT(api_->DPSetProfileString(client_(), Text("S"), Text("K"), Text("new")), IsOk());
        EXPECT_THAT(api_->DPFlushFile(client_()), IsOk());
        EXPECT_EQ(kNewProfile, Bytes(name));
        OutText copy;
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(client_(), Text(path), copy), IsOk());
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(copy.Value())), IsOk());
        EXPECT_THAT(api_->DPRenameFile(client_(), Text(path), Text(L"<Corp>\\y" + name)), IsOk());
        EXPECT_EQ(kMissing, Bytes(name));
        EXPECT_EQ(kNewProfile, Bytes(L"y" + name));
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<Corp>\\y" + name)), IsOk());
    }
    EXPECT_EQ(std::vector<std::wstring>(), List(*api_, L"<Corp>\\"));
}

TEST_F(DirectoryCharactersTest, EntriesThatCannotBeNamedAreLeftOutAndRefused) {
    Make(L"A.kra");
    for (const std::wstring& name : names_.refused) {
        // No server takes the one; the other is A to a server.
        if (name[0] != 0xD83D && name[0] != 0xFF21) MakeEntry(name);
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<Corp>\\" + name)), IsRefused());
    }
    EXPECT_EQ(std::vector<std::wstring>{L"<Corp>\\A.kra"}, List(*api_, L"<Corp>\\"));
    EXPECT_EQ(kOldProfile, Bytes(L"A.kra"));
}

TEST_F(DirectoryCharactersTest, MarkOfAResourceTakesAWholeCharacterWithIt) {
    corp_->MakeFile("p.kra",
                    "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=u" + LetterOfCodePage() + ".cfg\r\n");
    ASSERT_THAT(api_->DPLoadFile(client_().Address(), Text(L"<Corp>\\p.kra")), IsOk());
    EXPECT_THAT(api_->DPPublishSkesDepFiles(client_()), IsOk());
    EXPECT_EQ(L".cfg", Read(client_(), L"Clients", L"C1"));
}

TEST_F(DirectoryCharactersTest, PublishedFilesArriveUnderTheirNames) {
    std::string profile =
        "[Skein]\r\nCount=" + std::to_string(names_.files.size()) + "\r\n[Clients]\r\n";
    // In the short one: an entry of a profile holds 259 bytes, however long the test's own path is.
    const std::wstring source = Wide(folder_.Path()) + L"\\" + names_.subfolder;
    CreateDirectoryW(source.c_str(), nullptr);
    int number = 0;
    for (const std::wstring& name : names_.files) {
        MakeWideFile(source + L"\\" + name, kOldProfile);
        profile += "C" + std::to_string(++number) + "=" + Narrowed(source + L"\\" + name) + "\r\n";
    }
    corp_->MakeFile("p.kra", profile);
    ASSERT_THAT(api_->DPLoadFile(client_().Address(), Text(L"<Corp>\\p.kra")), IsOk());
    EXPECT_THAT(api_->DPPublishSkesDepFiles(client_()), IsOk());
    for (const std::wstring& name : names_.files)
        EXPECT_EQ(kOldProfile, Bytes(name)) << Narrowed(name);
}

}  // namespace
}  // namespace depot::test
