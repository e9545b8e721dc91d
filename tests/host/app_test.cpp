#include "host/app.h"

#include <gmock/gmock.h>

#include "model/depots.h"
#include "model/localization.h"
#include "resource_ids.h"
#include "support/box_log.h"
#include "support/library_folder.h"
#include "support/locale_world.h"
#include "texts/resource_library.h"

namespace depot {
namespace {

using namespace test;

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

// The application object with its resources in a folder of the test's own.
class ApplicationTest : public testing::Test {
protected:
    ApplicationTest() { product_.Text("", "HomeDir64", folder_.Path()); }
    ~ApplicationTest() override {
        SetResourceLibrary(nullptr);
        InstallLocalization({});
    }

    LocaleWorld world_;
    LibraryFolder folder_;
    ScratchKey product_{HKEY_CURRENT_USER, kProductKey};
};

TEST_F(ApplicationTest, StartLoadsTheLibraryOfTheResourceFolderAndEndFreesIt) {
    folder_.OfferAll();
    world_.Configure("fra", "eng fra");
    CDepotIntrApp app;
    EXPECT_TRUE(app.InitInstance());
    EXPECT_TRUE(IsInUse(folder_.At("depotintr.fra.nls")));
    EXPECT_NE(nullptr, ResourceLibrary());
    EXPECT_EQ("%s - copie%s", LocalizedText(IDS_COPY_DASH_NAME));
    EXPECT_EQ("fra", LanguageCode());
    app.ExitInstance();
    EXPECT_EQ(nullptr, ResourceLibrary());
    EXPECT_FALSE(IsInUse(folder_.At("depotintr.fra.nls")));
    EXPECT_EQ(std::nullopt, LocalizedText(IDS_COPY_DASH_NAME));
}

TEST_F(ApplicationTest, StartSucceedsWithoutResources) {
    const BoxLog boxes;
    CDepotIntrApp app;
    EXPECT_TRUE(app.InitInstance());
    ASSERT_EQ(1u, boxes.Boxes().size());
    EXPECT_EQ("DepotIntr", boxes.Boxes().front().caption);
    EXPECT_EQ(std::nullopt, LocalizedText(IDS_COPY_DASH_NAME));
    app.ExitInstance();
}

TEST_F(ApplicationTest, ChangedRegistryShowsInTheNextDepotList) {
    constexpr char kDepots[] = "Software\\DepotTests\\Localized";
    const ScratchKey depots(HKEY_CURRENT_USER, kDepots);
    depots.Text("Team", "DisplayName.eng", "Team");
    depots.Text("Team", "DisplayName.fra", "Equipe");
    depots.Text("Team", "Path1", folder_.Path());
    folder_.OfferAll();
    world_.Configure("fra", "eng fra");
    CDepotIntrApp app;
    app.InitInstance();
    EXPECT_EQ("Equipe", CDepots(kDepots, "").At(0)->displayName);
    world_.user.Text("", kDefault, "eng");
    EXPECT_EQ("Team", CDepots(kDepots, "").At(0)->displayName);
    app.ExitInstance();
}

}  // namespace
}  // namespace depot
