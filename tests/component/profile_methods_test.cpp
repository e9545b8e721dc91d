// Opening, reading, writing and flushing profile files.
#include <vector>

#include "component/component.h"
#include "platform/handles.h"
#include "support/current_folder.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

class ProfileMethodsTest : public ComponentTest {
protected:
    // Opens a file with these bytes in a depot's folder.
    void Load(const std::string& bytes) {
        folder_.MakeFile("A\\a.kra", bytes);
        ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\a.kra")), IsOk());
    }
    HRESULT Write(std::wstring_view value, const wchar_t* key = L"K") {
        return api_->DPSetProfileString(session_, Text(L"S"), Text(key), Text(value));
    }
    std::wstring ReadKey(const wchar_t* key = L"K") { return Read(session_, L"S", key); }
    ULONG ReadInt(const wchar_t* key, ULONG defaultValue) {
        ULONG value = 0x5A5A5A5A;
        EXPECT_THAT(api_->DPGetProfileInt(session_, Text(L"S"), Text(key), defaultValue, &value),
                    IsOk());
        return value;
    }
    std::string Bytes() { return FileBytes(folder_.At("A\\a.kra")); }

    const std::string root_ = DefineDepot("A", "Depot A");
    Session session_{*api_};
};

TEST_F(ProfileMethodsTest, StoredValueIsRead) {
    Load("; a comment\r\n[Other]\r\nK=no\r\n[S]\r\nK=yes\r\n");
    EXPECT_EQ(L"yes", ReadKey());
}

TEST_F(ProfileMethodsTest, MissingFileSectionAndKeyGiveTheDefault) {
    Load("[S]\r\nK=1\r\n");
    EXPECT_EQ(L"(default)", ReadKey(L"Absent"));
    EXPECT_EQ(L"(default)", Read(session_, L"Absent", L"K"));
    EXPECT_EQ(4294967295u, ReadInt(L"Absent", 4294967295u));
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\missing.kra")), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_EQ(7u, ReadInt(L"K", 7));
}

TEST_F(ProfileMethodsTest, NumbersAreReadByTheRulesOfTheSystem) {
    Load("[S]\r\nPlain=42\r\nTail=12abc\r\nQuoted=\"7\"\r\nWord=abc\r\n");
    EXPECT_EQ(42u, ReadInt(L"Plain", 5));
    EXPECT_EQ(12u, ReadInt(L"Tail", 5));
    EXPECT_EQ(7u, ReadInt(L"Quoted", 5));
    EXPECT_EQ(0u, ReadInt(L"Word", 5));
}

TEST_F(ProfileMethodsTest, SurroundingQuotesAreRemovedByReading) {
    Load("[S]\r\nDouble=\"a b\"\r\nSingle='a b'\r\nHalf=\"a b\r\nInner=a \"b\" c\r\n");
    EXPECT_EQ(L"a b", ReadKey(L"Double"));
    EXPECT_EQ(L"a b", ReadKey(L"Single"));
    EXPECT_EQ(L"\"a b", ReadKey(L"Half"));
    EXPECT_EQ(L"a \"b\" c", ReadKey(L"Inner"));
}

TEST_F(ProfileMethodsTest, EveryWrittenValueReadsBackExactly) {
    Load("[S]\r\n");
    for (const wchar_t* value :
         {L" leading", L"   three leading", L"trailing ", L" both ", L" ", L"\"quoted\"",
          L"'single'", L"\"\"", L"''", L"\"half", L"half\"", L"'half", L"a\"b\"c", L" \"mixed\" ",
          L"'\"nested\"'", L"plain", L"a=b;c", L"[S]", L"\x00E4\x00F6\x00FC \x20AC"}) {
        EXPECT_THAT(Write(value), IsOk());
        EXPECT_EQ(value, ReadKey());
    }
}

TEST_F(ProfileMethodsTest, ValueWithALeadingBlankIsStoredInSingleQuotes) {
    Load("[S]\r\n");
    EXPECT_THAT(Write(L" leading"), IsOk());
    EXPECT_EQ("[S]\r\nK=' leading'\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, QuotedValueIsStoredInAFurtherPairOfQuotes) {
    Load("[S]\r\n");
    EXPECT_THAT(Write(L"\"quoted\""), IsOk());
    EXPECT_EQ("[S]\r\nK=\"\"quoted\"\"\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, EmptyValueRemovesTheKey) {
    Load("[S]\r\nK=1\r\nL=2\r\n");
    EXPECT_THAT(Write(L""), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_EQ("[S]\r\nL=2\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, WritingCreatesTheFile) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\new.kra")), IsOk());
    EXPECT_THAT(Write(L"1"), IsOk());
    EXPECT_EQ("[S]\r\nK=1\r\n", FileBytes(folder_.At("A\\new.kra")));
}

TEST_F(ProfileMethodsTest, ReadingCutsTheValueToOneLessThanTheSize) {
    Load("[S]\r\nK=sixlet\r\n");
    EXPECT_EQ(L"six", Read(session_, L"S", L"K", L"D", 4));
    EXPECT_EQ(L"sixle", Read(session_, L"S", L"K", L"D", 6));
    EXPECT_EQ(L"sixlet", Read(session_, L"S", L"K", L"D", 7));
    EXPECT_EQ(L"sixlet", Read(session_, L"S", L"K", L"D", 8));
    EXPECT_EQ(L"", Read(session_, L"S", L"K", L"D", 1));
    EXPECT_EQ(L"", Read(session_, L"S", L"K", L"D", 0));
    EXPECT_EQ(L"sixlet", Read(session_, L"S", L"K", L"D", 0xFFFFFFFF));
    EXPECT_EQ(L"sixlet", Read(session_, L"S", L"K", L"D", 0x80000000));
}

TEST_F(ProfileMethodsTest, EverySizeGivesWhatTheSystemGives) {
    const std::string file = folder_.MakeFile("A\\long.kra", "[S]\r\nK=" + std::string(5000, 'v'));
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(file)), IsOk());
    for (const ULONG size : {2u, 1023u, 1024u, 1025u, 4096u, 5000u, 5001u, 5002u, 60000u}) {
        SCOPED_TRACE(size);
        std::vector<char> expected(size);
        GetPrivateProfileStringA("S", "K", "D", expected.data(), size, file.c_str());
        EXPECT_EQ(Wide(expected.data()), Read(session_, L"S", L"K", L"D", size));
    }
}

TEST_F(ProfileMethodsTest, TextsEndAtTheirFirstNul) {
    Load("[S]\r\nK=1\r\n");
    OutText value;
    using View = std::wstring_view;
    EXPECT_THAT(api_->DPGetProfileString(session_, Text(View(L"S\0x", 3)), Text(View(L"K\0x", 3)),
                                         Text(L"D"), value, 100),
                IsOk());
    EXPECT_EQ(L"1", value.Value());
    EXPECT_THAT(api_->DPGetProfileString(session_, Text(L"S"), Text(L"Absent"),
                                         Text(View(L"D\0x", 3)), value, 100),
                IsOk());
    EXPECT_EQ(L"D", value.Value());
    EXPECT_THAT(Write(View(L"new\0x", 5)), IsOk());
    EXPECT_EQ(L"new", ReadKey());
    EXPECT_THAT(Write(View(L"\0x", 2)), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    // A name does not: what is left of it may be another file's.
    EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text(View(L"<A>\\b.kra\0x", 11))), IsOk());
    EXPECT_THAT(Write(L"2"), IsRefused());
    EXPECT_FALSE(Exists(folder_.At("A\\b.kra")));
}

TEST_F(ProfileMethodsTest, HugeValueDoesNoHarm) {
    Load("[S]\r\nK=1\r\n");
    EXPECT_THAT(Write(std::wstring(100000, L'x'), L"Huge"), IsOk());
    EXPECT_EQ(L"1", ReadKey());
}

TEST_F(ProfileMethodsTest, HugeNamesDoNoHarm) {
    Load("[S]\r\nK=1\r\n");
    const std::wstring huge(100000, L'x');
    EXPECT_EQ(L"(default)", Read(session_, L"S", huge.c_str()));
    EXPECT_EQ(L"(default)", Read(session_, huge.c_str(), L"K"));
    EXPECT_THAT(api_->DPSetProfileString(session_, Text(huge), Text(L"K"), Text(L"V")), IsOk());
    EXPECT_EQ(L"1", ReadKey());
}

TEST_F(ProfileMethodsTest, HugePathDoesNoHarm) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(L"<A>\\" + std::wstring(100000, L'x'))),
                IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_THAT(Write(L"lost"), IsOk());
}

TEST_F(ProfileMethodsTest, PathsAroundTheLimitOfTheSystemDoNoHarm) {
    const std::string here = folder_.MakeFolder("here");
    const CurrentFolder current(here);
    for (std::size_t length = 240; length < 280; ++length) {
        SCOPED_TRACE(length);
        const std::string name(length - root_.size() - 1, 'x');
        ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\" + name)), IsOk());
        EXPECT_THAT(Write(L"1"), IsOk());
        EXPECT_EQ(length < MAX_PATH ? L"1" : L"(default)", Read(session_, L"S", L"K"));
    }
    EXPECT_THAT(FilesIn(here, "*"), testing::IsEmpty());
}

TEST_F(ProfileMethodsTest, LongValueReadsBack) {
    Load("[S]\r\n");
    const std::wstring value(10000, L'v');
    EXPECT_THAT(Write(value), IsOk());
    EXPECT_EQ(value, Read(session_, L"S", L"K", L"D", 20000));
}

TEST_F(ProfileMethodsTest, CharactersOutsideTheCodePageAreReplaced) {
    Load("[S]\r\n");
    EXPECT_THAT(Write(L"\x4E2D"), IsOk());
    EXPECT_EQ(L"?", ReadKey());
}

TEST_F(ProfileMethodsTest, BytesAboveAsciiAreTextOfTheCodePage) {
    Load("[S]\r\nK=\xE9t\xE9 \x80\r\n");
    EXPECT_EQ(L"\x00E9t\x00E9 \x20AC", ReadKey());
}

TEST_F(ProfileMethodsTest, FileWithoutALastLineEndIsReadAndExtended) {
    Load("[S]\nK=1");
    EXPECT_EQ(L"1", ReadKey());
    EXPECT_THAT(Write(L"2", L"L"), IsOk());
    EXPECT_EQ(L"1", ReadKey());
    EXPECT_EQ(L"2", ReadKey(L"L"));
}

TEST_F(ProfileMethodsTest, RefusedWriteIsNotReported) {
    Load("[S]\r\nK=1\r\n");
    const HANDLE opened = CreateFileA(folder_.At("A\\a.kra").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, opened);
    UniqueHandle held(opened);
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ(L"1", ReadKey());
    held.reset();
    EXPECT_EQ("[S]\r\nK=1\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, LockedFileGivesTheDefault) {
    Load("[S]\r\nK=1\r\n");
    const HANDLE opened = CreateFileA(folder_.At("A\\a.kra").c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, opened);
    UniqueHandle held(opened);
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_THAT(Write(L"2"), IsOk());
    held.reset();
    EXPECT_EQ("[S]\r\nK=1\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, ReadOnlyFileIsReadAndAWriteIsNotReported) {
    Load("[S]\r\nK=1\r\nOther=kept\r\n");
    const std::string file = folder_.At("A\\a.kra");
    ASSERT_TRUE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(L"1", ReadKey());
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ(L"kept", ReadKey(L"Other"));
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ProfileMethodsTest, WritingKeepsBytesBeyondAsciiAndFilesWithoutALineEnd) {
    Load("[S]\r\nName=\xE4\xF6\xFC\x81\xFF\r\nK=1");
    EXPECT_THAT(Write(L"2"), IsOk());
    const std::string bytes = Bytes();
    EXPECT_NE(std::string::npos, bytes.find("Name=\xE4\xF6\xFC\x81\xFF"));
    EXPECT_EQ(L"2", ReadKey());
}

TEST_F(ProfileMethodsTest, HugeFileKeepsItsFirstAndLastKeysWhenOneIsWritten) {
    std::string text = "[First]\r\nK=first\r\n[S]\r\nK=1\r\n";
    while (text.size() < 50'000'000) text += "Filler" + std::to_string(text.size()) + "=x\r\n";
    Load(text + "[Last]\r\nK=last\r\n");
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ(L"2", ReadKey());
    OutText value;
    EXPECT_THAT(api_->DPGetProfileString(session_, Text("First"), Text("K"), Text(""), value, 50),
                IsOk());
    EXPECT_EQ(L"first", value.Value());
    EXPECT_THAT(api_->DPGetProfileString(session_, Text("Last"), Text("K"), Text(""), value, 50),
                IsOk());
    EXPECT_EQ(L"last", value.Value());
}

TEST_F(ProfileMethodsTest, FolderAsTheFileGivesTheDefault) {
    folder_.MakeFolder("A\\folder.kra");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\folder.kra")), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
}

TEST_F(ProfileMethodsTest, WriteIntoAMissingFolderIsLost) {
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\no\\such\\a.kra")), IsOk());
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ(L"(default)", ReadKey());
    EXPECT_FALSE(Exists(folder_.At("A\\no")));
}

TEST_F(ProfileMethodsTest, LoadingAgainReplacesTheCurrentFile) {
    Load("[S]\r\nK=1\r\n");
    folder_.MakeFile("A\\b.kra", "[S]\r\nK=2\r\n");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\b.kra")), IsOk());
    EXPECT_EQ(L"2", ReadKey());
    EXPECT_THAT(Write(L"3"), IsOk());
    EXPECT_EQ("[S]\r\nK=1\r\n", Bytes());
    EXPECT_EQ("[S]\r\nK=3\r\n", FileBytes(folder_.At("A\\b.kra")));
}

TEST_F(ProfileMethodsTest, FlushingAFolderFileSucceedsAndLeavesItAlone) {
    Load("[S]\r\nK=1\r\n");
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_THAT(api_->DPFlushFile(session_), IsOk());
    EXPECT_EQ("[S]\r\nK=2\r\n", Bytes());
    EXPECT_EQ(L"2", ReadKey());
}

TEST_F(ProfileMethodsTest, WritesOfOneSessionAreSeenByAnother) {
    Load("[S]\r\nK=1\r\n");
    Session other(*api_);
    ASSERT_THAT(api_->DPLoadFile(other.Address(), Text("<A>\\a.kra")), IsOk());
    EXPECT_EQ(L"1", Read(other, L"S", L"K"));
    EXPECT_THAT(Write(L"22"), IsOk());
    EXPECT_EQ(L"22", Read(other, L"S", L"K"));
}

TEST_F(ProfileMethodsTest, EndingTheSessionKeepsWhatWasWritten) {
    LONG_PTR handle = 0;
    ASSERT_THAT(api_->DPLoadFile(&handle, Text("<A>\\a.kra")), IsOk());
    EXPECT_THAT(api_->DPSetProfileString(handle, Text("S"), Text("K"), Text("1")), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    EXPECT_EQ("[S]\r\nK=1\r\n", Bytes());
}

TEST_F(ProfileMethodsTest, FileIsFoundByEveryFormOfItsPath) {
    Load("[S]\r\nK=1\r\n");
    for (const std::string& path :
         {std::string("<a>\\A.KRA"), root_ + "\\a.kra", root_ + "\\a.kra   "}) {
        SCOPED_TRACE(path);
        ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(path)), IsOk());
        EXPECT_EQ(L"1", ReadKey());
    }
}

TEST_F(ProfileMethodsTest, PlainFileOutsideEveryDepotIsReadAndWritten) {
    const std::string file = folder_.MakeFile("plain.ini", "[S]\r\nK=1\r\n");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(file)), IsOk());
    EXPECT_EQ(L"1", ReadKey());
    EXPECT_THAT(Write(L"2"), IsOk());
    EXPECT_EQ("[S]\r\nK=2\r\n", FileBytes(file));
    EXPECT_THAT(api_->DPFlushFile(session_), IsOk());
}

}  // namespace
}  // namespace depot::test
