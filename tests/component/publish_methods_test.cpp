// Publishing profiles with their clients, and files on a machine without definitions.
#include "component/component.h"
#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/results.h"

namespace depot::test {
namespace {

class PublishTest : public ComponentTest {
protected:
    std::string Make(const std::string& name, const std::string& bytes) {
        return folder_.MakeFile(name, bytes);
    }
    // Loads a profile with these clients and publishes it.
    void Publish(const std::string& profile) {
        Make("Work\\p.kra", profile);
        ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\p.kra")), IsOk());
        EXPECT_THAT(api_->DPPublishSkesDepFiles(session_), IsOk());
    }
    std::wstring Client(const wchar_t* key) { return Read(session_, L"Clients", key); }

    const BoxLog boxes_;
    // A session knows the depots that were there before it.
    const std::string root_ = DefineDepot("Work");
    Session session_{*api_};
};

TEST_F(PublishTest, ClientsAreCopiedAndTheListPointsAtTheCopies) {
    const std::string client = Make("c1.cfg", "one");
    Publish("[Skein]\r\nCount=2\r\n[Clients]\r\nC1=" + client +
            "\r\nC2=u:c2.cfg\r\n[Server]\r\nConfiguration File=s.cfg\r\nOther=1\r\n");
    EXPECT_EQ("one", FileBytes(folder_.At("Work\\c1.cfg")));
    EXPECT_EQ(L"<Work>\\c1.cfg", Client(L"C1"));
    EXPECT_EQ(L"c2.cfg", Client(L"C2"));
    EXPECT_EQ(L"(default)", Read(session_, L"Server", L"Configuration File"));
    EXPECT_EQ(L"1", Read(session_, L"Server", L"Other"));
}

TEST_F(PublishTest, ClientOfADepotIsCopiedFromIt) {
    DefineDepot("Home");
    const Session fresh(*api_);
    Make("Home\\c1.cfg", "one");
    Make("Work\\p.kra", "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=<Home>\\c1.cfg\r\n");
    LONG_PTR handle = fresh;
    ASSERT_THAT(api_->DPLoadFile(&handle, Text("<Work>\\p.kra")), IsOk());
    EXPECT_THAT(api_->DPPublishSkesDepFiles(fresh), IsOk());
    EXPECT_EQ("one", FileBytes(folder_.At("Work\\c1.cfg")));
    EXPECT_EQ(L"<Work>\\c1.cfg", Read(fresh, L"Clients", L"C1"));
}

TEST_F(PublishTest, EntryIsRewrittenAlsoWhenItsFileIsMissing) {
    Publish("[Skein]\r\nCount=1\r\n[Clients]\r\nC1=" + folder_.At("none.cfg") + "\r\n");
    EXPECT_EQ(L"<Work>\\none.cfg", Client(L"C1"));
    EXPECT_FALSE(Exists(folder_.At("Work\\none.cfg")));
}

TEST_F(PublishTest, EntryOfOneLetterGivesAnEmptyName) {
    Publish("[Skein]\r\nCount=2\r\n[Clients]\r\nC1=u\r\nC2=U:x.cfg\r\n");
    EXPECT_EQ(L"(default)", Client(L"C1"));
    // Only the small letter stands for the resource folder.
    EXPECT_EQ(L"<Work>\\U:x.cfg", Client(L"C2"));
}

TEST_F(PublishTest, WithoutClientsOnlyTheServerEntryIsWritten) {
    for (const char* count : {"0", "-1", "-2000000000"}) {
        SCOPED_TRACE(count);
        Publish(std::string("[Skein]\r\nCount=") + count +
                "\r\n[Clients]\r\nC1=x.cfg\r\n[Server]\r\nConfiguration File=s\r\n");
        EXPECT_EQ(L"x.cfg", Client(L"C1"));
        EXPECT_EQ(L"(default)", Read(session_, L"Server", L"Configuration File"));
    }
}

TEST_F(PublishTest, ProfileThatCountsNoClientsHasNone) {
    Publish("[Clients]\r\nC1=x.cfg\r\n");
    EXPECT_EQ(L"x.cfg", Client(L"C1"));
}

TEST_F(PublishTest, EmptyServerEntryStays) {
    const std::string profile = "[Server]\r\nConfiguration File=\r\nOther=1\r\n";
    Publish(profile);
    EXPECT_EQ(profile, FileBytes(folder_.At("Work\\p.kra")));
}

TEST_F(PublishTest, NothingLandsInTheCurrentFolder) {
    Publish("[Skein]\r\nCount=1\r\n[Clients]\r\nC1=u:DepotIntr.dll\r\n");
    EXPECT_EQ(L"DepotIntr.dll", Client(L"C1"));
    EXPECT_FALSE(Exists(folder_.At("Work\\DepotIntr.dll")));
}

TEST_F(PublishTest, ProfileOfTheCurrentFolderIsLeftAsItIs) {
    const std::string client = Make("c1.cfg", "one");
    const std::string text = "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=" + client +
                             "\r\n[Server]\r\nConfiguration File=s\r\n";
    folder_.MakeFolder("now\\sub");
    const std::string profile = Make("now\\sub\\p.kra", text);
    const CurrentFolder current(folder_.At("now"));
    for (const std::string& path : {std::string("sub\\p.kra"), std::string(".\\sub\\p.kra"),
                                    profile.substr(0, 2) + "sub\\p.kra"}) {
        SCOPED_TRACE(path);
        ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(path)), IsOk());
        EXPECT_EQ(Wide(client), Client(L"C1"));
        EXPECT_THAT(api_->DPPublishSkesDepFiles(session_), IsOk());
        EXPECT_FALSE(Exists(folder_.At("now\\sub\\c1.cfg")));
        EXPECT_EQ(text, FileBytes(profile));
    }
}

TEST_F(PublishTest, ProfileLoadedByABareNameCopiesNothingIntoTheCurrentFolder) {
    const std::string client = Make("c1.cfg", "one");
    const CurrentFolder current(folder_.MakeFolder("now"));
    // The system looks for a bare name in its own folder.
    const std::string name = "depot-publish-test.kra";
    char windows[MAX_PATH] = {};
    GetWindowsDirectoryA(windows, sizeof(windows));
    const std::string profile = std::string(windows) + "\\" + name;
    WritePrivateProfileStringA("Skein", "Count", "1", profile.c_str());
    WritePrivateProfileStringA("Clients", "C1", client.c_str(), profile.c_str());
    const std::string text = FileBytes(profile);
    EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text(name)), IsOk());
    EXPECT_EQ(Wide(client), Client(L"C1"));
    EXPECT_THAT(api_->DPPublishSkesDepFiles(session_), IsOk());
    EXPECT_FALSE(Exists(folder_.At("now\\" + name)));
    EXPECT_FALSE(Exists(folder_.At("now\\c1.cfg")));
    EXPECT_EQ(text, FileBytes(profile));
    DeleteFileA(profile.c_str());
}

TEST_F(PublishTest, WithoutACurrentFileThereIsNothingToDo) {
    EXPECT_THAT(api_->DPPublishSkesDepFiles(session_), IsOk());
    EXPECT_THAT(api_->DPPublishSkesDepFiles(0), IsRefused());
}

// A machine on which nothing is configured: the only depot is "My Depot", the folder that holds the
// user's. It has no key, so its files go by their own paths.
class MyDepotTest : public ComponentTest {
protected:
    const std::string root_ = folder_.At("Farrow\\");
    Session session_{*api_};
};

TEST_F(MyDepotTest, FileIsCopiedBesideItselfUnderItsOwnPath) {
    const std::string file = folder_.MakeFile("Farrow\\a.kra", "1");
    for (const wchar_t* name : {L"a - copy.kra", L"a - copy (2).kra"}) {
        OutText copy;
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(session_, Text(file), copy), IsOk());
        EXPECT_EQ(Wide(root_) + name, copy.Value());
    }
    EXPECT_EQ("1", FileBytes(root_ + "a - copy (2).kra"));
}

TEST_F(MyDepotTest, FileIsNotCopiedByTheDepotsNameOrFromElsewhere) {
    folder_.MakeFile("Farrow\\a.kra", "1");
    const std::string outside = folder_.MakeFile("a.kra", "1");
    for (const std::string& source : {std::string("<My Depot>\\a.kra"), std::string("<>\\a.kra"),
                                      std::string("a.kra"), outside}) {
        SCOPED_TRACE(source);
        OutText copy;
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(session_, Text(source), copy), IsRefused());
        EXPECT_EQ(L"", copy.Value());
    }
    EXPECT_FALSE(Exists(root_ + "a - copy.kra"));
}

TEST_F(MyDepotTest, FileIsRenamedAndDeletedByItsOwnPath) {
    const std::string file = folder_.MakeFile("Farrow\\a.kra", "1");
    EXPECT_THAT(api_->DPRenameFile(session_, Text(file), Text(root_ + "b.kra")), IsOk());
    EXPECT_EQ("1", FileBytes(root_ + "b.kra"));
    EXPECT_THAT(api_->DPDeleteFile(session_, Text(root_ + "b.kra")), IsOk());
    EXPECT_FALSE(Exists(root_ + "b.kra"));
}

TEST_F(MyDepotTest, ProfileIsPublishedBesideItself) {
    const std::string client = folder_.MakeFile("c.cfg", "1");
    const std::string file = folder_.MakeFile(
        "Farrow\\p.kra", "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=" + client + "\r\n");
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text(file)), IsOk());
    EXPECT_THAT(api_->DPPublishSkesDepFiles(session_), IsOk());
    EXPECT_EQ("1", FileBytes(root_ + "c.cfg"));
    EXPECT_EQ(Wide(root_) + L"c.cfg", Read(session_, L"Clients", L"C1"));
}

}  // namespace
}  // namespace depot::test
