// A location's values in the registry.
#include <gtest/gtest.h>

#include "config/location_records.h"
#include "platform/wide_text.h"
#include "support/import_patch.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::ExpectDirectoryDefaults;
using test::ExpectJunk;
using test::Fails;
using test::FillWithJunk;
using test::IsDone;
using test::kHandle;
using test::kOwner;

constexpr char kKey[] = "Software\\DepotTests\\DepotPath";

class LoadFromRegistryTest : public testing::Test {
protected:
    int Load(int index = 1) {
        return location_.LoadFromRegistry(RegistryKey::Open(HKEY_CURRENT_USER, kKey).value(),
                                          index);
    }

    void WriteDirectory(const std::string& number) const {
        key_.Text("", "Path" + number, "dc=farrow");
        key_.Dword("", "Type" + number, 1);
        key_.Text("", "Host" + number, "server");
        key_.Text("", "Username" + number, "cn=user");
        key_.Text("", "Password" + number, "s3cret");
        key_.Text("", "CredentialTarget" + number, "Dir/1");
        key_.Dword("", "Port" + number, 636);
        key_.Dword("", "Authentication" + number, 2);
        key_.Dword("", "Version" + number, 2);
        key_.Dword("", "ConnectTimeout" + number, 5);
        key_.Dword("", "Security" + number, 2);
        key_.Dword("", "DetectConflicts" + number, 1);
        key_.Dword("", "FollowReferrals" + number, 1);
        key_.Text("", "FileAttributeName" + number, "fa");
        key_.Text("", "FileObjectClass" + number, "fc");
        key_.Text("", "FolderAttributeName" + number, "da");
        key_.Text("", "FolderObjectClass" + number, "dc");
        key_.Text("", "FileContentsAttributeName" + number, "co");
    }

    LoadFromRegistryTest() { test::CreateRegistryKey(HKEY_CURRENT_USER, kKey); }

    test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
    CDepotPath location_{kOwner};
};

TEST_F(LoadFromRegistryTest, MissingPathLeavesTheRecordUntouched) {
    WriteDirectory("2");
    FillWithJunk(location_);
    EXPECT_THAT(Load(), Fails());
    ExpectJunk(location_);
    EXPECT_EQ(kOwner, location_.owner);
    EXPECT_EQ(kHandle, location_.handleSlot);
}

TEST_F(LoadFromRegistryTest, PathAloneIsAFolderWithDefaults) {
    key_.Text("", "Path1", "$USERDIR$\\Profiles");
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("$USERDIR$\\Profiles", location_.path);
    EXPECT_EQ(kFolderLocation, location_.type);
    ExpectDirectoryDefaults(location_);
    EXPECT_EQ(kOwner, location_.owner);
}

TEST_F(LoadFromRegistryTest, NewPathEmptiesTheLocationText) {
    key_.Text("", "Path1", "C:\\new");
    location_.locationText = "C:\\old\\";
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("", location_.locationText);
}

TEST_F(LoadFromRegistryTest, EverySettingOfADirectoryIsRead) {
    WriteDirectory("1");
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kDirectoryLocation, location_.type);
    EXPECT_EQ("dc=farrow", location_.path);
    EXPECT_EQ("server", location_.host);
    EXPECT_EQ("cn=user", location_.username);
    EXPECT_EQ("s3cret", location_.password);
    EXPECT_EQ("Dir/1", location_.credentialTarget);
    EXPECT_EQ(636u, location_.port);
    EXPECT_EQ(2u, location_.authentication);
    EXPECT_EQ(2u, location_.version);
    EXPECT_EQ(5u, location_.connectTimeout);
    EXPECT_EQ(2u, location_.security);
    EXPECT_EQ(1u, location_.detectConflicts);
    EXPECT_EQ(1u, location_.followReferrals);
    EXPECT_EQ("fa", location_.fileAttributeName);
    EXPECT_EQ("fc", location_.fileObjectClass);
    EXPECT_EQ("da", location_.folderAttributeName);
    EXPECT_EQ("dc", location_.folderObjectClass);
    EXPECT_EQ("co", location_.fileContentsAttributeName);
}

TEST_F(LoadFromRegistryTest, MissingSettingsOfADirectoryKeepTheirDefaults) {
    key_.Text("", "Path1", "dc=farrow");
    key_.Dword("", "Type1", 1);
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kDirectoryLocation, location_.type);
    ExpectDirectoryDefaults(location_);
}

TEST_F(LoadFromRegistryTest, OnlyValuesOfTheAskedNumberAreRead) {
    WriteDirectory("12");
    key_.Text("", "Path1", "C:\\one");
    EXPECT_THAT(Load(1), IsDone());
    EXPECT_EQ("C:\\one", location_.path);
    ExpectDirectoryDefaults(location_);
    EXPECT_THAT(Load(12), IsDone());
    EXPECT_EQ("dc=farrow", location_.path);
    EXPECT_EQ(636u, location_.port);
    EXPECT_THAT(Load(2), Fails());
    EXPECT_THAT(Load(0), Fails());
    EXPECT_THAT(Load(-1), Fails());
}

TEST_F(LoadFromRegistryTest, UnknownTypeGivesAFolderWhoseDirectoryValuesAreNotRead) {
    for (const DWORD type : {2u, 7u, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(type);
        WriteDirectory("1");
        key_.Dword("", "Type1", type);
        EXPECT_THAT(Load(), IsDone());
        EXPECT_EQ(kFolderLocation, location_.type);
        ExpectDirectoryDefaults(location_);
    }
}

TEST_F(LoadFromRegistryTest, FoldersDirectoryValuesAreNotRead) {
    WriteDirectory("1");
    key_.Dword("", "Type1", 0);
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("dc=farrow", location_.path);
    ExpectDirectoryDefaults(location_);
}

TEST_F(LoadFromRegistryTest, TypeOfAnotherRegistryTypeIsIgnored) {
    WriteDirectory("1");
    key_.Text("", "Type1", "1");
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kFolderLocation, location_.type);
    key_.Raw("", "Type1", REG_BINARY, std::string("\x01\0\0\0", 4));
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kFolderLocation, location_.type);
}

TEST_F(LoadFromRegistryTest, SizeOfATypeIsNotChecked) {
    WriteDirectory("1");
    for (const std::string& data : {std::string("\x01", 1), std::string("\x01\0", 2),
                                    std::string("\x01\0\0\0\x05\0\0\0", 8)}) {
        SCOPED_TRACE(data.size());
        CDepotPath location(kOwner);
        key_.Raw("", "Type1", REG_DWORD, data);
        EXPECT_THAT(location.LoadFromRegistry(*RegistryKey::Open(HKEY_CURRENT_USER, kKey), 1),
                    IsDone());
        EXPECT_EQ(kDirectoryLocation, location.type);
        EXPECT_EQ("server", location.host);
    }
}

TEST_F(LoadFromRegistryTest, NumbersOfAWrongTypeOrSizeKeepTheirDefaults) {
    const std::string four("\x05\0\0\0", 4);
    const struct {
        DWORD type;
        std::string data;
    } rows[] = {{REG_SZ, std::string("636", 4)}, {REG_BINARY, four},
                {REG_QWORD, four + four},        {REG_DWORD, four + four},
                {REG_DWORD, four.substr(0, 2)},  {REG_DWORD, ""},
                {REG_DWORD_BIG_ENDIAN, four},    {REG_DWORD, std::string(300, '\x05')}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " of " << row.data.size());
        WriteDirectory("1");
        for (const char* name : {"Port1", "Authentication1", "Version1", "ConnectTimeout1",
                                 "DetectConflicts1", "FollowReferrals1"}) {
            key_.Raw("", name, row.type, row.data);
        }
        CDepotPath location(kOwner);
        EXPECT_THAT(location.LoadFromRegistry(*RegistryKey::Open(HKEY_CURRENT_USER, kKey), 1),
                    IsDone());
        EXPECT_EQ(389u, location.port);
        EXPECT_EQ(kSimpleAuthentication, location.authentication);
        EXPECT_EQ(3u, location.version);
        EXPECT_EQ(120u, location.connectTimeout);
        EXPECT_EQ(0u, location.detectConflicts);
        EXPECT_EQ(0u, location.followReferrals);
        EXPECT_EQ("server", location.host);
    }
}

TEST_F(LoadFromRegistryTest, SecurityThatCannotBeReadCountsAsStartTls) {
    const std::string four("\x02\0\0\0", 4);
    const struct {
        DWORD type;
        std::string data;
    } rows[] = {{REG_SZ, std::string("2", 2)},
                {REG_SZ, ""},
                {REG_SZ, std::string("0", 2)},
                {REG_EXPAND_SZ, std::string("2", 2)},
                {REG_BINARY, four},
                {REG_QWORD, four + std::string(4, '\0')},
                {REG_DWORD_BIG_ENDIAN, four},
                {REG_NONE, ""},
                {REG_DWORD, four + four},
                {REG_DWORD, four.substr(0, 2)},
                {REG_DWORD, ""},
                {REG_BINARY, std::string(70000, '\x05')},
                {REG_MULTI_SZ, std::string(3, 'x')}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " of " << row.data.size());
        WriteDirectory("1");
        key_.Raw("", "Security1", row.type, row.data);
        EXPECT_THAT(Load(), IsDone());
        EXPECT_EQ(1u, location_.security);
    }
    key_.Dword("", "Security1", 0);
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(0u, location_.security) << "a number counts as what it is";
}

TEST_F(LoadFromRegistryTest, UnknownAuthenticationIsStoredAsRead) {
    WriteDirectory("1");
    key_.Dword("", "Authentication1", 3);
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(3u, location_.authentication);
    key_.Dword("", "Authentication1", 0xFFFFFFFF);
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(0xFFFFFFFFu, location_.authentication);
}

TEST_F(LoadFromRegistryTest, TextsAreTakenWhateverTheirRegistryType) {
    WriteDirectory("1");
    key_.Raw("", "Path1", REG_EXPAND_SZ, std::string("%TEMP%\\a", 9));
    key_.Raw("", "Host1", REG_BINARY, "bytes");
    key_.Raw("", "Username1", REG_MULTI_SZ, std::string("one\0two\0\0", 9));
    key_.Raw("", "Password1", REG_DWORD, "abcd");
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("%TEMP%\\a", location_.path);
    EXPECT_EQ("bytes", location_.host);
    EXPECT_EQ("one", location_.username);
    EXPECT_EQ("abcd", location_.password);
}

TEST_F(LoadFromRegistryTest, PathTakesAtMost261Bytes) {
    for (const std::size_t length : {258u, 259u, 260u}) {
        SCOPED_TRACE(length);
        key_.Text("", "Path1", std::string(length, 'p'));
        EXPECT_THAT(Load(), IsDone());
        EXPECT_EQ(std::string(length, 'p'), location_.path);
    }
    for (const std::size_t length : {261u, 300u}) {
        SCOPED_TRACE(length);
        key_.Text("", "Path1", std::string(length, 'q'));
        EXPECT_THAT(Load(), Fails());
        EXPECT_EQ(std::string(260, 'p'), location_.path);
    }
}

// The texts of a directory location, with the values that they come from.
constexpr struct {
    const char* value;
    std::string CDepotPath::*member;
} kTexts[] = {{"Host1", &CDepotPath::host},
              {"Username1", &CDepotPath::username},
              {"FileAttributeName1", &CDepotPath::fileAttributeName},
              {"FileObjectClass1", &CDepotPath::fileObjectClass},
              {"FolderAttributeName1", &CDepotPath::folderAttributeName},
              {"FolderObjectClass1", &CDepotPath::folderObjectClass},
              {"FileContentsAttributeName1", &CDepotPath::fileContentsAttributeName}};

TEST_F(LoadFromRegistryTest, TextsOverTheLimitCountAsAbsent) {
    WriteDirectory("1");
    const std::string fit(260, 'x');
    for (const auto& text : kTexts) key_.Text("", text.value, fit);
    EXPECT_THAT(Load(), IsDone());
    for (const auto& text : kTexts) EXPECT_EQ(fit, location_.*text.member) << text.value;
    for (const auto& text : kTexts) {
        key_.Text("", text.value, fit + "y");
        location_.*text.member = "before";
    }
    EXPECT_THAT(Load(), IsDone());
    for (const auto& text : kTexts) EXPECT_EQ("before", location_.*text.member) << text.value;
    EXPECT_EQ(636u, location_.port);
}

TEST_F(LoadFromRegistryTest, MissingTypeLeavesTheRecordsOwn) {
    WriteDirectory("1");
    RegDeleteKeyValueA(HKEY_CURRENT_USER, kKey, "Type1");
    location_.type = kDirectoryLocation;
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kDirectoryLocation, location_.type);
    EXPECT_EQ("server", location_.host);
}

TEST_F(LoadFromRegistryTest, MissingTypeDoesNotLeaveAnUnknownOne) {
    WriteDirectory("1");
    RegDeleteKeyValueA(HKEY_CURRENT_USER, kKey, "Type1");
    location_.type = 7;
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(kFolderLocation, location_.type);
    ExpectDirectoryDefaults(location_);
}

TEST_F(LoadFromRegistryTest, MissingAndUnusableNumbersLeaveTheRecordsOwn) {
    key_.Text("", "Path1", "dc=farrow");
    key_.Dword("", "Type1", 1);
    key_.Text("", "Port1", "636");
    location_.port = 10;
    location_.connectTimeout = 13;
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ(10u, location_.port);
    EXPECT_EQ(13u, location_.connectTimeout);
}

using QueryValue = decltype(&RegQueryValueExA);
using QueryText = decltype(&RegQueryValueExW);

std::vector<std::string> queried;
QueryValue queryValue = nullptr;
QueryText queryText = nullptr;

LSTATUS WINAPI NoteQuery(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                         DWORD* size) {
    queried.push_back(name);
    return queryValue(key, name, reserved, type, data, size);
}

LSTATUS WINAPI NoteTextQuery(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type,
                             BYTE* data, DWORD* size) {
    queried.push_back(AnsiFromWide(name));
    return queryText(key, name, reserved, type, data, size);
}

TEST_F(LoadFromRegistryTest, ValuesAreQueriedInTheirOrderAndOnlyAsFarAsNeeded) {
    WriteDirectory("1");
    const test::ImportPatch<QueryValue> querying("RegQueryValueExA", &NoteQuery);
    const test::ImportPatch<QueryText> queryingTexts("RegQueryValueExW", &NoteTextQuery);
    ASSERT_TRUE(querying.IsInPlace() && queryingTexts.IsInPlace());
    queryValue = querying.Genuine();
    queryText = queryingTexts.Genuine();
    queried.clear();
    EXPECT_THAT(Load(2), Fails());
    EXPECT_EQ(std::vector<std::string>{"Path2"}, queried);
    queried.clear();
    EXPECT_THAT(Load(), IsDone());
    const std::vector<std::string> expected = {"Path1",
                                               "Type1",
                                               "Host1",
                                               "Username1",
                                               "Password1",
                                               "CredentialTarget1",
                                               "Port1",
                                               "Authentication1",
                                               "Version1",
                                               "ConnectTimeout1",
                                               "Security1",
                                               "DetectConflicts1",
                                               "KeepConnection1",
                                               "FollowReferrals1",
                                               "Offline1",
                                               "OfflineSize1",
                                               "FileAttributeName1",
                                               "FileObjectClass1",
                                               "FolderAttributeName1",
                                               "FolderObjectClass1",
                                               "FileContentsAttributeName1"};
    EXPECT_EQ(expected, queried);
    key_.Dword("", "Type1", 0);
    queried.clear();
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ((std::vector<std::string>{"Path1", "Type1"}), queried);
}

TEST_F(LoadFromRegistryTest, EmptyPathIsALocationAllTheSame) {
    key_.Text("", "Path1", "");
    location_.path = "before";
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("", location_.path);
}

TEST_F(LoadFromRegistryTest, PathEndsAtItsFirstNul) {
    key_.Raw("", "Path1", REG_SZ, std::string("C:\\a\0b", 7));
    EXPECT_THAT(Load(), IsDone());
    EXPECT_EQ("C:\\a", location_.path);
}

TEST_F(LoadFromRegistryTest, DeletedKeyHasNoLocations) {
    WriteDirectory("1");
    const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, kKey).value();
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    EXPECT_THAT(location_.LoadFromRegistry(key, 1), Fails());
    EXPECT_EQ("", location_.path);
}

}  // namespace
}  // namespace depot
