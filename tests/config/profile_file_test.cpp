#include "config/profile_file.h"

#include <gtest/gtest.h>

#include <thread>

#include "config/file_types.h"
#include "platform/handles.h"
#include "support/code_pages.h"
#include "support/failing_memory.h"
#include "support/full_disk.h"
#include "support/random_text.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

constexpr std::uint32_t kAnySize = 4096;

class ProfileFileTest : public testing::Test {
protected:
    std::string Read(const std::string& key, std::uint32_t size = kAnySize) const {
        return ReadProfileString({"Section", key, "default", size}, file_);
    }

    int Write(const char* value) const {
        return WriteProfileValue("Section", "Key", value, file_.c_str());
    }

    // Keeps the file open so that others may do only what `sharing` allows.
    UniqueHandle Hold(DWORD sharing) const {
        return UniqueHandle(CreateFileA(file_.c_str(), GENERIC_READ, sharing, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    test::ScratchFolder folder_;
    std::string file_ = folder_.At("a.kra");
};

using WriteProfileValueTest = ProfileFileTest;
using ReadProfileStringTest = ProfileFileTest;
using GetTerminalTypeTest = ProfileFileTest;
using ReadWholeFileTest = ProfileFileTest;

TEST_F(WriteProfileValueTest, BlanksAtAnEndAreStoredBetweenSingleQuotes) {
    EXPECT_THAT(Write(" value"), IsDone());
    EXPECT_EQ("[Section]\r\nKey=' value'\r\n", test::FileBytes(file_));
    EXPECT_EQ(" value", Read("Key"));
    EXPECT_THAT(Write("value "), IsDone());
    EXPECT_EQ("[Section]\r\nKey='value '\r\n", test::FileBytes(file_));
    EXPECT_EQ("value ", Read("Key"));
}

TEST_F(ReadProfileStringTest, TextsThatTheSystemCannotCountNeverReachIt) {
    const std::string huge(100'000, 'x'), fits(32'766, 'x');
    Write("1");
    EXPECT_EQ("default", ReadProfileString({huge, "Key", "default", kAnySize}, file_));
    EXPECT_EQ("default", ReadProfileString({"Section", huge, "default", kAnySize}, file_));
    EXPECT_EQ("def", ReadProfileString({"Section", huge, "default", 4}, file_));
    EXPECT_EQ("", ReadProfileString({"Section", huge, "default", 0}, file_));
    EXPECT_EQ("1", ReadProfileString({"Section", "Key", huge, kAnySize}, file_));
    EXPECT_EQ(huge, ReadProfileString({"Section", "None", huge, 0xFFFFFFFF}, file_));
    EXPECT_EQ(7u, ReadProfileInt(huge, "Key", 7, file_));
    EXPECT_EQ(7u, ReadProfileInt("Section", huge, 7, file_));
    EXPECT_EQ("default", ReadProfileString({fits, fits, "default", kAnySize}, file_));
}

TEST_F(ReadProfileStringTest, CutDefaultsEndBehindWholeCharacters) {
    const std::string huge(100'000, 'x');
    const struct {
        unsigned codePage;
        std::string character;
    } rows[] = {{932, "\x95\x5C"}, {65001, "\u8868"}, {65001, "\U0001F600"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.character);
        const test::CodePageScope page(row.codePage);
        const std::string text = "a" + row.character;
        const auto fits = static_cast<std::uint32_t>(text.size() + 1);
        EXPECT_EQ(text, ReadProfileString({huge, "Key", text, fits}, file_));
        for (std::uint32_t size = 2; size < fits; ++size) {
            EXPECT_EQ("a", ReadProfileString({huge, "Key", text, size}, file_)) << size;
        }
        EXPECT_EQ("", ReadProfileString({huge, "Key", text, 1}, file_));
    }
}

TEST_F(WriteProfileValueTest, TextsThatTheSystemCannotCountAreNotWritten) {
    const std::string huge(32'767, 'x');
    Write("1");
    const std::string before = test::FileBytes(file_);
    EXPECT_THAT(WriteProfileValue(huge.c_str(), "Key", "2", file_.c_str()), Fails());
    EXPECT_THAT(WriteProfileValue("Section", huge.c_str(), "2", file_.c_str()), Fails());
    EXPECT_THAT(Write(huge.c_str()), Fails());
    EXPECT_EQ(before, test::FileBytes(file_));
}

TEST_F(ProfileFileTest, PathsThatTheSystemCannotCountNameNoFile) {
    for (const std::size_t size : {32'767u, 40'000u, 100'000u}) {
        const std::string path = "C:\\" + std::string(size - 7, 'x') + ".kre";
        EXPECT_THAT(WriteProfileValue("Section", "Key", "2", path.c_str()), Fails());
        EXPECT_EQ("default", ReadProfileString({"Section", "Key", "default", kAnySize}, path));
        EXPECT_EQ(7u, ReadProfileInt("Section", "Key", 7, path));
        EXPECT_EQ(1u, GetTerminalType(path, kSessionProfile));
    }
}

TEST_F(WriteProfileValueTest, EnclosingQuotesAreStoredBetweenAFurtherPair) {
    Write("\"value\"");
    EXPECT_EQ("[Section]\r\nKey=\"\"value\"\"\r\n", test::FileBytes(file_));
    EXPECT_EQ("\"value\"", Read("Key"));
    Write("'value'");
    EXPECT_EQ("[Section]\r\nKey=''value''\r\n", test::FileBytes(file_));
    EXPECT_EQ("'value'", Read("Key"));
}

TEST_F(WriteProfileValueTest, EmptyValueIsStoredAndANullValueDeletesTheKey) {
    EXPECT_THAT(Write(""), IsDone());
    EXPECT_EQ("", Read("Key"));
    EXPECT_THAT(Write(nullptr), IsDone());
    EXPECT_EQ("default", Read("Key"));
}

TEST_F(WriteProfileValueTest, WriteThatIsRefusedGivesZero) {
    EXPECT_THAT(WriteProfileValue("Section", "Key", "v", folder_.At("none\\a.kra").c_str()),
                Fails());
    EXPECT_THAT(WriteProfileValue("Section", "Key", "v", folder_.Path().c_str()), Fails());
    EXPECT_THAT(WriteProfileValue("Section", "Key", nullptr, folder_.Path().c_str()), Fails());
}

TEST_F(WriteProfileValueTest, FileHeldByAnotherReaderKeepsItsBytes) {
    folder_.MakeFile("a.kra", "[Section]\r\nKey=old\r\n");
    {
        const UniqueHandle holder = Hold(FILE_SHARE_READ);
        EXPECT_THAT(Write("new"), Fails());
        EXPECT_EQ("old", Read("Key"));
    }
    EXPECT_EQ("[Section]\r\nKey=old\r\n", test::FileBytes(file_));
}

TEST_F(WriteProfileValueTest, RandomValuesComeBackExactly) {
    test::RandomTexts random(0x5EED12);
    for (int round = 0; round < 300; ++round) {
        const std::string value = "x" + random.Text(6, " \t'\"ab=;\xC4\x81\xFF");
        for (const std::string& text : {value, value.substr(1)}) {
            if (text.empty()) continue;
            SCOPED_TRACE(text);
            ASSERT_THAT(Write(text.c_str()), IsDone());
            ASSERT_EQ(text, Read("Key"));
        }
    }
}

TEST_F(WriteProfileValueTest, LongValueIsWrittenWhole) {
    const std::string value = " " + std::string(10'000, 'x') + " ";
    EXPECT_THAT(Write(value.c_str()), IsDone());
    EXPECT_EQ(value, Read("Key", 0xFFFFFFFF));
}

TEST_F(WriteProfileValueTest, ValueThatCannotBeQuotedForWantOfMemoryIsNotWritten) {
    Write("old");
    const std::string value = " " + std::string(100, 'x');
    {
        const test::FailingMemory memory(1);
        EXPECT_THROW(Write(value.c_str()), std::bad_alloc);
    }
    EXPECT_EQ("[Section]\r\nKey=old\r\n", test::FileBytes(file_));
}

TEST_F(WriteProfileValueTest, OtherSectionsAndKeysStay) {
    folder_.MakeFile("a.kra", "[Other]\r\nKey=1\r\n[Section]\r\nBefore=2\r\nKey=3\r\nAfter=4\r\n");
    Write("new");
    EXPECT_EQ("1", ReadProfileString({"Other", "Key", "", kAnySize}, file_));
    EXPECT_EQ("2", Read("Before"));
    EXPECT_EQ("new", Read("Key"));
    EXPECT_EQ("4", Read("After"));
}

TEST_F(ReadProfileStringTest, WhatIsMissingGivesTheDefault) {
    EXPECT_EQ("default", Read("Key"));
    folder_.MakeFile("a.kra", "[Other]\r\nKey=1\r\n");
    EXPECT_EQ("default", Read("Key"));
    folder_.MakeFile("a.kra", "[Section]\r\nOther=1\r\n");
    EXPECT_EQ("default", Read("Key"));
    EXPECT_EQ("default", ReadProfileString({"Section", "Key", "default", kAnySize},
                                           folder_.At("none\\a.kra")));
    EXPECT_EQ("default",
              ReadProfileString({"Section", "Key", "default", kAnySize}, folder_.Path()));
    EXPECT_EQ("default", ReadProfileString({"Section", "Key", "default", kAnySize}, ""));
}

TEST_F(ReadProfileStringTest, EmptyDefaultGivesAnEmptyText) {
    EXPECT_EQ("", ReadProfileString({"Section", "Key", "", kAnySize}, file_));
}

TEST_F(ReadProfileStringTest, FileThatIsLockedGivesTheDefault) {
    folder_.MakeFile("a.kra", "[Section]\r\nKey=old\r\n");
    const UniqueHandle holder = Hold(0);
    ASSERT_TRUE(holder);
    EXPECT_EQ("default", Read("Key"));
}

TEST_F(ReadProfileStringTest, ValueIsCutToOneLessThanTheSize) {
    folder_.MakeFile("a.kra", "[Section]\r\nKey=sixsix\r\n");
    const struct {
        std::uint32_t size;
        const char* value;
    } rows[] = {
        {0, ""},       {1, ""},       {2, "s"},         {4, "six"},       {6, "sixsi"},
        {7, "sixsix"}, {8, "sixsix"}, {1024, "sixsix"}, {1025, "sixsix"}, {0xFFFFFFFF, "sixsix"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        EXPECT_EQ(row.value, Read("Key", row.size));
    }
}

TEST_F(ReadProfileStringTest, DefaultIsCutAsWell) {
    EXPECT_EQ("def", Read("Key", 4));
    EXPECT_EQ("", Read("Key", 1));
    EXPECT_EQ("", Read("Key", 0));
    EXPECT_EQ("default", Read("Key", 0xFFFFFFFF));
}

TEST_F(ReadProfileStringTest, ValuesAroundTheFirstReadsSizeAreWhole) {
    for (const std::size_t length : {1021u, 1022u, 1023u, 1024u, 1025u, 4095u, 4096u, 20'000u}) {
        SCOPED_TRACE(length);
        const std::string value(length, 'v');
        Write(value.c_str());
        EXPECT_EQ(value, Read("Key", 0xFFFFFFFF));
        EXPECT_EQ(value, Read("Key", static_cast<std::uint32_t>(length + 1)));
        EXPECT_EQ(value.substr(1), Read("Key", static_cast<std::uint32_t>(length)));
    }
}

TEST_F(ReadProfileStringTest, NamesIgnoreTheLetterCase) {
    folder_.MakeFile("a.kra", "[SECTION]\r\nKEY=1\r\n");
    EXPECT_EQ("1", Read("key"));
}

TEST_F(ReadProfileStringTest, FilesWithoutFinalOrWindowsLineEndsAreRead) {
    for (const char* bytes : {"[Section]\r\nKey=1", "[Section]\nKey=1", "[Section]\nKey=1\n"}) {
        SCOPED_TRACE(bytes);
        folder_.MakeFile("a.kra", bytes);
        EXPECT_EQ("1", Read("Key"));
    }
}

TEST_F(ReadProfileStringTest, FileWithoutAnyLineEndsGivesTheDefault) {
    folder_.MakeFile("a.kra", std::string(100'000, 'x'));
    EXPECT_EQ("default", Read("Key"));
    folder_.MakeFile("a.kra", "[Section]");
    EXPECT_EQ("default", Read("Key"));
    folder_.MakeFile("a.kra", "");
    EXPECT_EQ("default", Read("Key"));
}

TEST_F(ReadProfileStringTest, BytesAboveAsciiComeBackAsTheyAre) {
    std::string high;
    for (int byte = 0x80; byte < 0x100; ++byte) high.push_back(static_cast<char>(byte));
    folder_.MakeFile("a.kra", "[Section]\r\nKey=" + high + "x\r\n");
    EXPECT_EQ(high + "x", Read("Key"));
}

TEST_F(ReadProfileStringTest, ValueFarInsideAFiftyMegabyteFileIsFound) {
    std::string bytes = "[Filler]\r\n";
    const std::string line = "Line=" + std::string(5000, 'x') + "\r\n";
    while (bytes.size() < 50u * 1024 * 1024) bytes += line;
    folder_.MakeFile("a.kra", bytes + "[Section]\r\nKey=deep\r\n");
    EXPECT_EQ("deep", Read("Key"));
    EXPECT_EQ("default", Read("Other"));
}

TEST_F(GetTerminalTypeTest, EveryCodeHasItsNumber) {
    const struct {
        std::int32_t code;
        std::uint32_t type;
    } rows[] = {{15, 7},   {53, 7},   {16, 268},
                {20, 32},  {29, 106}, {56, 264},
                {57, 264}, {58, 264}, {62, 104},
                {63, 104}, {64, 104}, {17, 0},
                {61, 0},   {59, 0},   {60, 0},
                {2, 0},    {18, 0},   {65, 0},
                {100, 0},  {-1, 0},   {static_cast<std::int32_t>(0x80000000), 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        EXPECT_EQ(row.type, GetTerminalType(file_, row.code));
        EXPECT_EQ(row.type, GetTerminalType("", row.code));
    }
}

TEST_F(GetTerminalTypeTest, SessionWithoutAProfileSectionHasItsKindsDefault) {
    folder_.MakeFile("a.kra", "[Other]\r\nSession Terminal Type=5\r\n");
    EXPECT_EQ(1u, GetTerminalType(file_, 1));
    EXPECT_EQ(8u, GetTerminalType(file_, 19));
    EXPECT_EQ(1u, GetTerminalType(folder_.At("none.kre"), 1));
    EXPECT_EQ(8u, GetTerminalType(folder_.At("none.kre"), 19));
}

TEST_F(GetTerminalTypeTest, SessionsOwnNumberIsRead) {
    folder_.MakeFile("a.kra", "[PROFILE]\r\nSession Terminal Type=5\r\n");
    EXPECT_EQ(5u, GetTerminalType(file_, 1));
    EXPECT_EQ(5u, GetTerminalType(file_, 19));
    EXPECT_EQ(104u, GetTerminalType(file_, 64));
}

TEST_F(GetTerminalTypeTest, CodeZeroAsksForTheTypeOfThePath) {
    folder_.MakeFile("s.kre", "[Profile]\r\nsession terminal type=12\r\n");
    EXPECT_EQ(12u, GetTerminalType(folder_.At("s.kre"), 0));
    EXPECT_EQ(104u, GetTerminalType(file_, 0));
    EXPECT_EQ(268u, GetTerminalType("x.krp", 0));
    EXPECT_EQ(0u, GetTerminalType("x.krc", 0));
    EXPECT_EQ(0u, GetTerminalType("x.txt", 0));
    EXPECT_EQ(0u, GetTerminalType("", 0));
}

TEST_F(ReadWholeFileTest, AllBytesOfATextComeBack) {
    for (const std::size_t size : {0u, 1u, 518u, 519u, 520u, 1038u, 1039u, 100'000u}) {
        SCOPED_TRACE(size);
        const std::string bytes(size, '\xE4');
        folder_.MakeFile("a.kra", bytes);
        EXPECT_EQ(bytes, ReadWholeFile(file_));
    }
    folder_.MakeFile("a.kra", "one\r\ntwo\nthree");
    EXPECT_EQ("one\r\ntwo\nthree", ReadWholeFile(file_));
}

TEST_F(ReadWholeFileTest, BytesBehindANulAreLostUpToTheEndOfTheirBlock) {
    std::string bytes = std::string(100, 'a') + std::string(1, '\0');
    bytes += std::string(519 - bytes.size(), 'b') + "next block";
    folder_.MakeFile("a.kra", bytes);
    EXPECT_EQ(std::string(100, 'a') + "next block", ReadWholeFile(file_));
}

TEST_F(ReadWholeFileTest, WhatCannotBeOpenedIsEmpty) {
    EXPECT_EQ("", ReadWholeFile(file_));
    EXPECT_FALSE(test::Exists(file_)) << "reading makes no file";
    EXPECT_EQ("", ReadWholeFile(folder_.At("none\\a.kra")));
    EXPECT_EQ("", ReadWholeFile(folder_.Path()));
    EXPECT_EQ("", ReadWholeFile(""));
}

TEST_F(ReadWholeFileTest, FileThatAnyoneElseHoldsOpenIsEmpty) {
    folder_.MakeFile("a.kra", "text");
    const test::NoPauses pauses;
    for (const int sharing : {0, FILE_SHARE_READ, FILE_SHARE_READ | FILE_SHARE_WRITE}) {
        SCOPED_TRACE(sharing);
        const UniqueHandle holder = Hold(static_cast<DWORD>(sharing));
        ASSERT_TRUE(holder);
        EXPECT_EQ("", ReadWholeFile(file_));
    }
    EXPECT_EQ("text", ReadWholeFile(file_));
}

TEST_F(ReadWholeFileTest, FileThatAnyoneElseHoldsForAMomentIsRead) {
    folder_.MakeFile("a.kra", "text");
    UniqueHandle holder = Hold(FILE_SHARE_READ);
    std::thread release([&] {
        Sleep(300);
        holder.reset();
    });
    EXPECT_EQ("text", ReadWholeFile(file_));
    release.join();
}

TEST_F(ReadWholeFileTest, FileOfFiftyMegabytesIsReadWhole) {
    std::string bytes;
    const std::string line = std::string(1000, 'x') + "\r\n";
    while (bytes.size() < 50u * 1024 * 1024) bytes += line;
    folder_.MakeFile("a.kra", bytes);
    EXPECT_TRUE(bytes == ReadWholeFile(file_));
}

}  // namespace
}  // namespace depot
