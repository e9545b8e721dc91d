// Names of many characters, in whatever ANSI code page the process runs in.
#include "component/characters_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

// Contents are converted by the code page of the thread's language, which in a Japanese process is
// Japanese unless the user chose another one.
class ThreadLocale {
public:
    ThreadLocale() {
        const WORD language = GetACP() == 932 ? LANG_JAPANESE : LANG_ENGLISH;
        SetThreadLocale(MAKELCID(MAKELANGID(language, SUBLANG_DEFAULT), SORT_DEFAULT));
    }
    ~ThreadLocale() { SetThreadLocale(before_); }
    ThreadLocale(const ThreadLocale&) = delete;
    ThreadLocale& operator=(const ThreadLocale&) = delete;

private:
    const LCID before_ = GetThreadLocale();
};

// A depot "Work" in a folder whose name has the characters of the code page.
class CharactersTest : public ComponentTest {
protected:
    CharactersTest() { DefineWideDepot("Work", names_.folder); }

    void DefineWideDepot(const std::string& name, const std::wstring& folder) {
        const std::wstring root = Wide(folder_.Path()) + L"\\" + folder;
        CreateDirectoryW(root.c_str(), nullptr);
        depots_.Text(name, "Path1", Narrowed(root));
    }
    std::wstring At(const std::wstring& name) const {
        return Wide(folder_.Path()) + L"\\" + names_.folder + L"\\" + name;
    }
    void Make(const std::wstring& name, const char* bytes = kOldProfile) {
        MakeWideFile(At(name), bytes);
    }
    std::string Bytes(const std::wstring& name) { return WideBytes(At(name)); }

    HRESULT Load(const std::wstring& path) {
        return api_->DPLoadFile(client_().Address(), Text(path));
    }
    HRESULT Set(const wchar_t* value) {
        return api_->DPSetProfileString(client_(), Text(L"S"), Text(L"K"), Text(value));
    }
    std::wstring Get() { return Read(client_(), L"S", L"K"); }

    static std::vector<std::wstring> PathsOf(const std::vector<std::wstring>& files) {
        return PathsIn(L"<Work>\\", files);
    }

    const PageNames names_ = NamesOfThisPage();
    const BoxLog boxes_;
    LateSession client_{*api_};
};

TEST_F(CharactersTest, ListingShowsEveryFileUnderItsName) {
    for (const std::wstring& name : names_.files) Make(name);
    EXPECT_EQ(PathsOf(names_.files), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, ValuesAreReadAndWrittenInTheFileOfThatName) {
    for (const std::wstring& name : names_.files) Make(name);
    for (const std::wstring& name : names_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::wstring path = L"<Work>\\" + name;
        EXPECT_THAT(Load(path), IsOk());
        EXPECT_EQ(L"old", Get());
        EXPECT_THAT(Set(L"new"), IsOk());
        EXPECT_EQ(kNewProfile, Bytes(name));
        EXPECT_THAT(api_->DPFileExists(client_(), Text(path)), IsOk());
        EXPECT_THAT(api_->DPIsPathWriteAble(client_(), Text(path)), IsOk());
        OutText local;
        EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(path), local), IsOk());
        EXPECT_EQ(At(name), local.Value());
    }
}

TEST_F(CharactersTest, NewFileIsMadeInTheDepotsFolder) {
    EXPECT_THAT(Load(L"<Work>\\x.kra"), IsOk());
    EXPECT_THAT(Set(L"new"), IsOk());
    EXPECT_EQ(kNewProfile, Bytes(L"x.kra"));
}

TEST_F(CharactersTest, RenameCopiesAndDeletionMeetTheFileOfThatNameOnly) {
    for (const std::wstring& name : names_.files) Make(name);
    for (const std::wstring& name : names_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::wstring path = L"<Work>\\" + name;
        OutText copy;
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(client_(), Text(path), copy), IsOk());
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(copy.Value())), IsOk());
        EXPECT_THAT(
            api_->DPCopyFileToLocalFS(client_(), Text(path), Text(At(L"out.kra")), VARIANT_TRUE),
            IsOk());
        EXPECT_EQ(kOldProfile, Bytes(L"out.kra"));
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<Work>\\out.kra")), IsOk());
        EXPECT_THAT(api_->DPRenameFile(client_(), Text(path), Text(L"<Work>\\y" + name)), IsOk());
        EXPECT_EQ("(missing)", Bytes(name));
        EXPECT_EQ(kOldProfile, Bytes(L"y" + name));
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<Work>\\y" + name)), IsOk());
    }
    EXPECT_EQ(PathsOf({}), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, DepotsWhoseNamesDifferAreTwo) {
    for (const std::wstring& name : names_.depots) {
        DefineWideDepot(Narrowed(name), name);
        MakeWideFile(Wide(folder_.Path()) + L"\\" + name + L"\\a.kra", kOldProfile);
    }
    const std::wstring second = L"<" + names_.depots[1] + L">\\a.kra";
    EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<" + names_.depots[0] + L">\\a.kra")), IsOk());
    EXPECT_THAT(api_->DPFileExists(client_(), Text(second)), IsOk());
    OutText display;
    EXPECT_THAT(api_->DPGetPathFromDisplayName(
                    client_(), Text(L"<" + names_.depots[1] + L">\\a.kra"), display),
                IsOk());
    EXPECT_EQ(second, display.Value());
}

TEST_F(CharactersTest, NameThatTheCodePageCannotHoldIsRefusedByEveryMethod) {
    std::vector<std::wstring> refused = names_.refused;
    refused.push_back(std::wstring(L"A\0B.kra", 7));
    const std::vector<std::wstring> decoys = {L"A.kra", L"A", L"_.kra", L"x.kra"};
    for (const std::wstring& name : decoys) Make(name);
    for (const std::wstring& name : refused) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::wstring path = L"<Work>\\" + name;
        OutText text;
        EXPECT_THAT(api_->DPDeleteFile(client_(), Text(path)), IsRefused());
        EXPECT_THAT(api_->DPRenameFile(client_(), Text(path), Text(L"<Work>\\n.kra")), IsRefused());
        EXPECT_THAT(api_->DPRenameFile(client_(), Text(L"<Work>\\A.kra"), Text(path)), IsRefused());
        EXPECT_THAT(api_->DPFileExists(client_(), Text(path)), IsRefused());
        EXPECT_THAT(api_->DPIsPathWriteAble(client_(), Text(path)), IsRefused());
        EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(path), text), IsRefused());
        EXPECT_TRUE(text.IsNull());
        EXPECT_THAT(api_->DPGetDepotDisplayPath(client_(), Text(path), text), IsRefused());
        EXPECT_TRUE(text.IsNull());
        EXPECT_THAT(api_->DPGetPathFromDisplayName(client_(), Text(path), text), IsRefused());
        EXPECT_TRUE(text.IsNull());
        EXPECT_THAT(api_->DPSetSelItemPath(client_(), Text(path)), IsRefused());
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(client_(), Text(path), text), IsRefused());
        EXPECT_EQ(L"", text.Value());
        EXPECT_THAT(
            api_->DPCopyFileToLocalFS(client_(), Text(path), Text(At(L"out.kra")), VARIANT_FALSE),
            IsRefused());
        EXPECT_THAT(api_->DPCopyFileToLocalFS(client_(), Text(L"<Work>\\A.kra"), Text(At(name)),
                                              VARIANT_FALSE),
                    IsRefused());
        LONG_PTR handle = kJunkHandle;
        LONG count = 4711;
        EXPECT_THAT(api_->DPFindInit(&handle, Text(path), Text(L".kra"), APP_SKEIN, &count),
                    IsRefused());
        EXPECT_EQ(0, handle);
        EXPECT_EQ(4711, count);
    }
    for (const std::wstring& name : decoys) EXPECT_EQ(kOldProfile, Bytes(name));
    EXPECT_EQ(PathsOf({L"A.kra", L"_.kra", L"x.kra"}), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, LoadOfSuchANameLeavesTheSessionWithoutACurrentFile) {
    Make(L"A.kra");
    for (const std::wstring& name : names_.refused) {
        SCOPED_TRACE(testing::PrintToString(name));
        ASSERT_THAT(Load(L"<Work>\\A.kra"), IsOk());
        EXPECT_THAT(Load(L"<Work>\\" + name), IsOk());
        EXPECT_THAT(Set(L"new"), IsRefused());
        EXPECT_EQ(L"(failed)", Get());
        EXPECT_THAT(api_->DPFlushFile(client_()), IsRefused());
    }
    EXPECT_EQ(kOldProfile, Bytes(L"A.kra"));
    EXPECT_EQ(PathsOf({L"A.kra"}), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, ListingLeavesOutFilesThatCannotBeNamed) {
    Make(L"A.kra");
    for (const std::wstring& name : names_.refused) Make(name);
    EXPECT_EQ(PathsOf({L"A.kra"}), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, NulsBehindANameOnlyFillItUp) {
    Make(L"A.kra");
    EXPECT_THAT(api_->DPFileExists(client_(), Text(std::wstring(L"<Work>\\A.kra\0\0", 14))),
                IsOk());
}

TEST_F(CharactersTest, ValuesOfTheCodePageComeBack) {
    const ThreadLocale locale;
    ASSERT_THAT(Load(L"<Work>\\v.kra"), IsOk());
    for (const std::wstring& name : names_.files) {
        SCOPED_TRACE(Narrowed(name));
        EXPECT_THAT(api_->DPSetProfileString(client_(), Text(name), Text(L"K" + name),
                                             Text(L" 'v' " + name)),
                    IsOk());
        EXPECT_EQ(L" 'v' " + name, Read(client_(), name.c_str(), (L"K" + name).c_str()));
        EXPECT_NE(std::string::npos, Bytes(L"v.kra").find(Narrowed(L"' 'v' " + name)));
    }
}

TEST_F(CharactersTest, ValueThatIsCutLosesWholeCharacters) {
    const ThreadLocale locale;
    std::wstring value;
    for (const std::wstring& name : names_.files) value += name.substr(0, name.size() - 4);
    ASSERT_THAT(Load(L"<Work>\\v.kra"), IsOk());
    ASSERT_THAT(Set(value.c_str()), IsOk());
    for (ULONG size = 1; size <= 24; ++size) {
        SCOPED_TRACE(size);
        const std::wstring cut = Read(client_(), L"S", L"K", L"", size);
        EXPECT_EQ(value.substr(0, cut.size()), cut);
        EXPECT_LT(Narrowed(cut).size(), size);
    }
}

TEST_F(CharactersTest, FormsOfOneLetterAreTwoNames) {
    if (GetACP() != CP_UTF8) return;
    Make(L"\xE9.kra", kNewProfile);
    Make(L"e\x0301.kra");
    EXPECT_THAT(api_->DPDeleteFile(client_(), Text(L"<Work>\\\xE9.kra")), IsOk());
    EXPECT_EQ(PathsOf({L"e\x0301.kra"}), List(*api_, L"<Work>\\"));
}

TEST_F(CharactersTest, LettersOfBothCasesNameOneFile) {
    const std::wstring upper = GetACP() == 932 ? L"\xFF21.kra" : L"\xC4.kra";
    const std::wstring lower = GetACP() == 932 ? L"\xFF41.kra" : L"\xE4.kra";
    DefineWideDepot(Narrowed(upper), L"letters");
    MakeWideFile(Wide(folder_.Path()) + L"\\letters\\a.kra", kOldProfile);
    EXPECT_THAT(api_->DPFileExists(client_(), Text(L"<" + lower + L">\\a.kra")), IsOk());
}

}  // namespace
}  // namespace depot::test
