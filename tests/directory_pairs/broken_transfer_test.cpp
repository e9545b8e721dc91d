// Transfers whose server goes away in the middle.
#include "directory_pairs/pairs_fixture.h"
#include "support/directory_transfer.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

constexpr int kFiles = 200;
constexpr std::size_t kFileBytes = 1000;

std::string NameOf(int number) {
    return "f" + std::to_string(number) + ".kra";
}

std::string BytesOf(const std::string& name) {
    return name + std::string(kFileBytes - name.size(), 'x');
}

class BrokenTransferTest : public PairWorldTest {
protected:
    // No temporary folder outlives its operation.
    ~BrokenTransferTest() override { EXPECT_EQ(foldersBefore_, TemporaryFolders()); }

    static std::vector<std::string> TemporaryFolders() {
        char folder[MAX_PATH] = {};
        const DWORD length = GetTempPathA(sizeof(folder), folder);
        return FilesIn(std::string(folder, length - 1), "Dir*");
    }
    void MakeMany(TestFolder& store, const std::string& folder) {
        for (int number = 0; number < kFiles; ++number) {
            store.MakeFile(folder + "\\" + NameOf(number), BytesOf(NameOf(number)));
        }
    }
    // Entries in one request.
    void MakeManyEntries() {
        std::string ldif;
        for (int number = 0; number < kFiles; ++number) {
            const std::string name = NameOf(number);
            ldif += "dn: " + directory_.At("from\\many\\" + name) +
                    "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: " + BytesOf(name) + "\n\n";
        }
        directory_.MakeFolder("from\\many");
        world_.server.Apply(ldif);
    }
    static bool IsComplete(TestFolder& store, const std::string& folder) {
        return CountWhole(store, folder) == kFiles;
    }
    // How many files arrived, each of them whole.
    static int CountWhole(TestFolder& store, const std::string& folder) {
        const StoreContents contents = store.Contents(folder);
        for (const auto& [name, bytes] : contents) EXPECT_EQ(BytesOf(name), bytes) << name;
        return static_cast<int>(contents.size());
    }

    // A depot "Cut" over the same folder of the directory, whose connections end after so many
    // bytes from the server.
    CDepot& AddCutDepot(unsigned bytes) {
        const unsigned port = world_.server.CutAfter(bytes);
        ForgetServer(port);
        CDepotPath location = world_.server.Location(world_.base);
        location.port = port;
        CDepot& cut = world_.AddOf(location, "Cut");
        EXPECT_NE("", cut.paths->GetActivePath());
        return cut;
    }

    // What the server sends for each file that it stores, and for all files that it lists and hands
    // out, at least.
    static constexpr unsigned kAnswerBytes = 14;
    static constexpr unsigned kListingBytes = kFiles * 50;

    const std::vector<std::string> foldersBefore_ = TemporaryFolders();
};

TEST_F(BrokenTransferTest, ServerThatStopsAtFile100OfAnUploadHasTheFilesBefore) {
    MakeMany(folder_, "from\\many");
    DirectoryServer server;
    auto location = server.Location().Clone();
    ForgetServer(server.Port());
    CLDAPItems directory(location.get());
    const auto stop = [&](const TransferProgress& progress) {
        if (progress.filesDone == 100) server.Stop();
        return true;
    };
    EXPECT_THAT(Upload(directory, folder_.At("from\\many"), std::string("cn=many,") + kSuffix,
                       ExistingEntries::kReplace, &error_, stop),
                Fails());
    EXPECT_NE("junk", error_);
    server.Continue();
    DirectoryTestFolder stored(server, kSuffix, {});
    // The requests of one window are under way when the hundredth file is reported.
    EXPECT_GE(CountWhole(stored, "many"), 100);
    EXPECT_LE(CountWhole(stored, "many"), 100 + 32);
    EXPECT_TRUE(IsComplete(folder_, "from\\many"));
}

TEST_F(BrokenTransferTest, ServerThatStopsAtFile100OfADownloadLeavesTheFilesBefore) {
    DirectoryServer server;
    DirectoryTestFolder stored(server, kSuffix, {});
    MakeMany(stored, "many");
    auto location = server.Location().Clone();
    ForgetServer(server.Port());
    CLDAPItems directory(location.get());
    const auto stop = [&](const TransferProgress& progress) {
        if (progress.filesDone == 100) server.Stop();
        return true;
    };
    EXPECT_THAT(Download(directory, stored.At("many"), folder_.At("to\\many"), &error_, stop),
                Fails());
    EXPECT_NE("junk", error_);
    server.Continue();
    EXPECT_GE(CountWhole(folder_, "to\\many"), 100);
    EXPECT_LE(CountWhole(folder_, "to\\many"), 100 + 32);
    EXPECT_TRUE(IsComplete(stored, "many"));
}

TEST_F(BrokenTransferTest, TreeOnItsWayIntoADirectoryStaysWhereItWas) {
    MakeMany(folder_, "from\\many");
    AddCutDepot(100 * kAnswerBytes);
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        EXPECT_THAT(OnList(operation, {"<Home>\\from\\many"}, "<Cut>\\to\\"), Fails());
        const int arrived = CountWhole(directory_, "to\\many");
        EXPECT_LT(0, arrived);
        EXPECT_GT(kFiles, arrived);
        EXPECT_TRUE(IsComplete(folder_, "from\\many"));
    }
}

TEST_F(BrokenTransferTest, ListOnItsWayIntoADirectoryLosesNoFile) {
    MakeMany(folder_, "from\\many");
    AddCutDepot(100 * kAnswerBytes);
    std::vector<std::string> sources;
    for (int number = 0; number < kFiles; ++number) {
        sources.push_back("<Home>\\from\\many\\" + NameOf(number));
    }
    EXPECT_THAT(OnList(FO_MOVE, sources, "<Cut>\\to\\"), Fails());
    const int arrived = CountWhole(directory_, "to");
    EXPECT_LT(0, arrived);
    EXPECT_LE(kFiles, arrived + CountWhole(folder_, "from\\many"));
}

TEST_F(BrokenTransferTest, TreeOnItsWayOutOfADirectoryStaysWhereItWas) {
    MakeManyEntries();
    AddCutDepot(kListingBytes + 100 * kFileBytes);
    const StoreContents before = folder_.Contents();
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        // A list reaches a folder only when all of it was fetched.
        EXPECT_THAT(OnList(operation, {"<Cut>\\from\\many"}, "<Home>\\to\\"), Fails());
        EXPECT_EQ(before, folder_.Contents());
        EXPECT_THAT(OnItem(operation, "<Cut>\\from\\many",
                           plain_.Path("to\\many" + std::to_string(operation))),
                    Fails());
        const int arrived = CountWhole(plain_, "to\\many" + std::to_string(operation));
        EXPECT_LT(0, arrived);
        EXPECT_GT(kFiles, arrived);
    }
    EXPECT_TRUE(IsComplete(directory_, "from\\many"));
}

TEST_F(BrokenTransferTest, TreeBetweenTwoDirectoriesStaysWhereItWas) {
    MakeManyEntries();
    AddCutDepot(100 * kAnswerBytes);
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        EXPECT_THAT(OnList(operation, {"<Work>\\from\\many"}, "<Cut>\\to\\"), Fails());
        EXPECT_GT(kFiles, CountWhole(directory_, "to\\many"));
        EXPECT_THAT(OnList(operation, {"<Cut>\\from\\many"}, "<Work>\\other\\"), Fails());
        EXPECT_FALSE(directory_.Holds("other\\many"));
    }
    EXPECT_TRUE(IsComplete(directory_, "from\\many"));
}

// Wherever the connection ends, one of the two trees is whole.
TEST_F(BrokenTransferTest, RenamedFolderIsWholeOnOneSide) {
    // While the tree is fetched, while it is stored, and while the old one is deleted.
    for (const unsigned bytes : {kListingBytes + 100'000, 250'000u, 274'000u}) {
        SCOPED_TRACE(bytes);
        MakeManyEntries();
        CDepot& cut = AddCutDepot(bytes);
        // Where the server renames the folder itself there is no middle.
        RefuseTreeRenames(*cut.DirectoryConnection());
        const int done =
            MoveFile(cut, "<Cut>\\from\\many", "<Cut>\\to\\many", nullptr, nullptr, &error_);
        const int left = CountWhole(directory_, "from\\many");
        const int arrived = CountWhole(directory_, "to\\many");
        EXPECT_TRUE(arrived == kFiles || left == kFiles) << arrived << " " << left;
        EXPECT_EQ(done != 0, arrived == kFiles && left == 0);
        world_.depots.Remove(&cut);
        ASSERT_NE(0, DeleteFile(world_.work, "<Work>\\from\\many") +
                         DeleteFile(world_.work, "<Work>\\to\\many"));
    }
}

}  // namespace
}  // namespace depot::test
