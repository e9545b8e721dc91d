#include "texts/resource_library.h"

#include <gmock/gmock.h>

#include "platform/module_state.h"
#include "resource_ids.h"
#include "support/box_log.h"
#include "support/library_folder.h"
#include "support/locale_world.h"
#include "support/unseen_host.h"

namespace depot {
namespace {

using namespace test;

class ResourceLibraryTest : public testing::Test {
protected:
    ~ResourceLibraryTest() override { SetResourceLibrary(nullptr); }

    // Loads by the plain path; returns the name of what was loaded, or nothing.
    std::string Loaded() {
        library_ = LoadResourceLibrary(folder_.At("DepotIntr.NLS"));
        if (!library_) return "";
        for (const char* name : {"DepotIntr.NLS", "depotintr.eng.nls", "depotintr.fra.nls"}) {
            if (IsInUse(folder_.At(name))) return name;
        }
        return "something else";
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
    EXPECT_TRUE(IsInUse(folder_.At("depotintr.fra.nls")));
}

TEST_F(ResourceLibraryTest, TextsComeFromTheLibraryThatIsSet) {
    folder_.OfferAll();
    world_.Configure("fra", "eng fra");
    EXPECT_EQ("depotintr.fra.nls", Loaded());
    SetResourceLibrary(library_.get());
    EXPECT_EQ(library_.get(), ResourceLibrary());
    EXPECT_EQ("Copie %sde %s", ResourceText(IDS_COPY_PREFIX_NAME));
    EXPECT_EQ(
        "&Cr\xE9"
        "er une copie",
        ResourceText(IDS_BROWSE_MAKE_COPY));
}

// What a library of texts leaves behind that ran as code.
std::string Mark() {
    char text[16] = {};
    const DWORD length = GetEnvironmentVariableA("DEPOTTESTS_PLANTED", text, sizeof(text));
    return std::string(text, length);
}

TEST_F(ResourceLibraryTest, CodeOfALibraryNeverRuns) {
    folder_.Offer("depotintr.eng.nls", "planted_texts.dll");
    world_.Configure("eng", "eng");
    EXPECT_EQ("depotintr.eng.nls", Loaded());
    EXPECT_EQ("", Mark());
    SetResourceLibrary(library_.get());
    EXPECT_EQ("Copy %sof %s", ResourceText(IDS_COPY_PREFIX_NAME));
    SetResourceLibrary(nullptr);
    library_.reset();
    EXPECT_EQ("", Mark());
    // The library would have left its mark.
    library_.reset(LoadLibraryA(folder_.At("depotintr.eng.nls").c_str()));
    EXPECT_EQ("ran", Mark());
    SetEnvironmentVariableA("DEPOTTESTS_PLANTED", nullptr);
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
    const BoxLog boxes;
    EXPECT_EQ(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    const std::vector<ShownBox> shown = boxes.Boxes();
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ("DepotIntr", shown[0].caption);
    EXPECT_EQ("Unable to load resource", shown[0].text);
    EXPECT_TRUE(shown[0].hasErrorIcon);
    EXPECT_TRUE(shown[0].isTopmost);
    EXPECT_TRUE(shown[0].isForeground);
    EXPECT_EQ(nullptr, shown[0].owner);
}

TEST_F(ResourceLibraryTest, MissingLibraryIsReportedInTheEventLogWhereNoPersonSeesABox) {
    const BoxLog boxes;
    const UnseenHost host;
    ASSERT_TRUE(host.IsInPlace());
    EXPECT_EQ(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    EXPECT_THAT(boxes.Texts(), testing::IsEmpty());
    const std::vector<LogEntry> entries = host.Taken();
    ASSERT_EQ(1u, entries.size());
    EXPECT_EQ(L"Unable to load resource", entries[0].values.back());
}

TEST_F(ResourceLibraryTest, LoadedLibraryShowsNoBox) {
    folder_.OfferAll();
    const BoxLog boxes;
    EXPECT_NE(nullptr, LoadResourceLibraryOrTell(folder_.At("")));
    EXPECT_THAT(boxes.Texts(), testing::IsEmpty());
}

}  // namespace
}  // namespace depot
