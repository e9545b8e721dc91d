#include "platform/registry_key.h"

#include <gtest/gtest.h>

#include <set>

#include "support/page_names.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\RegistryKey";

class RegistryKeyTest : public testing::Test {
protected:
    RegistryKeyTest() { test::CreateRegistryKey(HKEY_CURRENT_USER, kKey); }

    static RegistryKey Open() { return RegistryKey::Open(HKEY_CURRENT_USER, kKey).value(); }

    void Write(DWORD type, const std::string& data) const { key_.Raw("", "Value", type, data); }

    // The system itself terminates a text when a NUL happens to follow it in memory.
    static void WriteUnterminated(DWORD type, const std::string& text) {
        const std::string followed = text + "#";
        ASSERT_EQ(ERROR_SUCCESS, RegSetKeyValueA(HKEY_CURRENT_USER, kKey, "Value", type,
                                                 followed.data(), static_cast<DWORD>(text.size())));
    }

    test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
};

TEST_F(RegistryKeyTest, OpenOfAMissingKeyGivesNothing) {
    EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, std::string(kKey) + "\\None"));
    EXPECT_FALSE(RegistryKey::Open(HKEY_LOCAL_MACHINE, kKey));
}

TEST_F(RegistryKeyTest, OpenSubkeyGivesTheKeyBelow) {
    key_.Text("Sub\\Deep", "Value", "below");
    EXPECT_EQ("below", Open().OpenSubkey("Sub\\Deep")->ReadString("Value"));
    EXPECT_EQ("below", Open().OpenSubkey("sub")->OpenSubkey("DEEP")->ReadString("value"));
    EXPECT_FALSE(Open().OpenSubkey("None"));
}

TEST_F(RegistryKeyTest, OpenWithoutTheRightToReadValuesReadsNone) {
    key_.Text("", "Value", "text");
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, kKey, KEY_ENUMERATE_SUB_KEYS);
    ASSERT_TRUE(key);
    EXPECT_EQ(std::nullopt, key->ReadString("Value"));
}

TEST_F(RegistryKeyTest, OpenHonoursTheRegistryView) {
    const std::string path = "Software\\DepotTests\\View";
    const test::ScratchKey narrow(HKEY_LOCAL_MACHINE, "Software\\Wow6432Node\\DepotTests\\View");
    narrow.Text("", "Value", "32-bit");
    EXPECT_FALSE(RegistryKey::Open(HKEY_LOCAL_MACHINE, path, KEY_READ | KEY_WOW64_64KEY));
    const auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, path, KEY_READ | KEY_WOW64_32KEY);
    ASSERT_TRUE(key);
    EXPECT_EQ("32-bit", key->ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringOfAMissingValueGivesNothing) {
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringOfAnEmptyValueGivesAnEmptyText) {
    Write(REG_SZ, std::string(1, '\0'));
    EXPECT_EQ("", Open().ReadString("Value"));
    Write(REG_BINARY, "");
    EXPECT_EQ("", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringIgnoresTheLetterCaseOfTheName) {
    key_.Text("", "vALUE", "text");
    EXPECT_EQ("text", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringAcceptsUnterminatedDataOfAnyType) {
    for (const DWORD type : {REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_MULTI_SZ, REG_NONE}) {
        SCOPED_TRACE(type);
        WriteUnterminated(type, "one");
        EXPECT_EQ("one", Open().ReadString("Value"));
    }
}

TEST_F(RegistryKeyTest, ReadStringReturnsTheBytesOfANumber) {
    Write(REG_DWORD, std::string("abc\0", 4));
    EXPECT_EQ("abc", Open().ReadString("Value"));
    Write(REG_DWORD, "abcd");
    EXPECT_EQ("abcd", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringDoesNotExpandVariables) {
    Write(REG_EXPAND_SZ, std::string("%TEMP%\\a", 9));
    EXPECT_EQ("%TEMP%\\a", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringStopsAtTheFirstNul) {
    Write(REG_BINARY, std::string("ab\0cd", 5));
    EXPECT_EQ("ab", Open().ReadString("Value"));
    Write(REG_MULTI_SZ, std::string("one\0two\0\0", 9));
    EXPECT_EQ("one", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringKeepsBytesAboveAscii) {
    key_.Text("", "Value", "\xC4\x80\xFF");
    EXPECT_EQ("\xC4\x80\xFF", Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringTreatsDataOverTheLimitAsAbsent) {
    Write(REG_SZ, std::string("12345", 6));
    EXPECT_EQ("12345", Open().ReadString("Value", 6));
    EXPECT_EQ(std::nullopt, Open().ReadString("Value", 5));
}

TEST_F(RegistryKeyTest, ReadStringTakesAtMost261BytesByDefault) {
    for (const std::size_t bytes : {259u, 260u, 261u}) {
        SCOPED_TRACE(bytes);
        const std::string text(bytes - 1, 'x');
        Write(REG_SZ, std::string(text.c_str(), bytes));
        EXPECT_EQ(text, Open().ReadString("Value"));
        Write(REG_BINARY, std::string(bytes, 'y'));
        EXPECT_EQ(std::string(bytes, 'y'), Open().ReadString("Value"));
    }
    Write(REG_SZ, std::string(261, 'x') + std::string(1, '\0'));
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
    Write(REG_BINARY, std::string(262, 'y'));
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
    key_.Text("", "Value", std::string(300, 'x'));
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadStringTakesAnUnterminatedTextOfExactly261Bytes) {
    WriteUnterminated(REG_SZ, std::string(261, 'x'));
    EXPECT_EQ(std::string(261, 'x'), Open().ReadString("Value"));
    WriteUnterminated(REG_SZ, std::string(262, 'x'));
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
}

TEST_F(RegistryKeyTest, ReadDwordAcceptsOnlyFourByteDwords) {
    const std::string four("\x85\x01\0\0", 4);
    EXPECT_EQ(std::nullopt, Open().ReadDword("Value"));
    Write(REG_DWORD, four);
    EXPECT_EQ(389u, Open().ReadDword("Value"));
    Write(REG_DWORD, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(0xFFFFFFFFu, Open().ReadDword("Value"));
    for (const std::size_t size : {0u, 1u, 2u, 3u}) {
        SCOPED_TRACE(size);
        Write(REG_DWORD, four.substr(0, size));
        EXPECT_EQ(std::nullopt, Open().ReadDword("Value"));
    }
    Write(REG_DWORD, four + four);
    EXPECT_EQ(std::nullopt, Open().ReadDword("Value"));
}

TEST_F(RegistryKeyTest, ReadDwordRefusesEveryOtherType) {
    const std::string four("\x85\x01\0\0", 4);
    for (const DWORD type : {REG_SZ, REG_BINARY, REG_DWORD_BIG_ENDIAN, REG_NONE, REG_QWORD}) {
        SCOPED_TRACE(type);
        Write(type, four);
        EXPECT_EQ(std::nullopt, Open().ReadDword("Value"));
        EXPECT_EQ(std::nullopt, Open().ReadDwordOfAnySize("Value"));
    }
    key_.Text("", "Value", "389");
    EXPECT_EQ(std::nullopt, Open().ReadDword("Value"));
    EXPECT_EQ(std::nullopt, Open().ReadDwordOfAnySize("Value"));
}

TEST_F(RegistryKeyTest, ReadDwordOfAnySizeTakesTheFirstFourBytes) {
    Write(REG_DWORD, "");
    EXPECT_EQ(0u, Open().ReadDwordOfAnySize("Value"));
    Write(REG_DWORD, "\x07");
    EXPECT_EQ(7u, Open().ReadDwordOfAnySize("Value"));
    Write(REG_DWORD, "\x07\x01");
    EXPECT_EQ(0x107u, Open().ReadDwordOfAnySize("Value"));
    Write(REG_DWORD, std::string("\x07\0\0\0\x09\0\0\0", 8));
    EXPECT_EQ(7u, Open().ReadDwordOfAnySize("Value"));
}

TEST_F(RegistryKeyTest, ReadDwordOfAnySizeTreatsDataOverTheLimitAsAbsent) {
    Write(REG_DWORD, std::string(261, '\x01'));
    EXPECT_EQ(0x01010101u, Open().ReadDwordOfAnySize("Value"));
    Write(REG_DWORD, std::string(262, '\x01'));
    EXPECT_EQ(std::nullopt, Open().ReadDwordOfAnySize("Value"));
    EXPECT_EQ(std::nullopt, Open().ReadDwordOfAnySize("None"));
}

TEST_F(RegistryKeyTest, SubkeyAtListsDirectChildrenOnly) {
    key_.Text("", "Value", "");
    key_.Text("Home", "Value", "");
    key_.Text("Team\\Archive", "Value", "");
    std::set<std::string> names;
    const RegistryKey key = Open();
    for (DWORD index = 0; index < 2; ++index) {
        const SubkeyName subkey = key.SubkeyAt(index);
        EXPECT_EQ(ERROR_SUCCESS, subkey.status);
        names.insert(subkey.name);
    }
    EXPECT_EQ((std::set<std::string>{"Home", "Team"}), names);
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, key.SubkeyAt(2).status);
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, key.SubkeyAt(0xFFFFFFFF).status);
}

TEST_F(RegistryKeyTest, SubkeyAtReturnsTheLongestPossibleName) {
    const std::string longest(255, 'n');
    HKEY parent = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyA(HKEY_CURRENT_USER, kKey, &parent));
    const UniqueHkey owner(parent);
    test::CreateRegistryKey(parent, longest);
    EXPECT_EQ(longest, Open().SubkeyAt(0).name);
}

TEST_F(RegistryKeyTest, SubkeyAtOfADeletedKeyReportsAnError) {
    test::CreateRegistryKey(HKEY_CURRENT_USER, std::string(kKey) + "\\Home");
    const RegistryKey key = Open();
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    const SubkeyName subkey = key.SubkeyAt(0);
    EXPECT_NE(ERROR_SUCCESS, subkey.status);
    EXPECT_EQ("", subkey.name);
    EXPECT_EQ(std::nullopt, key.ReadString("Value"));
    EXPECT_FALSE(key.OpenSubkey("Home"));
}

TEST_F(RegistryKeyTest, MovedKeyStaysOpen) {
    key_.Text("", "Value", "text");
    RegistryKey key = Open();
    const RegistryKey moved = std::move(key);
    EXPECT_EQ("text", moved.ReadString("Value"));
}

class RegistryCharactersTest : public RegistryKeyTest {
protected:
    static void WriteWide(const std::wstring& value) {
        ASSERT_EQ(ERROR_SUCCESS,
                  RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\DepotTests\\RegistryKey", L"Value",
                                  REG_SZ, value.c_str(),
                                  static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))));
    }

    const test::PageNames page_ = test::NamesOfThisPage();
};

TEST_F(RegistryCharactersTest, TextsThatTheCodePageHoldsAreRead) {
    for (const std::wstring& name : page_.files) {
        WriteWide(L"C:\\" + name);
        EXPECT_EQ("C:\\" + test::Narrowed(name), Open().ReadString("Value"));
    }
}

// Taken by an approximation they would name another folder, or log another user on.
TEST_F(RegistryCharactersTest, TextsThatTheCodePageDoesNotHoldAreAbsent) {
    for (const std::wstring& name : page_.refused) {
        WriteWide(L"C:\\" + name);
        EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
        // Behind its end a text holds what it may.
        WriteWide(L"C:\\a" + std::wstring(1, L'\0') + name);
        EXPECT_EQ("C:\\a", Open().ReadString("Value"));
    }
}

TEST_F(RegistryCharactersTest, LimitIsThatOfTheBytesInTheCodePage) {
    const std::wstring letter = page_.folder.substr(0, 1);
    const std::size_t bytes = test::Narrowed(letter).size();
    std::wstring text(260 / bytes, letter.front());
    WriteWide(text);
    EXPECT_EQ(test::Narrowed(text), Open().ReadString("Value"));
    WriteWide(text + letter);
    EXPECT_EQ(std::nullopt, Open().ReadString("Value"));
}

TEST_F(RegistryCharactersTest, BytesThatAreNoTextAreReadAsTheyAre) {
    Write(REG_BINARY, "\x81\xFF\x80");
    EXPECT_EQ("\x81\xFF\x80", Open().ReadString("Value"));
}

TEST_F(RegistryCharactersTest, KeysThatTheCodePageCannotNameHaveNoName) {
    for (const std::wstring& name : page_.refused) {
        const std::wstring path = L"Software\\DepotTests\\RegistryKey\\" + name;
        HKEY made = nullptr;
        if (RegCreateKeyW(HKEY_CURRENT_USER, path.c_str(), &made) != ERROR_SUCCESS) continue;
        RegCloseKey(made);
        EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, Open().SubkeyAt(0).status);
        EXPECT_EQ("", Open().SubkeyAt(0).name);
        EXPECT_EQ(ERROR_NO_MORE_ITEMS, Open().SubkeyAt(1).status);
        RegDeleteKeyW(HKEY_CURRENT_USER, path.c_str());
    }
}

}  // namespace
}  // namespace depot
