#include "host/resource_library.h"

#include <gmock/gmock.h>

#include <fstream>

#include "host/app.h"
#include "host/locale_world.h"
#include "model/depots.h"
#include "model/localization.h"
#include "platform/module_state.h"
#include "resource_ids.h"
#include "support/box_at_load.h"

namespace depot {
namespace {

using namespace test;

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

std::string ModulePath(HMODULE module) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(module, path, sizeof(path));
    return path;
}

// A folder that offers the plain library and those of some languages.
class ResourceLibraryTest : public testing::Test {
protected:
    ~ResourceLibraryTest() override { SetResourceLibrary(nullptr); }

    // Copies a file of the build's own folder under a new name.
    void Offer(const std::string& name, const std::string& source) const {
        ASSERT_TRUE(
            CopyFileA((OwnModuleFolder() + source).c_str(), folder_.At(name).c_str(), FALSE));
    }
    void OfferAll() const {
        Offer("DepotIntr.NLS", "DepotIntr.NLS");
        for (const std::string name : {"depotintr.eng.nls", "depotintr.fra.nls"}) Offer(name, name);
    }

    // Loads by the plain path; returns the name of what was loaded, or nothing.
    std::string Loaded() {
        library_ = LoadResourceLibrary(folder_.At("DepotIntr.NLS"));
        if (!library_) return "";
        const std::string path = ModulePath(library_.get());
        return path.substr(path.rfind('\\') + 1);
    }

    LocaleWorld world_;
    ScratchFolder folder_;
    UniqueModule library_;
};

TEST_F(ResourceLibraryTest, ConfiguredLanguageLoadsItsLibrary) {
    OfferAll();
    world_.Configure("fra", "eng fra");
    EXPECT_EQ("depotintr.fra.nls", Loaded());
}

TEST_F(ResourceLibraryTest, EmptyListLoadsThePlainLibrary) {
    OfferAll();
    world_.Configure("fra", "");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, NameInsideALongerWordLoadsItsLibrary) {
    OfferAll();
    world_.Configure("eng", "english");
    EXPECT_EQ("depotintr.eng.nls", Loaded());
}

TEST_F(ResourceLibraryTest, LanguageWithoutALibraryLoadsThePlainOne) {
    OfferAll();
    world_.Configure("deu", "eng deu");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, LibraryThatIsNoDllIsPassedOver) {
    OfferAll();
    folder_.MakeFile("depotintr.fra.nls", "not a library");
    world_.Configure("fra", "eng fra");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, EmptyLibraryFileIsPassedOver) {
    OfferAll();
    folder_.MakeFile("depotintr.fra.nls", "");
    world_.Configure("fra", "eng fra");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, LanguageLibraryLoadsWithoutThePlainOne) {
    Offer("depotintr.fra.nls", "depotintr.fra.nls");
    world_.Configure("fra", "fra");
    EXPECT_EQ("depotintr.fra.nls", Loaded());
}

TEST_F(ResourceLibraryTest, FolderWithoutLibrariesLoadsNothing) {
    world_.Configure("fra", "eng fra");
    EXPECT_EQ("", Loaded());
}

TEST_F(ResourceLibraryTest, UnknownFolderIsNotSearchedFor) {
    // Found by its bare name the library would come from the folder of the program.
    ASSERT_TRUE(Exists(OwnModuleFolder() + "DepotIntr.NLS"));
    EXPECT_EQ(nullptr, LoadResourceLibrary("DepotIntr.NLS"));
    EXPECT_EQ(nullptr, LoadResourceLibrary(""));
}

TEST_F(ResourceLibraryTest, FolderInCapitalLettersIsFound) {
    OfferAll();
    world_.Configure("fra", "eng fra");
    std::string path = folder_.At("DEPOTINTR.NLS");
    CharUpperBuffA(path.data(), static_cast<DWORD>(path.size()));
    library_ = LoadResourceLibrary(path);
    ASSERT_TRUE(library_);
    EXPECT_TRUE(ModulePath(library_.get()).ends_with("\\depotintr.fra.nls"));
}

TEST_F(ResourceLibraryTest, TextsComeFromTheLibraryThatIsSet) {
    OfferAll();
    world_.Configure("fra", "eng fra");
    EXPECT_EQ("depotintr.fra.nls", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(library_.get(), ResourceLibrary());
    EXPECT_EQ("Copie %sde %s", ResourceText(IDS_COPY_PREFIX_NAME));
    EXPECT_EQ(
        "Cr\xE9"
        "er une copie",
        ResourceText(IDS_BROWSE_MAKE_COPY));
}

TEST_F(ResourceLibraryTest, TextsAreAbsentWithoutALibrary) {
    SetResourceLibrary(nullptr);
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_PREFIX_NAME));
}

TEST_F(ResourceLibraryTest, LibraryWithoutTheStringsHasNoTexts) {
    Offer("DepotIntr.NLS", "qdirsvc.dll");
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_PREFIX_NAME));
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_DASH_NAME));
}

TEST_F(ResourceLibraryTest, NumberWithoutATextIsAbsent) {
    OfferAll();
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    for (const unsigned id : {0U, 499U, 502U, 511U, 0xFFFFU}) {
        EXPECT_EQ(std::nullopt, ResourceText(id)) << id;
    }
}

TEST_F(ResourceLibraryTest, TextThatTheCodePageCannotHoldIsAbsent) {
    ASSERT_EQ(1252U, GetACP());
    Offer("DepotIntr.NLS", "depotintr.jpn.nls");
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_DASH_NAME));
    EXPECT_EQ("OK", ResourceText(IDS_OK));
}

TEST_F(ResourceLibraryTest, MissingLibraryIsToldInABox) {
    BoxWatcher watcher("DepotIntr");
    EXPECT_EQ(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    const auto box = watcher.Finish();
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(1, watcher.Count());
    EXPECT_EQ("Unable to load resource", box->text);
    EXPECT_TRUE(box->hasHandIcon);
    EXPECT_TRUE(box->isTopmost);
    EXPECT_TRUE(box->isForeground);
    EXPECT_FALSE(box->hasOwner);
}

TEST_F(ResourceLibraryTest, LoadedLibraryShowsNoBox) {
    OfferAll();
    BoxWatcher watcher("DepotIntr");
    EXPECT_NE(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    EXPECT_EQ(std::nullopt, watcher.Finish());
}

// The application object with its resources in a folder of the test's own.
class ApplicationTest : public ResourceLibraryTest {
protected:
    ApplicationTest() { product_.Text("", "HomeDir64", folder_.Path()); }
    ~ApplicationTest() override { InstallLocalization({}); }

    ScratchKey product_{HKEY_CURRENT_USER, kProductKey};
};

TEST_F(ApplicationTest, StartLoadsTheLibraryOfTheResourceFolderAndEndFreesIt) {
    OfferAll();
    world_.Configure("fra", "eng fra");
    CDepotIntrApp app;
    EXPECT_TRUE(app.InitInstance());
    EXPECT_EQ(GetModuleHandleA(folder_.At("depotintr.fra.nls").c_str()), ResourceLibrary());
    EXPECT_NE(nullptr, ResourceLibrary());
    EXPECT_EQ("%s - copie%s", LocalizedText(IDS_COPY_DASH_NAME));
    EXPECT_EQ("fra", LanguageCode());
    app.ExitInstance();
    EXPECT_EQ(nullptr, ResourceLibrary());
    EXPECT_EQ(nullptr, GetModuleHandleA("depotintr.fra.nls"));
    EXPECT_EQ(std::nullopt, LocalizedText(IDS_COPY_DASH_NAME));
}

TEST_F(ApplicationTest, StartSucceedsWithoutResources) {
    BoxWatcher watcher("DepotIntr");
    CDepotIntrApp app;
    EXPECT_TRUE(app.InitInstance());
    EXPECT_TRUE(watcher.Finish().has_value());
    EXPECT_EQ(std::nullopt, LocalizedText(IDS_COPY_DASH_NAME));
    app.ExitInstance();
}

TEST_F(ApplicationTest, ChangedRegistryShowsInTheNextDepotList) {
    constexpr char kDepots[] = "Software\\DepotTests\\Localized";
    const ScratchKey depots(HKEY_CURRENT_USER, kDepots);
    depots.Text("Team", "DisplayName.eng", "Team");
    depots.Text("Team", "DisplayName.fra", "Equipe");
    depots.Text("Team", "Path1", folder_.Path());
    OfferAll();
    world_.Configure("fra", "eng fra");
    CDepotIntrApp app;
    app.InitInstance();
    EXPECT_EQ("Equipe", CDepots(kDepots, "").At(0)->displayName);
    world_.user.Text("", kDefault, "eng");
    EXPECT_EQ("Team", CDepots(kDepots, "").At(0)->displayName);
    app.ExitInstance();
}

TEST(LocalizationTest, NothingInstalledMeansEnglishWithoutTexts) {
    InstallLocalization({});
    EXPECT_EQ("eng", LanguageCode());
    EXPECT_EQ(std::nullopt, LocalizedText(IDS_COPY_DASH_NAME));
}

}  // namespace
}  // namespace depot
