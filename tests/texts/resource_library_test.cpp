#include "texts/resource_library.h"

#include <gmock/gmock.h>

#include "platform/module_state.h"
#include "resource_ids.h"
#include "support/box_at_load.h"
#include "support/library_folder.h"
#include "support/locale_world.h"

namespace depot {
namespace {

using namespace test;

std::string ModulePath(HMODULE module) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(module, path, sizeof(path));
    return path;
}

class ResourceLibraryTest : public testing::Test {
protected:
    ~ResourceLibraryTest() override { SetResourceLibrary(nullptr); }

    // Loads by the plain path; returns the name of what was loaded, or nothing.
    std::string Loaded() {
        library_ = LoadResourceLibrary(folder_.At("DepotIntr.NLS"));
        if (!library_) return "";
        const std::string path = ModulePath(library_.get());
        return path.substr(path.rfind('\\') + 1);
    }

    LocaleWorld world_;
    LibraryFolder folder_;
    UniqueModule library_;
};

TEST_F(ResourceLibraryTest, ConfiguredLanguageLoadsItsLibrary) {
    folder_.OfferAll();
    world_.Configure("fra", "eng fra");
    EXPECT_EQ("depotintr.fra.nls", Loaded());
}

TEST_F(ResourceLibraryTest, EmptyListLoadsThePlainLibrary) {
    folder_.OfferAll();
    world_.Configure("fra", "");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, NameInsideALongerWordLoadsItsLibrary) {
    folder_.OfferAll();
    world_.Configure("eng", "english");
    EXPECT_EQ("depotintr.eng.nls", Loaded());
}

TEST_F(ResourceLibraryTest, LanguageWithoutALibraryLoadsThePlainOne) {
    folder_.OfferAll();
    world_.Configure("deu", "eng deu");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, LibraryThatIsNoDllIsPassedOver) {
    folder_.OfferAll();
    folder_.MakeFile("depotintr.fra.nls", "not a library");
    world_.Configure("fra", "eng fra");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, EmptyLibraryFileIsPassedOver) {
    folder_.OfferAll();
    folder_.MakeFile("depotintr.fra.nls", "");
    world_.Configure("fra", "eng fra");
    EXPECT_STRCASEEQ("DepotIntr.NLS", Loaded().c_str());
}

TEST_F(ResourceLibraryTest, LanguageLibraryLoadsWithoutThePlainOne) {
    folder_.Offer("depotintr.fra.nls", "depotintr.fra.nls");
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
    folder_.OfferAll();
    world_.Configure("fra", "eng fra");
    std::string path = folder_.At("DEPOTINTR.NLS");
    CharUpperBuffA(path.data(), static_cast<DWORD>(path.size()));
    library_ = LoadResourceLibrary(path);
    ASSERT_TRUE(library_);
    EXPECT_TRUE(ModulePath(library_.get()).ends_with("\\depotintr.fra.nls"));
}

TEST_F(ResourceLibraryTest, TextsComeFromTheLibraryThatIsSet) {
    folder_.OfferAll();
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
    folder_.Offer("DepotIntr.NLS", "qdirsvc.dll");
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_PREFIX_NAME));
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_DASH_NAME));
}

TEST_F(ResourceLibraryTest, NumberWithoutATextIsAbsent) {
    folder_.OfferAll();
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    for (const unsigned id : {0U, 499U, 502U, 511U, 0xFFFFU}) {
        EXPECT_EQ(std::nullopt, ResourceText(id)) << id;
    }
}

TEST_F(ResourceLibraryTest, TextThatTheCodePageCannotHoldIsAbsent) {
    ASSERT_EQ(1252U, GetACP());
    folder_.Offer("DepotIntr.NLS", "depotintr.jpn.nls");
    EXPECT_NE("", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(std::nullopt, ResourceText(IDS_COPY_DASH_NAME));
    EXPECT_EQ("OK", ResourceText(IDS_OK));
}

TEST_F(ResourceLibraryTest, MissingLibraryIsReportedInABox) {
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
    folder_.OfferAll();
    BoxWatcher watcher("DepotIntr");
    EXPECT_NE(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    EXPECT_EQ(std::nullopt, watcher.Finish());
}

}  // namespace
}  // namespace depot
