// What a depot's definition in the registry says.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "config/depot_values.h"
#include "model/depots.h"
#include "model/empty_depot.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::ExpectEmpty;

constexpr char kKey[] = "Software\\DepotTests\\Depot";

class ReadDefinitionTest : public testing::Test {
protected:
    ReadDefinitionTest() { test::CreateRegistryKey(HKEY_CURRENT_USER, kKey); }

    bool Read(CDepot& depot, const std::string& language = "eng") const {
        return depot.ReadDefinition(RegistryKey::Open(HKEY_CURRENT_USER, kKey).value(), "Work",
                                    language);
    }

    std::string DisplayName(const std::string& language) const {
        CDepot depot(nullptr);
        EXPECT_TRUE(Read(depot, language));
        EXPECT_EQ("Work", depot.name);
        return depot.displayName;
    }

    test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
};

TEST_F(ReadDefinitionTest, MissingSubkeyIsNoDepot) {
    CDepot depot(nullptr);
    EXPECT_FALSE(Read(depot));
    ExpectEmpty(depot, nullptr);
}

TEST_F(ReadDefinitionTest, PathAloneMakesADepotWithDefaults) {
    key_.Text("Work", "Path1", "C:\\work");
    CDepot depot(nullptr);
    EXPECT_TRUE(Read(depot));
    EXPECT_EQ("Work", depot.name);
    EXPECT_EQ("Work", depot.displayName);
    EXPECT_EQ("", depot.icon);
    EXPECT_FALSE(depot.isDefault);
    EXPECT_EQ(-1, depot.orderIndex);
    EXPECT_EQ(0u, depot.contains);
    ASSERT_EQ(1u, depot.paths->Count());
    EXPECT_EQ("C:\\work", depot.paths->At(0)->path);
    EXPECT_EQ(depot.paths.get(), depot.paths->At(0)->owner);
}

TEST_F(ReadDefinitionTest, EveryValueIsRead) {
    key_.Text("Work", "Path1", "C:\\work");
    key_.Text("Work", "DisplayName.eng", "Works");
    key_.Text("Work", "Icon", "%SystemRoot%\\a.ico,-2");
    key_.Dword("Work", "DefaultDepot", 1);
    key_.Dword("Work", "OrderIndex", 7);
    key_.Dword("Work", "Contains", 0x80000001);
    CDepot depot(nullptr);
    EXPECT_TRUE(Read(depot));
    EXPECT_EQ("Works", depot.displayName);
    EXPECT_EQ("%SystemRoot%\\a.ico,-2", depot.icon);
    EXPECT_TRUE(depot.isDefault);
    EXPECT_EQ(7, depot.orderIndex);
    EXPECT_EQ(0x80000001u, depot.contains);
}

TEST_F(ReadDefinitionTest, UsersLanguageComesFirst) {
    key_.Text("Work", "Path1", "C:\\work");
    key_.Text("Work", "DisplayName.eng", "Work in English");
    key_.Text("Work", "DisplayName.deu", "Arbeit");
    key_.Text("Work", "DisplayName.jpn", "Shigoto");
    EXPECT_EQ("Arbeit", DisplayName("deu"));
    EXPECT_EQ("Arbeit", DisplayName("DEU"));
    EXPECT_EQ("Shigoto", DisplayName("jpn"));
    EXPECT_EQ("Work in English", DisplayName("ita"));
    EXPECT_EQ("Work in English", DisplayName(""));
}

TEST_F(ReadDefinitionTest, AnotherLanguageServesInAFixedOrder) {
    key_.Text("Work", "Path1", "C:\\work");
    EXPECT_EQ("Work", DisplayName("nld"));
    for (const char* language : {"prt", "ita", "esp", "deu", "fra", "eng"}) {
        SCOPED_TRACE(language);
        key_.Text("Work", std::string("DisplayName.") + language, language);
        EXPECT_EQ(language, DisplayName("nld"));
    }
}

TEST_F(ReadDefinitionTest, FrenchNameServesAGermanUser) {
    key_.Text("Work", "Path1", "C:\\work");
    key_.Text("Work", "DisplayName.fra", "Travail");
    EXPECT_EQ("Travail", DisplayName("deu"));
}

TEST_F(ReadDefinitionTest, PresentButEmptyNameIsTaken) {
    key_.Text("Work", "Path1", "C:\\work");
    key_.Text("Work", "DisplayName.deu", "");
    key_.Text("Work", "DisplayName.eng", "Work in English");
    EXPECT_EQ("", DisplayName("deu"));
}

TEST_F(ReadDefinitionTest, NameOver261BytesCountsAsMissing) {
    key_.Text("Work", "Path1", "C:\\work");
    key_.Text("Work", "DisplayName.eng", std::string(260, 'n'));
    EXPECT_EQ(std::string(260, 'n'), DisplayName("eng"));
    key_.Text("Work", "DisplayName.eng", std::string(261, 'n'));
    EXPECT_EQ("Work", DisplayName("eng"));
    key_.Text("Work", "DisplayName.fra", "Travail");
    EXPECT_EQ("Travail", DisplayName("eng"));
}

TEST_F(ReadDefinitionTest, IconOver261BytesCountsAsMissing) {
    key_.Text("Work", "Path1", "C:\\work");
    for (const std::size_t length : {260u, 261u}) {
        SCOPED_TRACE(length);
        const std::string icon(length, 'i');
        key_.Text("Work", "Icon", icon);
        CDepot depot(nullptr);
        EXPECT_TRUE(Read(depot));
        EXPECT_EQ(length == 260 ? icon : "", depot.icon);
    }
}

TEST_F(ReadDefinitionTest, OnlyADwordOfOneMakesADefault) {
    key_.Text("Work", "Path1", "C:\\work");
    const std::string one("\x01\0\0\0", 4);
    const struct {
        DWORD type;
        std::string data;
        bool isDefault;
    } rows[] = {{REG_DWORD, one, true},
                {REG_DWORD, std::string("\x02\0\0\0", 4), false},
                {REG_DWORD, std::string(4, '\0'), false},
                {REG_DWORD, std::string("\x01\x01\0\0", 4), false},
                {REG_SZ, std::string("1", 2), false},
                {REG_BINARY, one, false},
                {REG_QWORD, one + std::string(4, '\0'), false},
                {REG_DWORD, std::string("\x01\0", 2), true},
                {REG_DWORD, one + one, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " of " << row.data.size());
        key_.Raw("Work", "DefaultDepot", row.type, row.data);
        CDepot depot(nullptr);
        EXPECT_TRUE(Read(depot));
        EXPECT_EQ(row.isDefault, depot.isDefault);
    }
}

TEST_F(ReadDefinitionTest, NumbersAreTakenFromDwordsOfAnySizeOnly) {
    key_.Text("Work", "Path1", "C:\\work");
    const std::string five("\x05\0\0\0", 4);
    const struct {
        DWORD type;
        std::string data;
        std::int32_t order;
        std::uint32_t contains;
    } rows[] = {{REG_DWORD, five, 5, 5},
                {REG_DWORD, five + five, 5, 5},
                {REG_DWORD, five.substr(0, 2), 5, 5},
                {REG_DWORD, "\xFE\xFF\xFF\xFF", -2, 0xFFFFFFFE},
                {REG_DWORD, "\xFF\xFF\xFF\xFF", -1, 0xFFFFFFFF},
                {REG_SZ, std::string("5", 2), -1, 0},
                {REG_BINARY, five, -1, 0},
                {REG_QWORD, five + std::string(4, '\0'), -1, 0},
                {REG_DWORD_BIG_ENDIAN, five, -1, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " of " << row.data.size());
        key_.Raw("Work", "OrderIndex", row.type, row.data);
        key_.Raw("Work", "Contains", row.type, row.data);
        CDepot depot(nullptr);
        EXPECT_TRUE(Read(depot));
        EXPECT_EQ(row.order, depot.orderIndex);
        EXPECT_EQ(row.contains, depot.contains);
    }
}

TEST_F(ReadDefinitionTest, ValuesOfOtherTypesResetWhatWasReadBefore) {
    key_.Text("Work", "Path1", "C:\\work");
    CDepot depot(nullptr);
    for (const char* name : {"DefaultDepot", "OrderIndex", "Contains"}) key_.Dword("Work", name, 1);
    ASSERT_TRUE(Read(depot));
    EXPECT_TRUE(depot.isDefault);
    for (const char* name : {"DefaultDepot", "OrderIndex", "Contains"})
        key_.Text("Work", name, "1");
    ASSERT_TRUE(Read(depot));
    EXPECT_FALSE(depot.isDefault);
    EXPECT_EQ(CDepot::kNoOrderIndex, depot.orderIndex);
    EXPECT_EQ(0u, depot.contains);
}

TEST(DepotValuesTest, DefaultNamesOfTheSchemaAreThoseThatTheDirectoryTakes) {
    const std::pair<const char*, std::string> rows[] = {
        {"FileAttributeName", kDefaultNamingAttribute},
        {"FileObjectClass", kDefaultFileClass},
        {"FolderAttributeName", kDefaultNamingAttribute},
        {"FolderObjectClass", kDefaultFolderClass},
        {"FileContentsAttributeName", kDefaultContentsAttribute}};
    for (const auto& [name, expected] : rows) {
        SCOPED_TRACE(name);
        const auto value =
            std::find_if(kDepotValues.begin(), kDepotValues.end(),
                         [&](const DepotValue& one) { return one.name == std::string(name); });
        ASSERT_NE(kDepotValues.end(), value);
        EXPECT_EQ(expected, DefaultOf(*value));
    }
}

TEST_F(ReadDefinitionTest, GapEndsTheLocations) {
    for (const char* name : {"Path1", "Path2", "Path4"}) key_.Text("Work", name, name);
    CDepot depot(nullptr);
    EXPECT_TRUE(Read(depot));
    ASSERT_EQ(2u, depot.paths->Count());
    EXPECT_EQ("Path1", depot.paths->At(0)->path);
    EXPECT_EQ("Path2", depot.paths->At(1)->path);
}

TEST_F(ReadDefinitionTest, DefinitionWithoutAFirstLocationIsNoDepot) {
    key_.Text("Work", "Path2", "C:\\work");
    key_.Text("Work", "Path0", "C:\\work");
    key_.Text("Work", "Path", "C:\\work");
    CDepot depot(nullptr);
    EXPECT_FALSE(Read(depot));
    key_.Text("Work", "Path1", std::string(300, 'p'));
    EXPECT_FALSE(Read(depot));
}

TEST_F(ReadDefinitionTest, ManyLocationsAreReadInTheOrderOfTheirNumbers) {
    for (int number = 120; number > 0; --number) {
        key_.Text("Work", "Path" + std::to_string(number), std::to_string(number));
    }
    CDepot depot(nullptr);
    EXPECT_TRUE(Read(depot));
    ASSERT_EQ(120u, depot.paths->Count());
    for (std::size_t index = 0; index < 120; ++index) {
        EXPECT_EQ(std::to_string(index + 1), depot.paths->At(index)->path);
    }
}

TEST_F(ReadDefinitionTest, RegistryViewOfTheDepotIsUsed) {
    constexpr char kViewKey[] = "Software\\DepotTests\\View";
    const test::ScratchKey narrow(HKEY_LOCAL_MACHINE, "Software\\Wow6432Node\\DepotTests\\View");
    const test::ScratchKey wide(HKEY_LOCAL_MACHINE, kViewKey);
    narrow.Text("Work", "Path1", "C:\\narrow");
    wide.Text("Work", "Path1", "C:\\wide");
    const RegistryKey list =
        RegistryKey::Open(HKEY_LOCAL_MACHINE, "Software", KEY_READ | KEY_WOW64_64KEY).value();
    CDepot depot(nullptr);
    depot.registryViewFlags = KEY_WOW64_64KEY;
    EXPECT_TRUE(depot.ReadDefinition(list, "DepotTests\\View\\Work", "eng"));
    EXPECT_EQ("C:\\wide", depot.paths->At(0)->path);
}

}  // namespace
}  // namespace depot
