// Files and folders anywhere: the same calls on a depot of either kind and beside the depots.
#include "directory_component/stores_fixture.h"

namespace depot::test {
namespace {

using testing::IsEmpty;

constexpr wchar_t kJapanese[] = L"\u4E88\u5B9A\u8868";

using AnywhereTest = StoresTest;

TEST_P(AnywhereTest, ExistsKnowsFilesFoldersAndRoots) {
    store_.MakeFile("Sub\\a.kra", "1");
    for (const char* name : {"", "Sub", "Sub\\a.kra"}) EXPECT_TRUE(IsThere(Path(name))) << name;
    EXPECT_FALSE(IsThere(Path("Sub\\b.kra")));
    EXPECT_FALSE(IsThere(Path("None\\a.kra")));
    EXPECT_EQ(0u, LastCode());
    EXPECT_TRUE(IsThere(Path("Sub\\a.kra"), 0));
    EXPECT_TRUE(IsThere(folder_.MakeFile("plain.txt", "x")));
    EXPECT_FALSE(IsThere(folder_.At("none.txt")));
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
}

TEST_P(AnywhereTest, PathsOfNoPlaceAreRefused) {
    store_.MakeFile("a.kra", "1");
    OutBool answer;
    const std::pair<std::string, DWORD> cases[] = {{"<None>\\a.kra", ERROR_PATH_NOT_FOUND},
                                                   {"a.kra", ERROR_BAD_PATHNAME},
                                                   {"", ERROR_BAD_PATHNAME},
                                                   {"\\a.kra", ERROR_BAD_PATHNAME},
                                                   {Path("Sub\\..\\a.kra"), ERROR_INVALID_NAME},
                                                   {Path(".."), ERROR_INVALID_NAME},
                                                   {Path("Sub\\.\\a.kra"), ERROR_INVALID_NAME},
                                                   {std::string(100000, 'x'), ERROR_BAD_PATHNAME}};
    for (const auto& [path, code] : cases) {
        SCOPED_TRACE(path.substr(0, 50));
        EXPECT_THAT(api2_->Exists(Client(), Bstr(path), answer), IsRefused());
        EXPECT_TRUE(answer.IsFalse());
        EXPECT_EQ(code, LastCode());
        EXPECT_THAT(api2_->IsWritable(Client(), Bstr(path), answer), IsRefused());
        EXPECT_THAT(Write(path, L"new"), IsRefused());
        EXPECT_EQ(L"(null)", Read(path));
        EXPECT_EQ(code, LastCode());
    }
    EXPECT_EQ("1", store_.Bytes("a.kra"));
}

TEST_P(AnywhereTest, LongNamesAreRefusedByTheirPlace) {
    OutBool answer;
    const std::string path = Path(std::string(100000, 'x') + ".kra");
    EXPECT_THAT(Write(path, L"new"), IsRefused());
    EXPECT_NE(0u, LastCode());
    EXPECT_EQ(L"(null)", Read(path));
    EXPECT_THAT(api2_->IsWritable(Client(), Bstr(path), answer), IsRefused());
    EXPECT_TRUE(answer.IsFalse());
}

TEST_P(AnywhereTest, WritablePlacesAreFoundByTryingAndLeftAsTheyWere) {
    store_.MakeFile("a.kra", "1");
    OutBool answer;
    for (const std::string& path :
         {Path(""), Path("Sub"), Path("a.kra"), Path("new.kra"), folder_.At("new.txt")}) {
        SCOPED_TRACE(path);
        EXPECT_THAT(api2_->IsWritable(Client(), Bstr(path), answer), IsOk());
        EXPECT_TRUE(answer.IsTrue());
    }
    EXPECT_EQ("1", store_.Bytes("a.kra"));
    EXPECT_FALSE(IsThere(Path("new.kra")));
    EXPECT_THAT(api2_->IsWritable(Client(), Bstr(folder_.At("none\\a.txt")), answer), IsRefused());
    EXPECT_TRUE(answer.IsFalse());
    EXPECT_NE(0u, LastCode());
}

TEST_P(AnywhereTest, TextIsReadInTheEncodingOfItsFile) {
    store_.MakeFile("plain.kra", "a\r\nb");
    store_.MakeFile("empty.kra", "");
    store_.MakeFile("eight.kra",
                    "\xEF\xBB\xBF"
                    "\xE4\xBA\x88");
    store_.MakeFile("sixteen.kra", std::string("\xFF\xFE\x88\x4E\x00\x00", 6));
    store_.MakeFile("swapped.kra", "\xFE\xFF\x4E\x88");
    EXPECT_EQ(L"a\r\nb", Read(Path("plain.kra")));
    EXPECT_EQ(Wide(Empty()), Read(Path("empty.kra")));
    EXPECT_EQ(L"\u4E88", Read(Path("eight.kra")));
    EXPECT_EQ(std::wstring(L"\u4E88\0", 2), Read(Path("sixteen.kra")));
    EXPECT_EQ(L"\u4E88", Read(Path("swapped.kra")));
    EXPECT_EQ(0u, LastCode());
}

TEST_P(AnywhereTest, BytesThatAreNoTextAreRefused) {
    store_.MakeFile("half.kra", "\xFF\xFE\x88");
    store_.MakeFile("eight.kra", "\xEF\xBB\xBF\xE4\xBA");
    for (const char* name : {"half.kra", "eight.kra"}) {
        EXPECT_EQ(L"(null)", Read(Path(name)));
        EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, LastCode());
    }
}

TEST_P(AnywhereTest, TextKeepsTheEncodingOfItsFile) {
    const std::pair<std::string, std::string> cases[] = {
        {"x", "new"},
        {"\xEF\xBB\xBF", "\xEF\xBB\xBFnew"},
        {"\xFF\xFE", std::string("\xFF\xFEn\0e\0w\0", 8)},
        {"\xFE\xFF", std::string("\xFE\xFF\0n\0e\0w", 8)}};
    for (const auto& [before, after] : cases) {
        store_.MakeFile("a.kra", before);
        EXPECT_THAT(Write(Path("a.kra"), L"new"), IsOk());
        EXPECT_EQ(after, store_.Bytes("a.kra"));
        EXPECT_EQ(L"new", Read(Path("a.kra")));
        EXPECT_THAT(Delete(Path("a.kra")), IsOk());
    }
}

TEST_P(AnywhereTest, NewFileIsAnsiUnlessAnotherEncodingIsAskedFor) {
    EXPECT_THAT(Write(Path("Sub\\a.kra"), L"one"), IsOk());
    EXPECT_EQ("one", store_.Bytes("Sub\\a.kra"));
    EXPECT_THAT(Write(Path("Sub\\a.kra"), L"two", TEXT_UTF8), IsOk());
    EXPECT_EQ("\xEF\xBB\xBFtwo", store_.Bytes("Sub\\a.kra"));
    EXPECT_THAT(Write(Path("Sub\\a.kra"), kJapanese, TEXT_UTF16), IsOk());
    EXPECT_EQ(kJapanese, Read(Path("Sub\\a.kra")));
    EXPECT_THAT(Write(Path("Sub\\a.kra"), L"", TEXT_ANSI), IsOk());
    EXPECT_EQ(Empty(), store_.Bytes("Sub\\a.kra"));
}

TEST_P(AnywhereTest, TextThatItsFileCannotHoldLeavesTheFileAlone) {
    store_.MakeFile("a.kra", "old");
    EXPECT_THAT(Write(Path("a.kra"), L"\xD800"), IsRefused());
    EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, LastCode());
    EXPECT_EQ("old", store_.Bytes("a.kra"));
}

TEST_P(AnywhereTest, LongTextComesBackAsItWas) {
    std::wstring text(100000, L'x');
    text[500] = L'\0';
    EXPECT_THAT(Write(Path("a.kra"), text), IsOk());
    EXPECT_EQ(text, Read(Path("a.kra")));
}

TEST_P(AnywhereTest, FolderIsNeitherReadNorWritten) {
    store_.MakeFile("Sub\\a.kra", "1");
    EXPECT_EQ(L"(null)", Read(Path("Sub")));
    EXPECT_EQ(ERROR_ACCESS_DENIED, LastCode());
    EXPECT_THAT(Write(Path("Sub"), L"new"), IsRefused());
    EXPECT_THAT(Write(Path(""), L"new"), IsRefused());
    EXPECT_EQ("1", store_.Bytes("Sub\\a.kra"));
}

TEST_P(AnywhereTest, NullTextsAreEmptyOnes) {
    store_.MakeFile("a.kra", "1");
    OutBool done;
    OutText text;
    EXPECT_THAT(api2_->Exists(Client(), nullptr, done), IsRefused());
    EXPECT_THAT(api2_->ReadText(Client(), nullptr, text), IsRefused());
    EXPECT_TRUE(text.IsNull());
    EXPECT_THAT(api2_->WriteText(Client(), Bstr(Path("a.kra")), nullptr, TEXT_ANSI, done), IsOk());
    EXPECT_EQ(Empty(), store_.Bytes("a.kra"));
}

INSTANTIATE_TEST_SUITE_P(Stores, AnywhereTest,
                         testing::Values(DepotKind::kFolder, DepotKind::kDirectory), DepotKindName);

}  // namespace
}  // namespace depot::test
