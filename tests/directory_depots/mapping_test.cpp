#include "manager/depot_file_context.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "support/box_log.h"
#include "support/directory_fixture.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Directory";

// A directory depot named "Work", read from the registry; it is the default depot.
class MappingTest : public test::DirectoryFixture {
protected:
    MappingTest() {
        key_.Text("Work", "Path1", base_);
        key_.Dword("Work", "Type1", kDirectoryLocation);
        key_.Text("Work", "Host1", "127.0.0.1");
        key_.Dword("Work", "Port1", server_.Port());
        key_.Dword("Work", "Authentication1", kAnonymousAuthentication);
        depots_ = std::make_unique<CDepots>(kKey);
        work_ = depots_->At(0);
        server_.Mark();
    }

    void Choose() {
        ASSERT_EQ(base_ + "\\", work_->paths->GetActivePath());
        server_.Mark();
    }

    test::ScratchKey key_{HKEY_CURRENT_USER, kKey};
    std::unique_ptr<CDepots> depots_;
    CDepot* work_ = nullptr;
};

TEST_F(MappingTest, DisplayPathBecomesTheNameOfItsEntry) {
    EXPECT_EQ("CN=a.krc,CN=sub," + base_, DisplayToStorage(*work_, "<Work>\\sub\\a.krc"));
    EXPECT_EQ(base_, DisplayToStorage(*work_, "<Work>\\"));
    EXPECT_EQ("CN=sub," + base_, DisplayToStorage(*work_, "<WORK>\\sub\\"));
}

TEST_F(MappingTest, StorageFormOfABuiltPathIsTheNameOfItsEntry) {
    EXPECT_EQ("CN=Profile," + base_,
              BuildDisplayPath(*work_, "Profile", PathForm::kStorage, DepotName::kKey));
    EXPECT_EQ("CN=Profile," + base_, ProfileFolder(*work_, PathForm::kStorage));
    EXPECT_EQ("<Work>\\Profile", ProfileFolder(*work_, PathForm::kDisplay));
}

TEST_F(MappingTest, BuiltDisplayPathContactsNoServer) {
    EXPECT_EQ("<Work>\\a", BuildDisplayPath(*work_, "a", PathForm::kDisplay, DepotName::kKey));
    EXPECT_EQ("", server_.Log());
}

TEST_F(MappingTest, StoragePathIsReturnedWithoutMapping) {
    Choose();
    EXPECT_EQ("<Work>\\sub\\a.krc", StorageToDisplay(*work_, base_ + "\\sub\\a.krc"));
    EXPECT_EQ("CN=a.krc," + base_, StorageToDisplay(*work_, "CN=a.krc," + base_));
}

TEST_F(MappingTest, MappingItselfIsDoneWithoutTheServer) {
    Choose();
    DisplayToStorage(*work_, "<Work>\\sub\\a.krc");
    EXPECT_EQ("", server_.Log());
}

TEST_F(MappingTest, FileSystemPathNeverMakesADepotConnect) {
    const test::ScratchFolder folder;
    for (const std::string& path :
         {folder.MakeFile("a.krc", "x"), std::string("C:\\no such file.krc"),
          std::string("\\\\server\\share\\a.krc")}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(nullptr, FindDepotHolding(*depots_, path));
        EXPECT_EQ(path, StorageToDisplay(*work_, path));
        CDepotItem item;
        ResolveItem(*depots_, path, item);
        EXPECT_EQ(path, item.path);
        EXPECT_EQ(work_, item.depot);
        ResolveItem(*depots_, path, item, LoosePaths::kPlace, FriendlyNames::kTranslate);
        EXPECT_EQ(path, item.path);
    }
    const DepotFileContext context(folder.At("a.krc"), *depots_);
    EXPECT_EQ(folder.At("a.krc"), context.localPath);
    EXPECT_EQ(nullptr, context.depot);
    EXPECT_EQ("", server_.Log());
    EXPECT_EQ(nullptr, work_->paths->ChosenLocation());
}

TEST_F(MappingTest, FileOfTheFolderThatStandsInForADeadServerIsTheDepots) {
    const test::ScratchFolder folder;
    const std::string file = folder.MakeFile("a.krc", "x");
    key_.Text("Work", "Path1", "dc=nowhere");
    key_.Dword("Work", "Port1", 1);
    key_.Text("Work", "Path2", folder.Path());
    const test::BoxLog boxes;
    const CDepots depots(kKey);
    EXPECT_EQ(nullptr, FindDepotHolding(depots, "C:\\elsewhere\\a.krc"));
    EXPECT_EQ(nullptr, depots.At(0)->paths->ChosenLocation());
    EXPECT_EQ(depots.At(0), FindDepotHolding(depots, file));
    EXPECT_EQ("<Work>\\a.krc", StorageToDisplay(*depots.At(0), file));
}

TEST_F(MappingTest, OnlyLocationIsComparedWithoutTheServer) {
    CDepotItem item;
    ResolveItem(*depots_, "office.krc", item);
    EXPECT_EQ("office.krc", item.path);
    ResolveItem(*depots_, "dc=elsewhere\\a.krc", item);
    ResolveItem(*depots_, "<Work>\\a.krc", item);
    EXPECT_EQ("<Work>\\a.krc", item.path);
    EXPECT_EQ(work_, item.depot);
    EXPECT_EQ("", server_.Log());
    ResolveItem(*depots_, base_ + "\\sub\\a.krc", item);
    EXPECT_EQ("<Work>\\sub\\a.krc", item.path);
    EXPECT_EQ(work_, item.depot);
    EXPECT_EQ("", server_.Log());
}

TEST_F(MappingTest, OnceChosenEveryTextIsComparedWithoutTheServer) {
    Choose();
    EXPECT_EQ(work_, FindDepotHolding(*depots_, base_ + "\\a.krc"));
    EXPECT_EQ(nullptr, FindDepotHolding(*depots_, "C:\\a.krc"));
    EXPECT_EQ("", server_.Log());
}

TEST_F(MappingTest, LooseNameIsPlacedInTheProfileFolder) {
    CDepotItem item;
    ResolveItem(*depots_, "office.kra", item, LoosePaths::kPlace);
    EXPECT_EQ("CN=office.kra,CN=Profile," + base_, DisplayToStorage(*work_, item.path));
}

TEST_F(MappingTest, FolderLocationIsNotMapped) {
    const test::ScratchFolder folder;
    key_.Text("Work", "Path1", folder.Path());
    key_.Dword("Work", "Type1", kFolderLocation);
    const CDepots depots(kKey);
    EXPECT_EQ(folder.Path() + "\\sub\\a.krc",
              DisplayToStorage(*depots.At(0), "<Work>\\sub\\a.krc"));
}

}  // namespace
}  // namespace depot
