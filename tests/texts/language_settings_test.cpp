#include "texts/language_settings.h"

#include <gmock/gmock.h>

#include <vector>

#include "platform/managed_key.h"
#include "platform/module_state.h"
#include "support/import_patch.h"
#include "support/locale_world.h"

namespace depot {
namespace {

using namespace test;

class LanguageSettingsTest : public testing::Test {
protected:
    LocaleWorld world_;
};

TEST_F(LanguageSettingsTest, MissingKeysGiveNoSettings) {
    const LanguageSettings settings = ReadLanguageSettings();
    EXPECT_EQ(std::nullopt, settings.searchMethod);
    EXPECT_EQ(std::nullopt, settings.defaultLanguage);
    EXPECT_EQ(std::nullopt, settings.availableLanguages);
    EXPECT_EQ(std::nullopt, settings.globalDefaultLanguage);
    EXPECT_EQ("", CurrentLanguageCode());
    EXPECT_EQ("", CurrentDottedLanguage());
}

TEST_F(LanguageSettingsTest, EachValueComesFromItsHiveFirst) {
    for (const char* name : {kMethod, kDefault, kAvailable, kGlobalDefault}) {
        world_.user.Text("", name, std::string("user ") + name);
        world_.machine.Text("", name, std::string("machine ") + name);
    }
    const LanguageSettings settings = ReadLanguageSettings();
    EXPECT_EQ("user Language Search Method", settings.searchMethod);
    EXPECT_EQ("user Default UI Language", settings.defaultLanguage);
    EXPECT_EQ("machine Available UI Languages", settings.availableLanguages);
    EXPECT_EQ("machine Global Default UI Language", settings.globalDefaultLanguage);
}

TEST_F(LanguageSettingsTest, PolicyWinsValueByValueTheMachinesFirst) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE, PolicyKeyOf(kLocaleKey));
    const ScratchKey user(HKEY_CURRENT_USER, PolicyKeyOf(kLocaleKey));
    world_.Configure("ita", "eng deu fra ita");
    EXPECT_EQ("ita", CurrentLanguageCode());
    user.Text("", kDefault, "fra");
    EXPECT_EQ("fra", CurrentLanguageCode());
    machine.Text("", kDefault, "deu");
    EXPECT_EQ("deu", CurrentLanguageCode());
    EXPECT_EQ("1", ReadLanguageSettings().searchMethod);
    machine.Text("", kAvailable, "eng");
    EXPECT_EQ("eng", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, MissingUserKeyHandsOverToTheMachine) {
    world_.machine.Text("", kMethod, "1");
    world_.machine.Text("", kDefault, "ita");
    const LanguageSettings settings = ReadLanguageSettings();
    EXPECT_EQ("1", settings.searchMethod);
    EXPECT_EQ("ita", settings.defaultLanguage);
}

TEST_F(LanguageSettingsTest, MissingMachineKeyHandsOnlyTheAvailableLanguagesOverToTheUser) {
    world_.user.Text("", kAvailable, "eng fra");
    world_.user.Text("", kGlobalDefault, "fra");
    const LanguageSettings settings = ReadLanguageSettings();
    EXPECT_EQ("eng fra", settings.availableLanguages);
    EXPECT_EQ(std::nullopt, settings.globalDefaultLanguage);
}

TEST_F(LanguageSettingsTest, KeyThatOpensEndsTheSearchEvenWithoutTheValue) {
    CreateRegistryKey(HKEY_CURRENT_USER, kLocaleKey);
    world_.machine.Text("", kMethod, "1");
    world_.machine.Text("", kDefault, "ita");
    EXPECT_EQ(std::nullopt, ReadLanguageSettings().searchMethod);
    EXPECT_EQ(std::nullopt, ReadLanguageSettings().defaultLanguage);

    world_.user.Text("", kAvailable, "eng fra");
    EXPECT_EQ(std::nullopt, ReadLanguageSettings().availableLanguages);
}

TEST_F(LanguageSettingsTest, ValueOverTheLimitCountsAsAbsent) {
    for (const std::size_t bytes : {259U, 260U, 261U, 10240U}) {
        SCOPED_TRACE(bytes);
        const std::string text(bytes - 1, 'x');
        world_.user.Text("", kMethod, text);
        world_.user.Text("", kDefault, text);
        world_.machine.Text("", kAvailable, text);
        world_.machine.Text("", kGlobalDefault, text);
        const auto expected = bytes <= 260 ? std::optional(text) : std::nullopt;
        const LanguageSettings settings = ReadLanguageSettings();
        EXPECT_EQ(expected, settings.searchMethod);
        EXPECT_EQ(expected, settings.defaultLanguage);
        EXPECT_EQ(expected, settings.availableLanguages);
        EXPECT_EQ(expected, settings.globalDefaultLanguage);
    }
}

TEST_F(LanguageSettingsTest, HugeListOfLanguagesOffersNone) {
    world_.Configure("fra", "eng fra " + std::string(10240, 'x'));
    EXPECT_EQ("", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, TextWithoutTerminatorAndOfAnyTypeIsRead) {
    for (const DWORD type : {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ, REG_BINARY}) {
        SCOPED_TRACE(type);
        world_.user.Raw("", kMethod, type, "1");
        world_.user.Raw("", kDefault, type, "fra");
        world_.machine.Raw("", kAvailable, type, "eng fra");
        EXPECT_EQ("fra", CurrentLanguageCode());
    }
}

TEST_F(LanguageSettingsTest, ListEndsAtItsFirstNul) {
    world_.Configure("fra", "eng");
    world_.machine.Raw("", kAvailable, REG_MULTI_SZ, std::string("eng\0fra\0\0", 9));
    EXPECT_EQ("eng", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, NumberInPlaceOfTheMethodIsNotOne) {
    world_.Configure("fra", "eng fra");
    world_.user.Dword("", kMethod, 1);
    EXPECT_EQ("eng", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, LanguageCodeFollowsAChangedRegistry) {
    world_.Configure("fra", "eng fra deu");
    EXPECT_EQ("fra", CurrentLanguageCode());
    EXPECT_EQ(".fra", CurrentDottedLanguage());
    world_.user.Text("", kDefault, "deu");
    EXPECT_EQ("deu", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, CodeOfADottedNameLosesOneDot) {
    world_.Configure("..x", "..x");
    EXPECT_EQ(".x", CurrentLanguageCode());
    world_.Configure(".fra", ".fra");
    EXPECT_EQ("fra", CurrentLanguageCode());
}

TEST_F(LanguageSettingsTest, LongNameIsCutToItsBuffer) {
    const std::string name(259, 'x');
    world_.Configure(name, name);
    EXPECT_EQ("." + name.substr(1), CurrentDottedLanguage());
}

TEST_F(LanguageSettingsTest, UsersMethodTakesTheLanguageOfTheInterface) {
    ASSERT_EQ(LANG_ENGLISH, PRIMARYLANGID(GetUserDefaultUILanguage()));
    world_.machine.Text("", kAvailable, "deu fra eng");
    EXPECT_EQ("eng", CurrentLanguageCode());
}

// Asks the system to open a key, and notes for what.
class OpeningLog {
public:
    OpeningLog() {
        genuine_ = opening_.Genuine();
        accesses.clear();
    }

    static inline std::vector<REGSAM> accesses;

private:
    static LSTATUS WINAPI Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, HKEY* key) {
        EXPECT_TRUE(kLocaleKey == std::string(path) || PolicyKeyOf(kLocaleKey) == path) << path;
        accesses.push_back(access);
        return genuine_(root, path, options, access, key);
    }

    static inline decltype(&RegOpenKeyExA) genuine_ = nullptr;
    const ImportPatch<decltype(&RegOpenKeyExA)> opening_{"RegOpenKeyExA", &Open};
};

TEST_F(LanguageSettingsTest, KeysAreOpenedForQueriesOnly) {
    world_.Configure("fra", "eng fra");
    const OpeningLog log;
    ReadLanguageSettings();
    EXPECT_EQ(std::vector<REGSAM>(4, KEY_QUERY_VALUE), log.accesses);
}

TEST(UserLanguageTest, SystemLibraryIsAsked) {
    EXPECT_EQ(GetUserDefaultUILanguage(), UserLanguageId());
}

TEST(UserLanguageTest, SystemWithoutTheEntryPointGivesTheFormatLanguage) {
    // This program exports no entry points at all.
    EXPECT_EQ(GetUserDefaultLangID(), UserLanguageId(OwnModule()));
}

}  // namespace
}  // namespace depot
