// How many round trips each operation waits for, counted by a relay before the server. The number
// of round trips is what users feel whose server is far away, and no load of the machine changes
// it.
#include "support/relay.h"

#include <gmock/gmock.h>

#include "component/component.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "manager/depot_list.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/offline_files.h"
#include "support/test_folders.h"
#include "support/waits.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::IsEmpty;

// Time for requests that do not wait for the answers before them to reach the relay before those
// answers leave it. Only a machine that stands still for longer adds round trips.
constexpr std::chrono::milliseconds kEachWay(60);

constexpr int kFiles = 200;
constexpr int kFolders = 20;
constexpr int kListed = 40;

// Fewer is better: whoever saves some lowers these.
//
// In a session that begins with the operation.
constexpr Waits kFirstRead = {1, 3};
constexpr Waits kFirstReadOfTwoLocations = {1, 4};
constexpr Waits kFirstListing = {1, 3};
constexpr Waits kFirstLookForAFile = {1, 3};
constexpr Waits kFirstTestOfWritability = {1, 3};
// In a session that has read a file.
constexpr Waits kSecondRead = {1, 3};
constexpr Waits kSetAndFlush = {1, 4};
constexpr Waits kEndAfterAChange = {1, 3};
constexpr Waits kCopyOfAFile = {1, 5};
constexpr Waits kCopyToTheFileSystem = {1, 3};
constexpr Waits kRenamingOfAFile = {1, 3};
constexpr Waits kRenamingOfAFolder = {1, 3};
constexpr Waits kDeletionOfAFile = {1, 4};
constexpr Waits kDeletionOf200Files = {1, 7};
// Clients in the directory of a profile there: those of a window are read, and written, together.
constexpr Waits kPublishingOf40Files = {1, 7};
// In a session that has read a file and keeps its connection.
constexpr Waits kKeptRead = {0, 1};
constexpr Waits kKeptLook = {0, 1};
constexpr Waits kKeptSetAndFlush = {0, 2};
// On a list of depots that begins with the operation.
constexpr Waits kUploadOf200Files = {1, 10};
constexpr Waits kDownloadOf200Files = {1, 10};
constexpr Waits kUploadOf20Folders = {1, 11};
constexpr Waits kDownloadOf20Folders = {1, 11};
constexpr Waits kListOf40FilesToTheFileSystem = {1, 4};
// Each is written when the one before is known to have arrived.
constexpr Waits kListOf40FilesWithinTheDirectory = {1, 44};

class RoundTripsTest : public ComponentTest {
protected:
    RoundTripsTest() {
        DefineDirectoryDepot(depots_, "Corp", relay_.Port(), base_);
        corp_.MakeFile("Sessions\\a.kra", "[S]\r\nK=1\r\n");
        session_.emplace(*api_);
        relay_.HoldBack(kEachWay);
    }
    ~RoundTripsTest() override {
        relay_.HoldBack({});
        EXPECT_THAT(boxes_.Texts(), IsEmpty());
    }

    // Runs an operation and returns what it waits for.
    template <class Operation>
    Waits Of(const Operation& operation) {
        relay_.Mark();
        operation();
        const RelayCounts counts = relay_.Counts();
        return {counts.connections, counts.roundTrips};
    }
    HRESULT Load(LONG_PTR* session) { return api_->DPLoadFile(session, Text(kFile)); }
    HRESULT List(LONG_PTR* session) {
        LONG count = 0;
        const HRESULT result =
            api_->DPFindInit(session, Text("<Corp>\\Sessions"), Text(".kra"), APP_SKEIN, &count);
        EXPECT_EQ(1, count);
        return result;
    }
    // A session with the file, whose depot's location is chosen.
    void LoadFirst() { ASSERT_EQ(S_OK, Load(session_->Address())); }
    void Change() {
        ASSERT_EQ(S_OK, api_->DPSetProfileString(*session_, Text("S"), Text("K"), Text("2")));
    }

    void MakeFiles(const std::string& folder, int files, int folders = 1) {
        corp_.MakeFolder(folder);
        std::string ldif;
        for (int number = 0; number < files; ++number) {
            const std::string within =
                folders == 1 ? folder : folder + "\\d" + std::to_string(number % folders);
            if (folders > 1 && number < folders) corp_.MakeFolder(within);
            const std::string name = "f" + std::to_string(number) + ".kra";
            ldif += "dn: " + corp_.At(within + "\\" + name) +
                    "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: " + std::string(1024, 'x') + "\n\n";
        }
        server_.Apply(ldif);
    }
    std::string MakeLocalFiles(int files, int folders = 1) const {
        for (int number = 0; number < files; ++number) {
            const std::string within =
                folders == 1 ? "tree" : "tree\\d" + std::to_string(number % folders);
            folder_.MakeFolder(within);
            folder_.MakeFile(within + "\\f" + std::to_string(number) + ".kra",
                             std::string(1024, 'x'));
        }
        return folder_.At("tree");
    }
    // Copies a tree with a list of depots that is new.
    void CopyTree(const std::string& from, const std::string& to, bool up) {
        CDepots depots(kDepotsKey);
        ASSERT_EQ(1u, depots.Count());
        CDepot& corp = *depots.At(0);
        std::string error;
        EXPECT_THAT(CopyFile(corp, from, to, up ? &corp : nullptr, false, &error), IsDone())
            << error;
    }

    // Copies the files of "list" as a list, with a list of depots that is new.
    void CopyList(const std::string& target, bool isInDirectory) {
        CDepots depots(kDepotsKey);
        ASSERT_EQ(1u, depots.Count());
        CDepot& corp = *depots.At(0);
        CDepotItems items;
        for (int number = 0; number < kListed; ++number) {
            const std::string name = "<Corp>\\list\\f" + std::to_string(number) + ".kra";
            items.Append(std::make_unique<CDepotItem>(name, &corp));
        }
        const CDepotItem folder(target, isInDirectory ? &corp : nullptr);
        std::string error;
        EXPECT_THAT(ListOperation(items, &folder, FO_COPY, kQuietFlags, nullptr, &error), IsDone())
            << error;
    }

    static constexpr char kFile[] = "<Corp>\\Sessions\\a.kra";

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
    Relay relay_{server_.Port()};
    DirectoryTestFolder corp_{server_, base_, "<Corp>\\"};
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    std::optional<Session> session_;
};

TEST_F(RoundTripsTest, FirstReadOfAValue) {
    LONG_PTR session = 0;
    EXPECT_EQ(kFirstRead, Of([&] {
                  EXPECT_EQ(S_OK, Load(&session));
                  EXPECT_EQ(L"1", Read(session, L"S", L"K"));
                  EXPECT_EQ(S_OK, api_->DPUnInitialize(session));
              }));
}

TEST_F(RoundTripsTest, FirstReadFromADepotWithTwoLocations) {
    depots_.Text("Corp", "Path2", base_);
    depots_.Dword("Corp", "Type2", kDirectoryLocation);
    depots_.Text("Corp", "Host2", "127.0.0.1");
    depots_.Dword("Corp", "Port2", ClosedPort());
    LONG_PTR session = 0;
    EXPECT_EQ(kFirstReadOfTwoLocations, Of([&] { EXPECT_EQ(S_OK, Load(&session)); }));
    EXPECT_EQ(S_OK, api_->DPUnInitialize(session));
}

TEST_F(RoundTripsTest, FirstListing) {
    LONG_PTR session = 0;
    EXPECT_EQ(kFirstListing, Of([&] { EXPECT_EQ(S_OK, List(&session)); }));
    EXPECT_EQ(S_OK, api_->DPUnInitialize(session));
}

TEST_F(RoundTripsTest, FirstLookForAFile) {
    EXPECT_EQ(kFirstLookForAFile, Of([&] { EXPECT_EQ(S_OK, api_->DPFileExists(0, Text(kFile))); }));
}

TEST_F(RoundTripsTest, FirstTestOfWritability) {
    EXPECT_EQ(kFirstTestOfWritability, Of([&] {
                  EXPECT_EQ(S_OK, api_->DPIsPathWriteAble(*session_, Text("<Corp>\\Sessions\\")));
              }));
}

TEST_F(RoundTripsTest, SecondReadOfASession) {
    LoadFirst();
    EXPECT_EQ(kSecondRead, Of([&] { EXPECT_EQ(S_OK, Load(session_->Address())); }));
}

TEST_F(RoundTripsTest, SettingAndFlushingAValue) {
    LoadFirst();
    EXPECT_EQ(kSetAndFlush, Of([&] {
                  Change();
                  EXPECT_EQ(S_OK, api_->DPFlushFile(*session_));
              }));
}

TEST_F(RoundTripsTest, OperationsOnAKeptConnection) {
    depots_.Dword("Corp", "KeepConnection1", 60);
    session_.reset();
    session_.emplace(*api_);
    LoadFirst();
    EXPECT_EQ(kKeptRead, Of([&] { EXPECT_THAT(Load(session_->Address()), IsOk()); }));
    EXPECT_EQ(kKeptSetAndFlush, Of([&] {
                  Change();
                  EXPECT_THAT(api_->DPFlushFile(*session_), IsOk());
              }));
    EXPECT_EQ(kKeptLook, Of([&] {
                  EXPECT_EQ(S_FALSE, api_->DPFileExists(*session_, Text("<Corp>\\none.kra")));
              }));
}

// What is kept for the time when the server is away takes no round trip more.
TEST_F(RoundTripsTest, OperationsOnALocationThatIsKeptForLater) {
    depots_.Dword("Corp", "Offline1", 1);
    const CleanOfflineFiles kept;
    session_.reset();
    session_.emplace(*api_);
    EXPECT_EQ(kFirstRead, Of([&] { LoadFirst(); }));
    EXPECT_EQ(kSecondRead, Of([&] { EXPECT_THAT(Load(session_->Address()), IsOk()); }));
    EXPECT_EQ(kSetAndFlush, Of([&] {
                  Change();
                  EXPECT_THAT(api_->DPFlushFile(*session_), IsOk());
              }));
    EXPECT_EQ(1u, OfflineFolders().size());
}

TEST_F(RoundTripsTest, EndOfASessionAfterAChange) {
    LoadFirst();
    EXPECT_EQ(kEndAfterAChange, Of([&] {
                  Change();
                  session_.reset();
              }));
}

TEST_F(RoundTripsTest, CopyOfAFile) {
    LoadFirst();
    OutText path;
    EXPECT_EQ(kCopyOfAFile, Of([&] {
                  EXPECT_EQ(S_OK, api_->DPMakeCopyFromSrcFile(*session_, Text(kFile), path));
              }));
}

TEST_F(RoundTripsTest, CopyToTheFileSystem) {
    LoadFirst();
    const std::string target = folder_.At("a.kra");
    EXPECT_EQ(kCopyToTheFileSystem, Of([&] {
                  EXPECT_EQ(S_OK, api_->DPCopyFileToLocalFS(*session_, Text(kFile), Text(target),
                                                            VARIANT_TRUE));
              }));
    EXPECT_TRUE(Exists(target));
}

TEST_F(RoundTripsTest, RenamingOfAFile) {
    LoadFirst();
    EXPECT_EQ(kRenamingOfAFile, Of([&] {
                  EXPECT_EQ(S_OK, api_->DPRenameFile(*session_, Text(kFile),
                                                     Text("<Corp>\\Sessions\\b.kra")));
              }));
}

TEST_F(RoundTripsTest, RenamingOfAFolder) {
    MakeFiles("tree", kFiles);
    LoadFirst();
    EXPECT_EQ(kRenamingOfAFolder, Of([&] {
                  EXPECT_EQ(S_OK, api_->DPRenameFile(*session_, Text("<Corp>\\tree"),
                                                     Text("<Corp>\\moved")));
              }));
}

TEST_F(RoundTripsTest, DeletionOfAFile) {
    LoadFirst();
    EXPECT_EQ(kDeletionOfAFile,
              Of([&] { EXPECT_EQ(S_OK, api_->DPDeleteFile(*session_, Text(kFile))); }));
}

TEST_F(RoundTripsTest, DeletionOfAFolderOf200Files) {
    MakeFiles("tree", kFiles);
    LoadFirst();
    EXPECT_EQ(kDeletionOf200Files,
              Of([&] { EXPECT_EQ(S_OK, api_->DPDeleteFile(*session_, Text("<Corp>\\tree"))); }));
}

TEST_F(RoundTripsTest, UploadOf200Files) {
    const std::string local = MakeLocalFiles(kFiles);
    EXPECT_EQ(kUploadOf200Files, Of([&] { CopyTree(local, "<Corp>\\tree", true); }));
}

TEST_F(RoundTripsTest, DownloadOf200Files) {
    MakeFiles("tree", kFiles);
    EXPECT_EQ(kDownloadOf200Files,
              Of([&] { CopyTree("<Corp>\\tree", folder_.At("back"), false); }));
}

TEST_F(RoundTripsTest, UploadOf20FoldersWith200Files) {
    const std::string local = MakeLocalFiles(kFiles, kFolders);
    EXPECT_EQ(kUploadOf20Folders, Of([&] { CopyTree(local, "<Corp>\\tree", true); }));
}

TEST_F(RoundTripsTest, DownloadOf20FoldersWith200Files) {
    MakeFiles("tree", kFiles, kFolders);
    EXPECT_EQ(kDownloadOf20Folders,
              Of([&] { CopyTree("<Corp>\\tree", folder_.At("back"), false); }));
}

TEST_F(RoundTripsTest, PublishingOf40Files) {
    MakeFiles("clients", kListed);
    std::string profile = "[Skein]\r\nCount=" + std::to_string(kListed) + "\r\n[Clients]\r\n";
    for (int number = 0; number < kListed; ++number) {
        profile += "C" + std::to_string(number + 1) + "=<Corp>\\clients\\f" +
                   std::to_string(number) + ".kra\r\n";
    }
    corp_.MakeFile("Sessions\\p.kra", profile);
    ASSERT_EQ(S_OK, api_->DPLoadFile(session_->Address(), Text("<Corp>\\Sessions\\p.kra")));
    EXPECT_EQ(kPublishingOf40Files,
              Of([&] { EXPECT_EQ(S_OK, api_->DPPublishSkesDepFiles(*session_)); }));
    for (const int number : {0, 7, 8, 31, 32, 39}) {
        const std::string name = "f" + std::to_string(number) + ".kra";
        EXPECT_EQ(std::string(1024, 'x'), corp_.Bytes("Sessions\\" + name));
        EXPECT_EQ(L"<Corp>\\Sessions\\" + Wide(name),
                  Read(*session_, L"Clients", (L"C" + std::to_wstring(number + 1)).c_str()));
    }
}

TEST_F(RoundTripsTest, ListOf40FilesToTheFileSystem) {
    MakeFiles("list", kListed);
    const std::string folder = folder_.MakeFolder("out");
    EXPECT_EQ(kListOf40FilesToTheFileSystem, Of([&] { CopyList(folder, false); }));
    EXPECT_EQ(std::string(1024, 'x'), FileBytes(folder + "\\f39.kra"));
}

TEST_F(RoundTripsTest, ListOf40FilesWithinTheDirectory) {
    MakeFiles("list", kListed);
    EXPECT_EQ(kListOf40FilesWithinTheDirectory, Of([&] { CopyList("<Corp>\\Sessions\\", true); }));
    EXPECT_EQ(std::string(1024, 'x'), corp_.Bytes("Sessions\\f39.kra"));
}

}  // namespace
}  // namespace depot::test
