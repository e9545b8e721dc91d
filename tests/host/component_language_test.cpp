// The whole DLL, loaded by a process of its own. These tests are run once more under each language,
// which the environment variable DEPOTINTR_LOCALE tells.
#include <gmock/gmock.h>

#include <sstream>
#include <vector>

#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "support/languages.h"
#include "support/locale_world.h"
#include "support/program_start.h"
#include "texts/resource_library.h"

namespace depot {
namespace {

using namespace test;
using testing::ElementsAre;

// One for each time that the component is loaded.
constexpr char kBox[] = "box Unable to load resource";

// What the component makes of a user's locale.
struct ExpectedLanguage {
    const char* locale;
    WORD primaryLanguage;
    const char* name;
};

constexpr ExpectedLanguage kExpected[] = {
    {"en", LANG_ENGLISH, "eng"},    {"de", LANG_GERMAN, "deu"},  {"fr", LANG_FRENCH, "fra"},
    {"es", LANG_SPANISH, "esp"},    {"it", LANG_ITALIAN, "ita"}, {"ja", LANG_JAPANESE, "jpn"},
    {"pt", LANG_PORTUGUESE, "prt"}, {"pl", LANG_POLISH, "eng"},
};

// The list names every language's locale; CMakeLists.txt starts a run under each.
static_assert(std::size(kExpected) == std::size(kLanguages) + 1);

// The row of the locale that this run was started under; that of the user's own language when it
// was not told.
ExpectedLanguage Expected() {
    char text[64] = {};
    const std::string locale(text, GetEnvironmentVariableA("DEPOTINTR_LOCALE", text, sizeof(text)));
    const WORD own = PRIMARYLANGID(GetUserDefaultUILanguage());
    for (const ExpectedLanguage& row : kExpected) {
        if (locale.empty() ? row.primaryLanguage == own : locale.starts_with(row.locale))
            return row;
    }
    ADD_FAILURE() << "no row for the language of this run";
    return kExpected[0];
}

std::string Loaded(const std::string& language) {
    return "loaded depotintr." + language + ".nls";
}

class ComponentLanguageTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(Expected().primaryLanguage, PRIMARYLANGID(GetUserDefaultUILanguage()));
    }

    // Loads the component from `folder` in a process of its own, and returns what load_probe
    // reports.
    std::vector<std::string> Probe(const std::string& folder) const {
        EXPECT_EQ(0u, RunProgram({.command = WideFromAnsi(
                                      "\"" + OwnModuleFolder() + "load_probe.exe\" \"" + folder +
                                      "DepotIntr.dll\" \"" + scratch_.At("report") + "\"")}));
        std::istringstream report(FileBytes(scratch_.At("report")));
        std::vector<std::string> lines;
        for (std::string line; std::getline(report, line);) lines.push_back(line);
        return lines;
    }

    // Copies files of the build into the folder of the test.
    void Copy(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            ASSERT_TRUE(
                CopyFileA((OwnModuleFolder() + name).c_str(), scratch_.At(name).c_str(), FALSE));
        }
    }

    LocaleWorld world_;
    ScratchFolder scratch_;
};

TEST_F(ComponentLanguageTest, UserGetsTheLibraryOfTheLanguage) {
    world_.machine.Text("", kAvailable, AllLanguages());
    world_.machine.Text("", kGlobalDefault, "eng");
    EXPECT_THAT(Probe(OwnModuleFolder()), ElementsAre(Loaded(Expected().name)));
}

TEST_F(ComponentLanguageTest, LanguageThatIsNotAvailableFallsBackToTheFirstThatIs) {
    const bool italian = Expected().primaryLanguage == LANG_ITALIAN;
    world_.machine.Text("", kAvailable, italian ? "fra" : "ita");
    EXPECT_THAT(Probe(OwnModuleFolder()), ElementsAre(Loaded(italian ? "fra" : "ita")));
}

TEST_F(ComponentLanguageTest, UserWithoutSettingsGetsThePlainLibrary) {
    EXPECT_THAT(Probe(OwnModuleFolder()), ElementsAre("loaded depotintr.nls"));
}

TEST_F(ComponentLanguageTest, NamesOfCopiesCanBeWrittenInTheCodePageOfTheUser) {
    world_.machine.Text("", kAvailable, AllLanguages());
    const UniqueModule library = LoadResourceLibrary(OwnModuleFolder() + "DepotIntr.NLS");
    SetResourceLibrary(library.get());
    const auto prefix = ResourceText(IDS_COPY_PREFIX_NAME);
    const auto dash = ResourceText(IDS_COPY_DASH_NAME);
    SetResourceLibrary(nullptr);
    ASSERT_TRUE(prefix && dash);
    EXPECT_EQ(std::string::npos, prefix->find('?')) << *prefix;
    EXPECT_EQ(std::string::npos, dash->find('?')) << *dash;
}

TEST_F(ComponentLanguageTest, ComponentWithoutResourcesLoadsAfterABox) {
    Copy({"DepotIntr.dll", "qdirsvc.dll"});
    EXPECT_THAT(Probe(scratch_.At("")), ElementsAre(kBox, kBox));
}

TEST_F(ComponentLanguageTest, ComponentWithoutTheDirectoryServiceLoadsAfterABox) {
    Copy({"DepotIntr.dll", "DepotIntr.NLS"});
    EXPECT_THAT(Probe(scratch_.At("")), ElementsAre(kBox, kBox));
}

TEST_F(ComponentLanguageTest, DamagedLibraryIsReportedInABox) {
    Copy({"DepotIntr.dll", "qdirsvc.dll"});
    scratch_.MakeFile("DepotIntr.NLS", "not a library");
    EXPECT_THAT(Probe(scratch_.At("")), ElementsAre(kBox, kBox));
}

}  // namespace
}  // namespace depot
